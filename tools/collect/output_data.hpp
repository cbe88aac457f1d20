// What a finished calculation tells about one job, whatever program made it.
#pragma once

#include <Eigen/Dense>
#include <optional>
#include <string>
#include <vector>

namespace collect {

// Numbers of the transition that change their sign together with the wave function, as the
// transition dipole does.
struct SignMark {
  enum class Kind {
    density,      // over basis functions, which have to stand in the axes of the reference's
    vector,       // x y z
    tensor,       // xx xy xz yy yz zz
    coefficient,  // depends on the signs of orbitals, too, which are the program's choice
  };
  std::string name;
  Kind kind = Kind::vector;
  std::vector<double> values;  // atomic units
};

// The largest element that the output gives of the transition density, or the leading coefficient.
struct LeadingElement {
  int row = 0, column = 0;
  double value = 0.0;
};

// Sizes that the head of a sign file names; 0 where the output does not tell.
struct Sizes {
  int nmo = 0, mi = 0, ma = 0, mci = 0, nfc = 0, nfv = 0;
};

struct JobOutput {
  std::string program;                               // with its version
  std::vector<int> numbers;                          // atomic numbers
  Eigen::Matrix3Xd places;                           // Angstrom
  Eigen::Matrix3Xd forces;                           // Hartree/Bohr
  Eigen::Vector3d dipole = Eigen::Vector3d::Zero();  // transition dipole, atomic units
  // Where the output gives them in other axes than those of `places`: the geometry there.
  std::optional<Eigen::Matrix3Xd> places_of_dipole;
  int force_decimals = 16;                    // as far as they are printed
  int dipole_decimals = 16;                   // as far as they are printed
  int root = 0;                               // state of the gradient, as the program counts
  std::optional<double> ground_energy;        // Hartree
  std::optional<double> energy;               // of the state, Hartree
  std::optional<double> oscillator_strength;  // of the transition
  std::optional<LeadingElement> leading;
  std::vector<SignMark> marks;  // those to be trusted first come first
  Sizes sizes;
};

}  // namespace collect
