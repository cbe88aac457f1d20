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
  double* column(int j) const { return data + (j - 1) * nm; }
};

inline constexpr double epsilon =
    2.220446049250313e-16;                  // 2**-52, the unit of the convergence test
inline constexpr int most_iterations = 30;  // for one eigenvalue

// Turns the scaled row i of z into the Householder vector; the result is h, half its squared
// length.
inline double form_householder_vector(const Matrix& z, const Vector& e, int i, double scale) {
  const int l = i - 1;
  double h = 0.0;
  for (int k = 1; k <= l; ++k) {
    z(i, k) /= scale;
    h += z(i, k) * z(i, k);
  }
  const double f = z(i, l);
  const double g = -std::copysign(std::sqrt(h), f);
  e(i) = scale * g;
  z(i, l) = f - g;
  return h - f * g;
}

// Applies the transformation of row i to the block left of and above it.
inline void transform_block(const Matrix& z, const Vector& e, int i, double h) {
  const int l = i - 1;
  double f = 0.0;
  for (int j = 1; j <= l; ++j) {
    z(j, i) = z(i, j) / h;
    double g = 0.0;
    for (int k = 1; k <= j; ++k) g += z(j, k) * z(i, k);
    for (int k = j + 1; k <= l; ++k) g += z(k, j) * z(i, k);
    e(j) = g / h;
    f += e(j) * z(i, j);
  }
  const double hh = f / (h + h);
  for (int j = 1; j <= l; ++j) {
    f = z(i, j);
    const double g = e(j) - hh * f;
    e(j) = g;
    for (int k = 1; k <= j; ++k) z(j, k) = (z(j, k) - f * e(k)) - g * z(i, k);
  }
}

inline void reduce_row(const Matrix& z, const Vector& d, const Vector& e, int i) {
  const int l = i - 1;
  double scale = 0.0;
  if (l > 1) {
    for (int k = 1; k <= l; ++k) scale += std::fabs(z(i, k));
  }
  d(i) = 0.0;
  if (scale == 0.0) {
    e(i) = z(i, l);
    return;
  }
  d(i) = form_householder_vector(z, e, i, scale);
  transform_block(z, e, i, d(i));
}

inline void accumulate_transformations(const Matrix& z, const Vector& d, int n) {
  for (int i = 1; i <= n; ++i) {
    const int l = i - 1;
    if (d(i) != 0.0) {
      for (int j = 1; j <= l; ++j) {
        double g = 0.0;
        for (int k = 1; k <= l; ++k) g += z(i, k) * z(k, j);
        for (int k = 1; k <= l; ++k) z(k, j) -= g * z(k, i);
      }
    }
    d(i) = z(i, i);
    z(i, i) = 1.0;
    for (int j = 1; j <= l; ++j) z(i, j) = z(j, i) = 0.0;
  }
}

// One sweep of plane rotations, from m - 1 down to l.
inline void sweep(const Matrix& z, const Vector& d, const Vector& e, int n, int l, int m) {
  double p = d(m);
  double c = 1.0;
  double s = 0.0;
  for (int i = m - 1; i >= l; --i) {
    const double g = c * e(i);
    double h = c * p;
    if (std::fabs(p) >= std::fabs(e(i))) {
      c = e(i) / p;
      const double r = std::sqrt(c * c + 1.0);
      e(i + 1) = s * p * r;
      s = c / r;
      c = 1.0 / r;
    } else {
      c = p / e(i);
      const double r = std::sqrt(c * c + 1.0);
      e(i + 1) = s * e(i) * r;
      s = 1.0 / r;
      c = c * s;
    }
    p = c * d(i) - s * g;
    d(i + 1) = h + s * (c * g + s * d(i));
    double* const left = z.column(i);
    double* const right = z.column(i + 1);
    for (int k = 0; k < n; ++k) {
      h = right[k];
      right[k] = s * left[k] + c * h;
      left[k] = c * left[k] - s * h;
    }
  }
  e(l) = s * p;
  d(l) = c * p;
}

// Shifts the origin by the eigenvalue of the leading 2 x 2 block that is nearer to d(l); the result
// is the shift.
inline double shift_origin(const Vector& d, const Vector& e, int n, int l) {
  const double g = d(l);
  const double p = (d(l + 1) - g) / (2.0 * e(l));
  const double r = std::sqrt(p * p + 1.0);
  d(l) = e(l) / (p + std::copysign(r, p));
  const double h = g - d(l);
  for (int i = l + 1; i <= n; ++i) d(i) -= h;
  return h;
}

inline void sort_ascending(const Matrix& z, const Vector& d, int n) {
  for (int i = 1; i < n; ++i) {
    int smallest = i;
    for (int j = i + 1; j <= n; ++j) {
      if (d(j) < d(smallest)) smallest = j;
    }
    if (smallest == i) continue;
    std::swap(d(i), d(smallest));
    std::swap_ranges(z.column(i), z.column(i) + n, z.column(smallest));
  }
}

inline void tred2e(const int& nm, const int& n, const double* a, double* d, double* e, double* z) {
  const Matrix transformation{z, nm};
  const Vector diagonal{d};
  const Vector subdiagonal{e};
  for (int j = 1; j <= n; ++j) {
    for (int i = j; i <= n; ++i) transformation(i, j) = a[(j - 1) * std::ptrdiff_t{nm} + i - 1];
  }
  for (int i = n; i >= 2; --i) reduce_row(transformation, diagonal, subdiagonal, i);
  if (n < 1) return;
  diagonal(1) = 0.0;
  subdiagonal(1) = 0.0;
  accumulate_transformations(transformation, diagonal, n);
}

inline void tql2e(const int& nm, const int& n, double* d, double* e, double* z, int& ierr) {
  ierr = 0;
  if (n <= 1) return;
  const Matrix vectors{z, nm};
  const Vector diagonal{d};
  const Vector subdiagonal{e};
  for (int i = 2; i <= n; ++i) subdiagonal(i - 1) = subdiagonal(i);
  subdiagonal(n) = 0.0;
  double f = 0.0;
  double b = 0.0;
  for (int l = 1; l <= n; ++l) {
    const double h = epsilon * (std::fabs(diagonal(l)) + std::fabs(subdiagonal(l)));
    if (b < h) b = h;
    int m = l;
    while (m < n && !(std::fabs(subdiagonal(m)) <= b)) ++m;
    int count = 0;
    if (m != l) {
      do {
        if (count == most_iterations) {
          ierr = l;
          return;
        }
        ++count;
        f += shift_origin(diagonal, subdiagonal, n, l);
        sweep(vectors, diagonal, subdiagonal, n, l, m);
        // The negated test also keeps a NaN from passing for converged.
      } while (!(std::fabs(subdiagonal(l)) <= b));
    }
    diagonal(l) += f;
  }
  sort_ascending(vectors, diagonal, n);
}

}  // namespace plain
