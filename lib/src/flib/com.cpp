#include "flib/com.hpp"

#include "flib/array.hpp"
#include "flib/math.hpp"

namespace flib {

void com(const int& n, const double* mass, double* x, int& ier) {
  ier = 0;
  const double total = ri_sum_d(n, mass);
  const ArrayView<const double, 1> masses(mass, {n});
  const ArrayView<double, 2> coordinates(x, {3, n});
  Array<double, 2> weighted("mass-weighted coordinates", {3, n});
  for (int i = 1; i <= n; ++i) {
    for (int k = 1; k <= 3; ++k) weighted(k, i) = coordinates(k, i) * masses(i);
  }
  std::array<double, 3> centre = v3_sum_d(n, weighted.data());
  for (double& component : centre) component /= total;
  for (int i = 1; i <= n; ++i) {
    for (int k = 1; k <= 3; ++k) coordinates(k, i) -= centre[static_cast<std::size_t>(k - 1)];
  }
}

}  // namespace flib
