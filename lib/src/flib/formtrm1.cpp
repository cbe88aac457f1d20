#include "flib/formtrm1.hpp"

#include <algorithm>
#include <cmath>

#include "flib/array.hpp"
#include "flib/sprod.hpp"
#include "flib/vscal.hpp"

namespace flib {

namespace {

constexpr double one = 1.0;
constexpr double tollzero = 1.0e-8;  // on a squared length, (electron mass) * Bohr**2

void set_atom(const ArrayView<double, 3>& vector, int i, double ami, const double* centred) {
  const double qx = ami * centred[0];
  const double qy = ami * centred[1];
  const double qz = ami * centred[2];
  for (int k = 1; k <= 3; ++k) vector(k, i, k) = ami;
  vector(2, i, 4) = -qz;
  vector(3, i, 4) = qy;
  vector(1, i, 5) = qz;
  vector(3, i, 5) = -qx;
  vector(1, i, 6) = -qy;
  vector(2, i, 6) = qx;
}

}  // namespace

void formtrm1(const int& n, const double* mass, const double* xc, double* v) {
  if (n < 1) return;
  const int n3 = 3 * n;
  const ArrayView<const double, 2> centred(xc, {3, n});
  const ArrayView<double, 3> vector(v, {3, n, 6});
  std::fill_n(v, vector.size(), 0.0);
  for (int i = 1; i <= n; ++i) set_atom(vector, i, std::sqrt(mass[i - 1]), centred.column(i));
  for (int k = 1; k <= 6; ++k) {
    double* const motion = vector.column(1, k);
    const double squared = sprod(n3, motion, motion);
    if (squared > tollzero) vscal(n3, one / std::sqrt(squared), motion);
  }
}

}  // namespace flib
