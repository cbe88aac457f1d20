// Other eigensolvers, to measure against. Each takes a copy of the n x n matrix, by columns, and
// gives eigenvalues and eigenvectors; false where it was not found when the benchmarks were built.
#pragma once

#include <vector>

namespace bench {

bool solve_with_eigen(int n, const std::vector<double>& a);
bool solve_with_dsyev(int n, const std::vector<double>& a);
bool solve_with_dsyevd(int n, const std::vector<double>& a);

}  // namespace bench
