#include "flib/projtrm_rot.hpp"

#include <algorithm>

#include "flib/array.hpp"
#include "flib/com.hpp"
#include "flib/formtrm1.hpp"

namespace flib {

namespace {

using Matrix = ArrayView<double, 2>;

// P = 1 - sum of v v^T; p is zero on entry.
void form_projector(int n3, const Matrix& trvec, const Matrix& p) {
  for (int k = 1; k <= 6; ++k) {
    const double* const v = trvec.column(k);
    for (int j = 1; j <= n3; ++j) {
      double* const column = p.column(j);
      for (int i = 0; i < n3; ++i) column[i] -= v[i] * v[j - 1];
    }
  }
  for (int j = 1; j <= n3; ++j) p(j, j) += 1.0;
}

// product = a b, each element summed over the inner index in increasing order from 0.0.
void multiply(int n3, const Matrix& a, const Matrix& b, const Matrix& product) {
  for (int j = 1; j <= n3; ++j) {
    double* const column = product.column(j);
    std::fill_n(column, n3, 0.0);
    for (int k = 1; k <= n3; ++k) {
      const double* const left = a.column(k);
      const double factor = b(k, j);
      for (int i = 0; i < n3; ++i) column[i] += left[i] * factor;
    }
  }
}

}  // namespace

void projtrm_rot(const int& n, const double* x, const double* mass, double* hess, int& info) {
  info = 0;
  const int n3 = 3 * n;
  const Array<double, 2> xc("xc", {3, n});
  std::copy_n(x, n3, xc.data());
  int ier = 0;
  com(n, mass, xc.data(), ier);
  const Array<double, 2> trvec("trvec", {n3, 6});
  formtrm1(n, mass, xc.data(), trvec.data());

  const Matrix matrix(hess, {n3, n3});
  const Array<double, 2> p("p", {n3, n3});
  form_projector(n3, trvec, p);
  const Array<double, 2> product("product", {n3, n3});
  multiply(n3, matrix, p, product);
  multiply(n3, p, product, matrix);
}

}  // namespace flib
