#include "flib/fc_to_fcm.hpp"

#include "flib/triangle.hpp"

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
  const std::ptrdiff_t n = n3;
  const double* const from = direction == 1 ? fc : fcm;
  double* const to = direction == 1 ? fcm : fc;
  for_each_in_upper_triangle(n, [&](std::ptrdiff_t j, std::ptrdiff_t i) {
    const double value = from[i * n + j];
    const double converted =
        direction == 1 ? value / sqtmass[j] / sqtmass[i] : sqtmass[i] * (value * sqtmass[j]);
    to[i * n + j] = converted;
    to[j * n + i] = converted;
  });
}

}  // namespace flib
