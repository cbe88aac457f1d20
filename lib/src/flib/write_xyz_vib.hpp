// Normal-mode animation files.
#pragma once

#include <string_view>

#include "io/text.hpp"

namespace flib {

// Writes a multi-frame XYZ file, one frame per mode: a line with the number of atoms, a comment
// line with the frequency in cm-1, a line per atom with its symbol, its coordinates in Angstrom and
// its displacement, scaled so that the largest component over all modes is 2.
//   fxyz    file name, created or replaced
//   n       number of atoms
//   symbol  n element symbols
//   x       3 x n coordinates, Bohr
//   v       3 x n x 3n: v(1..3,j,i) is the displacement of atom j in mode i, any unit
//   freq    3n frequencies, atomic units
// A file that cannot be written is a fatal stop. When all displacements are zero they print as NaN.
void write_xyz_vib(std::string_view fxyz, const int& n, const io::Text<2>* symbol, const double* x,
                   const double* v, const double* freq);

}  // namespace flib
