#include "flib/projtrm_rot.hpp"

#include <algorithm>

#include "flib/array.hpp"
#include "flib/com.hpp"
#include "flib/formtrm1.hpp"
#include "flib/kernels.hpp"

namespace flib {

namespace {

using Matrix = ArrayView<double, 2>;

// P = 1 - sum of v v^T, column by column; the vectors come off each element in their order. p is
// zero on entry.
void form_projector(int n3, const Matrix& trvec, const Matrix& p) {
  for (int j = 1; j <= n3; ++j) {
    double* const column = p.column(j);
    for (int k = 1; k <= 6; ++k) {
      const double* const v = trvec.column(k);
      const double factor = v[j - 1];
      for (int i = 0; i < n3; ++i) column[i] -= v[i] * factor;
    }
    column[j - 1] += 1.0;
  }
}

}  // namespace

void projtrm_rot(const int& n, const double* x, const double* mass, double* hess, int& info) {
  info = 0;
  if (n < 1) return;
  const int n3 = 3 * n;
  Array<double, 2> xc("xc", {3, n});
  std::copy_n(x, n3, xc.data());
  int ier = 0;
  com(n, mass, xc.data(), ier);
  Array<double, 2> trvec("trvec", {n3, 6});
  formtrm1(n, mass, xc.data(), trvec.data());

  Array<double, 2> p("p", {n3, n3});
  form_projector(n3, trvec, p);
  Array<double, 2> product("product", {n3, n3});
  Array<double, 2> panel("panel", {multiply_rows, n3});
  const Kernels& kernels = best_kernels();
  kernels.multiply(n3, hess, p.data(), product.data(), panel.data());
  kernels.multiply(n3, p.data(), product.data(), hess, panel.data());
}

}  // namespace flib
