// Synthetic molecules that are consistent in every respect: forces and transition dipoles follow
// from functions of the distances, so that all sum rules hold at every geometry.
#pragma once

#include <Eigen/Dense>
#include <string>
#include <vector>

namespace model_molecule {

struct Model {
  Eigen::Matrix3Xd x;               // Angstrom, as printed; a minimum of the energy
  Eigen::MatrixXd charges;          // of the pairs, for the dipole
  std::vector<std::string> labels;  // symbol, number and mass of each atom; C and H in turn if none
};

// A molecule of 3 to 8 atoms at random places, the same for the same seed.
Model random_model(unsigned seed);

struct Printing {
  double step = 0.005;  // Angstrom
  int force_decimals = 10;
  int dipole_decimals = 6;
  int disp_sign = 1;
};

// The sign file of a job: Morse potentials between all pairs, each with its minimum at the
// reference distance, and a dipole along each pair.
std::string sign_file(const Model& model, const Printing& printing, int job);

// Writes a job directory of it into the working folder, every job computed.
void write_jobs(const Model& model, const Printing& printing);

}  // namespace model_molecule
