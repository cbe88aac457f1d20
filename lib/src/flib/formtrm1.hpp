// Rigid-motion vectors.
#pragma once

namespace flib {

// Builds the six mass-weighted rigid-motion vectors of a molecule: translations along and rotations
// about x, y, z, each of length 1. A vector whose squared length is 1.0e-8 or less (the rotation of
// a linear molecule about its axis) is left as it is. The rotations are not made orthogonal.
//   n     number of atoms; with none nothing is done (in)
//   mass  n masses (in)
//   xc    3 x n coordinates relative to the centre of mass (in)
//   v     3 x n x 6 (out)
void formtrm1(const int& n, const double* mass, const double* xc, double* v);

}  // namespace flib
