// Synthetic molecules that are consistent in every respect: forces and transition dipoles follow
// from functions of the distances, so that all sum rules hold at every geometry.
#pragma once

#include <Eigen/Dense>

namespace model_molecule {

struct Model {
  Eigen::Matrix3Xd x;       // Angstrom, as printed; a minimum of the energy; C and H in turn
  Eigen::MatrixXd charges;  // of the pairs, for the dipole
};

// A molecule of 3 to 8 atoms at random places, the same for the same seed.
Model random_model(unsigned seed);

// Morse potentials between all pairs, each with its minimum at the reference distance, and a dipole
// along each pair.
struct Values {
  Eigen::Matrix3Xd forces;  // Hartree/Bohr
  Eigen::Vector3d dipole;   // atomic units
};
Values values_at(const Model& model, const Eigen::Matrix3Xd& x);

struct Printing {
  double step = 0.005;  // Angstrom
  int force_decimals = 10;
  int dipole_decimals = 6;
  int disp_sign = 1;
};

// Writes a job directory of it into the working folder, every job computed.
void write_jobs(const Model& model, const Printing& printing);

}  // namespace model_molecule
