// Rotation of atom vectors.
#pragma once

namespace flib {

// Replaces each of the n vectors v(:,i) by r * v(:,i).
//   r  3 x 3, first index varying fastest (in); the matrix itself is applied, not its transpose
//   v  3 x n (in/out)
void rotn(const int& n, const double* r, double* v);

}  // namespace flib
