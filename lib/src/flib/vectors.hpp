// Small routines on vectors.
#pragma once

namespace flib {

// The dot product of v1 and v2 (n values each), summed in index order from 0.0.
double sprod(const int& n, const double* v1, const double* v2);

// Multiplies each of the n elements of v by skal.
void vscal(const int& n, const double& skal, double* v);

// Replaces each of the n vectors v(:,i) by r * v(:,i).
//   r  3 x 3, first index varying fastest (in); the matrix itself is applied, not its transpose
//   v  3 x n (in/out)
void rotn(const int& n, const double* r, double* v);

}  // namespace flib
