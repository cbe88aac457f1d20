#include "flib/rotn.hpp"

#include "flib/array.hpp"

namespace flib {

void rotn(const int& n, const double* r, double* v) {
  const ArrayView<const double, 2> matrix(r, {3, 3});
  const ArrayView<double, 2> vectors(v, {3, n});
  for (int i = 1; i <= n; ++i) {
    double t[3] = {0.0, 0.0, 0.0};
    for (int j = 1; j <= 3; ++j) {
      for (int k = 1; k <= 3; ++k) t[j - 1] += matrix(j, k) * vectors(k, i);
    }
    for (int j = 1; j <= 3; ++j) vectors(j, i) = t[j - 1];
  }
}

}  // namespace flib
