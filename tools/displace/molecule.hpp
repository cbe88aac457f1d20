// The molecule that is to be displaced.
#pragma once

#include <Eigen/Dense>
#include <string>
#include <vector>

namespace displace {

struct Molecule {
  std::vector<std::string> symbols;
  std::vector<int> numbers;  // atomic numbers
  Eigen::Matrix3Xd x;        // Angstrom
  int charge = 0;
  int multiplicity = 1;
};

// Reads a geometry: of .xyz files the first frame; of inputs (.com, .gjf) the atoms behind the
// first line of charge and multiplicity. Fewer than two atoms, a word that is no element, atoms on
// top of each other and whatever cannot be read are fatal stops.
Molecule read_geometry(const std::string& name);

}  // namespace displace
