#include "flib/sprod.hpp"

namespace flib {

double sprod(const int& n, const double* v1, const double* v2) {
  double sum = 0.0;
  for (int i = 0; i < n; ++i) sum += v1[i] * v2[i];
  return sum;
}

}  // namespace flib
