// Molecules whose numbers are known exactly: springs between all atoms at rest, and a transition
// dipole sum_a q_a R_a with charges that add up to zero, linear and turning with the molecule.
#pragma once

#include <Eigen/Dense>

#include "zandor/run_data.hpp"

namespace model {

struct Molecule {
  Eigen::Matrix3Xd x;      // Bohr
  Eigen::VectorXd mass;    // electron masses
  Eigen::VectorXd charge;  // also sets the springs: k = 0.3 + q q' / 2
};

// Five atoms without symmetry; the same with charges that leave no dipole; a square without one;
// three atoms in a line off the axes; three at the corners of an equilateral triangle.
Molecule general();
Molecule dark();
Molecule dark_square();
Molecule line();
Molecule triangle();

// A run as the phases leave it, every job computed.
zandor::RunData run_of(const Molecule& molecule, int disp_sign = 1);

}  // namespace model
