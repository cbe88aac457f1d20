// Projection of the rigid-body motions out of a force-constant matrix.
#pragma once

namespace flib {

// Replaces hess by P hess P with P = 1 - sum of v v^T over the six vectors of formtrm1. The
// rotation vectors are not made orthogonal to each other, so P is a projector only when the inertia
// tensor is diagonal in the given axes; otherwise a small residue along the rotations stays. This
// is deliberate.
//   n     number of atoms; with none nothing is done (in)
//   x     3 n coordinates, any unit (in)
//   mass  n masses (in)
//   hess  3 n x 3 n mass-weighted force constants (in/out)
//   info  always 0 (out)
void projtrm_rot(const int& n, const double* x, const double* mass, double* hess, int& info);

}  // namespace flib
