#include "flib/math.hpp"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numeric>
#include <string>
#include <vector>

namespace flib {

namespace {

// The decimal digits that a signed 64-bit integer is taken to hold.
constexpr int integer_digits = 18;

}  // namespace

double ri_sum_d(const int& n, const double* a) {
  const double* const end = a + n;
  if (!std::all_of(a, end, [](double term) { return std::isfinite(term); })) {
    return std::accumulate(a, end, 0.0);
  }
  // Room for the digits of n keeps the integer sum of n terms from overflowing.
  const int digits = static_cast<int>(std::to_string(n).size());
  double rscale = 1.0;
  for (int i = 0; i < integer_digits - (digits + 1); ++i) rscale *= 10.0;
  double c_max = 0.0;
  for (const double* term = a; term < end; ++term) c_max = std::max(c_max, std::fabs(*term));
  if (c_max == 0.0) return 0.0;
  std::int64_t sum = 0;
  for (const double* term = a; term < end; ++term) {
    sum += static_cast<std::int64_t>(*term / c_max * rscale);
  }
  return c_max * static_cast<double>(sum) / rscale;
}

std::array<double, 3> v3_sum_d(const int& n, const double* v) {
  std::array<double, 3> sums{};
  std::vector<double> row(static_cast<std::size_t>(n));
  for (std::size_t j = 0; j < 3; ++j) {
    for (std::size_t i = 0; i < row.size(); ++i) row[i] = v[3 * i + j];
    sums[j] = ri_sum_d(n, row.data());
  }
  return sums;
}

}  // namespace flib
