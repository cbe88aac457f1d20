#include "flib/fc_to_fcm.hpp"

#include "flib/array.hpp"

namespace flib {

void fc_to_fcm(const int& n3, const double* sqtmass, double* fc, double* fcm, const int& direction,
               int& info) {
  info = 0;
  if (n3 <= 0) {
    info = -1;
    return;
  }
  if (direction != 1 && direction != -1) {
    info = -2;
    return;
  }
  const ArrayView<const double, 1> root(sqtmass, {n3});
  const ArrayView<double, 2> cartesian(fc, {n3, n3});
  const ArrayView<double, 2> weighted(fcm, {n3, n3});
  const ArrayView<double, 2>& result = direction == 1 ? weighted : cartesian;
  for (int i = 1; i <= n3; ++i) {
    for (int j = 1; j <= i; ++j) {
      result(j, i) = direction == 1 ? cartesian(j, i) / root(j) / root(i)
                                    : root(i) * (weighted(j, i) * root(j));
      if (i != j) result(i, j) = result(j, i);
    }
  }
}

}  // namespace flib
