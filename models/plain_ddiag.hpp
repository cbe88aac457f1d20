// The eigensolver in textbook order, element by element: what flib/ddiag must equal bit for bit,
// and what the benchmarks measure it against.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace plain {

// Elements by indices from 1, unchecked: the measure of speed is what a compiler makes of the
// formulas.
struct Vector {
  double* data;
  double& operator()(int i) const { return data[i - 1]; }
};
struct Matrix {
  double* data;
  std::ptrdiff_t nm;
  double& operator()(int i, int j) const { return data[(j - 1) * nm + i - 1]; }
};

inline void reduce_row(const Matrix& z, const Vector& d, const Vector& e, int i) {
  const int l = i - 1;
  double scale = 0.0, h = 0.0, f = 0.0;
  for (int k = 1; l > 1 && k <= l; ++k) scale += std::fabs(z(i, k));
  d(i) = 0.0;
  if (scale == 0.0) {
    e(i) = z(i, l);
    return;
  }
  for (int k = 1; k <= l; ++k) {
    z(i, k) /= scale;
    h += z(i, k) * z(i, k);
  }
  f = z(i, l);
  double g = -std::copysign(std::sqrt(h), f);
  e(i) = scale * g;
  h -= f * g;
  z(i, l) = f - g;
  f = 0.0;
  for (int j = 1; j <= l; ++j) {
    z(j, i) = z(i, j) / h;
    g = 0.0;
    for (int k = 1; k <= j; ++k) g += z(j, k) * z(i, k);
    for (int k = j + 1; k <= l; ++k) g += z(k, j) * z(i, k);
    e(j) = g / h;
    f += e(j) * z(i, j);
  }
  const double hh = f / (h + h);
  for (int j = 1; j <= l; ++j) {
    f = z(i, j);
    e(j) = g = e(j) - hh * f;
    for (int k = 1; k <= j; ++k) z(j, k) = (z(j, k) - f * e(k)) - g * z(i, k);
  }
  d(i) = h;
}

inline void tred2e(int nm, int n, const double* a, double* d_data, double* e_data, double* z_data) {
  const Matrix z{z_data, nm};
  const Vector d{d_data}, e{e_data};
  for (int j = 1; j <= n; ++j)
    std::copy(a + (j - 1) * z.nm + j - 1, a + (j - 1) * z.nm + n, &z(j, j));
  for (int i = n; i >= 2; --i) reduce_row(z, d, e, i);
  d(1) = e(1) = 0.0;
  for (int i = 1; i <= n; ++i) {
    for (int j = 1; j < i && d(i) != 0.0; ++j) {
      double g = 0.0;
      for (int k = 1; k < i; ++k) g += z(i, k) * z(k, j);
      for (int k = 1; k < i; ++k) z(k, j) -= g * z(k, i);
    }
    d(i) = z(i, i);
    z(i, i) = 1.0;
    for (int j = 1; j < i; ++j) z(i, j) = z(j, i) = 0.0;
  }
}

// One shift of the origin, added to f, and one sweep of plane rotations from m - 1 down to l.
inline void sweep(const Matrix& z, const Vector& d, const Vector& e, int n, int l, int m,
                  double& f) {
  double g = d(l);
  double p = (d(l + 1) - g) / (2.0 * e(l));
  double r = std::sqrt(p * p + 1.0);
  d(l) = e(l) / (p + std::copysign(r, p));
  double h = g - d(l);
  for (int i = l + 1; i <= n; ++i) d(i) -= h;
  f += h;
  double c = 1.0, s = 0.0;
  p = d(m);
  for (int i = m - 1; i >= l; --i) {
    g = c * e(i);
    h = c * p;
    if (std::fabs(p) >= std::fabs(e(i))) {
      c = e(i) / p;
      r = std::sqrt(c * c + 1.0);
      e(i + 1) = s * p * r;
      s = c / r;
      c = 1.0 / r;
    } else {
      c = p / e(i);
      r = std::sqrt(c * c + 1.0);
      e(i + 1) = s * e(i) * r;
      s = 1.0 / r;
      c = c * s;
    }
    p = c * d(i) - s * g;
    d(i + 1) = h + s * (c * g + s * d(i));
    for (int k = 1; k <= n; ++k) {
      h = z(k, i + 1);
      z(k, i + 1) = s * z(k, i) + c * h;
      z(k, i) = c * z(k, i) - s * h;
    }
  }
  e(l) = s * p;
  d(l) = c * p;
}

inline void tql2e(int nm, int n, double* d_data, double* e_data, double* z_data, int& ierr) {
  const Matrix z{z_data, nm};
  const Vector d{d_data}, e{e_data};
  ierr = 0;
  if (n <= 1) return;
  std::copy(e_data + 1, e_data + n, e_data);
  e(n) = 0.0;
  double f = 0.0, b = 0.0;
  for (int l = 1; l <= n; ++l) {
    const double h = 2.220446049250313e-16 * (std::fabs(d(l)) + std::fabs(e(l)));
    if (b < h) b = h;
    int m = l;
    while (m < n && !(std::fabs(e(m)) <= b)) ++m;
    for (int count = 0; m != l && (count == 0 || !(std::fabs(e(l)) <= b)); ++count) {
      if (count == 30) {
        ierr = l;
        return;
      }
      sweep(z, d, e, n, l, m, f);
    }
    d(l) += f;
  }
  for (int i = 1; i < n; ++i) {
    const int j = static_cast<int>(std::min_element(&d(i), &d(n) + 1) - d_data) + 1;
    std::swap(d(i), d(j));
    if (j != i) std::swap_ranges(&z(1, i), &z(n, i) + 1, &z(1, j));
  }
}

}  // namespace plain
