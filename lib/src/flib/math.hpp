// Sums that do not depend on the order of their terms.
#pragma once

#include <array>

namespace flib {

// The sum of the n values of a by scaled integers: every term is resolved to about
// 17 - digits(n) decimal digits of the largest magnitude, smaller ones contribute nothing. This
// loss is deliberate. With a term that is infinite or not a number the result is the plain sum.
double ri_sum_d(const int& n, const double* a);

// ri_sum_d over each row of v (3 x n): component j is the sum of v(j,1..n).
std::array<double, 3> v3_sum_d(const int& n, const double* v);

}  // namespace flib
