// Rigid motions of a molecule, exact in any axes, and how its axes lie.
//
// The geometry is RunData::x, that of the reference input (".com") in Bohr, which the report's
// projection uses.
#pragma once

#include <Eigen/Dense>

#include "zandor/run_data.hpp"

namespace analysis {

struct RigidMotions {
  // n3 x rank, orthonormal columns: the space of the mass-weighted translations
  // t_k(a) = sqrt(m_a) e_k and rotations r_k(a) = sqrt(m_a) e_k x (R_a - centre of mass).
  Eigen::MatrixXd basis;
  // 6; 5 for a linear molecule, 3 for one atom: the number of singular values of the six vectors,
  // each of length 1, above 1e-4 of the largest. Linear molecules have 1e-6 to 3e-5 where their
  // places are rounded to 5 decimals, the least bent ones met 0.046.
  int rank = 0;
};

// Takes natom, mass and x of the run (any mass unit, any length unit).
RigidMotions rigid_motions(const zandor::RunData& run);

// The part, 0 to 1, of each mass-weighted eigenvector (n3 x n, columns of length 1) that is rigid
// motion: |basis^T v|**2.
Eigen::VectorXd rigid_weights(const RigidMotions& rigid,
                              const Eigen::Ref<const Eigen::MatrixXd>& eigenvectors);

// A warning when an atom of the reference input is more than 1e-3 Angstrom from the same atom of
// the reference sign file (xa), the two geometries shifted onto each other; else empty. The two are
// then turned against each other or hold different molecules: forces and dipoles may belong to the
// axes of the sign file.
std::string turned_geometry(const zandor::RunData& run);

struct PrincipalAxes {
  Eigen::Vector3d moments;  // of inertia, ascending, m_e Bohr**2
  Eigen::Matrix3d axes;     // in columns, right-handed
  // Angle in degrees between each given axis and the nearest principal axis, the largest of the
  // three. Moments that agree within 1e-4 of the largest leave their axes free to turn: a given
  // axis is compared with the space that belongs to them.
  double largest_angle = 0.0;
};

// Takes natom, mass (electron masses) and x (Bohr) of the run.
PrincipalAxes principal_axes(const zandor::RunData& run);

}  // namespace analysis
