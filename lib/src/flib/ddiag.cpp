#include "flib/ddiag.hpp"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "flib/array.hpp"
#include "flib/kernels.hpp"

namespace flib {

namespace {

using Index = std::ptrdiff_t;

constexpr double epsilon = 2.220446049250313e-16;  // 2**-52, the unit of the convergence test
constexpr int most_iterations = 30;                // for one eigenvalue

constexpr Index reflections_together = 64;
constexpr int sweeps_together = 64;

// ---- tred2e: indices count from 0 below, rows and columns of z are those of the matrix ----------
//
// The upper triangle of z stands for the symmetric block that is still to be reduced: column j
// holds what row j of the lower triangle would, so that every loop runs along columns. Step i
// leaves its Householder vector u in column i above the diagonal, and h, half of u^T u, as d(i):
// the reflection is 1 - u u^T / h.

// Turns the n elements of u, scaled, into the Householder vector. The result is h, half of u^T u;
// `subdiagonal` becomes the element that is left of the row.
double form_householder_vector(double* u, Index n, double scale, double& subdiagonal) {
  double h = 0.0;
  for (Index k = 0; k < n; ++k) {
    u[k] /= scale;
    h += u[k] * u[k];
  }
  const double f = u[n - 1];
  const double g = -std::copysign(std::sqrt(h), f);
  subdiagonal = scale * g;
  u[n - 1] = f - g;
  return h - f * g;
}

// Makes q of the product A u, in place.
void form_update(const double* u, const double* product, Index n, double h, double* q) {
  double f = 0.0;
  for (Index j = 0; j < n; ++j) {
    q[j] = product[j] / h;
    f += q[j] * u[j];
  }
  const double hh = f / (h + h);
  for (Index j = 0; j < n; ++j) q[j] -= hh * u[j];
}

// The update of a step and the product of the next one share a pass over the block. d above the
// current row is free until its turn comes, and e holds q.
void reduce(const Kernels& kernels, Index nm, Index n, double* d, double* e, double* z) {
  const Array<double, 1> zeros("zeros", {n});
  // The update u q^T + q u^T of the step before, which the block has not seen yet.
  const double* last_u = zeros.data();
  const double* last_q = zeros.data();
  for (Index i = n - 1; i >= 1; --i) {
    double* const u = z + i * nm;
    const double ui = last_u[i];
    const double qi = last_q[i];
    for (Index k = 0; k <= i; ++k) u[k] = (u[k] - ui * last_q[k]) - qi * last_u[k];
    double scale = 0.0;
    for (Index k = 0; k < i && i > 1; ++k) scale += std::fabs(u[k]);
    const bool is_reduced = scale == 0.0;
    e[i] = u[i - 1];
    d[i] = is_reduced ? 0.0 : form_householder_vector(u, i, scale, e[i]);
    kernels.reduction_pass(z, nm, i, last_u, last_q, u, d);
    if (!is_reduced) form_update(u, d, i, d[i], e);
    last_u = is_reduced ? zeros.data() : u;
    last_q = is_reduced ? zeros.data() : e;
  }
}

// Applies the reflections in batches, and turns the columns of z that hold them into those of the
// transformation.
void accumulate(const Kernels& kernels, Index nm, Index n, double* d, double* z) {
  Array<double, 2> vectors("reflections", {n, 2 * reflections_together + 2});
  Array<double, 1> panel("panel", {n * reflection_columns});
  for (Index begin = 0; begin < n; begin += reflections_together) {
    const Index end = std::min(begin + reflections_together, n);
    for (Index i = begin; i < end; ++i) {
      double* const column = z + i * nm;
      double* const u = vectors.column(2 * (i - begin) + 2);
      double* const w = vectors.column(2 * (i - begin) + 3);
      const double h = d[i];
      for (Index k = 0; k < i; ++k) {
        u[k] = h != 0.0 ? column[k] : 0.0;
        w[k] = h != 0.0 ? column[k] / h : 0.0;
      }
      d[i] = column[i];
      std::fill_n(column, end, 0.0);
      column[i] = 1.0;
    }
    for (Index j = 0; j < begin; ++j) std::fill(z + j * nm + begin, z + j * nm + end, 0.0);
    kernels.reflect_columns(z, nm, end - 1, begin, vectors.data(), n, end - begin, panel.data());
  }
}

// ---- tql2e: d, e and the sweeps count from 1 as in the formulas ---------------------------------

using Vector = ArrayView<double, 1>;

// The plane rotations depend on d and e alone: they are recorded sweep by sweep and applied to the
// vectors in batches.
class RotationBatch {
 public:
  RotationBatch(const Kernels& kernels, Index nm, Index n, double* z)
      : kernels_(kernels),
        nm_(nm),
        n_(n),
        z_(z),
        pairs_("rotations", {2 * n, sweeps_together}),
        panel_("panel", {n * rotation_rows}) {}

  // Room for the rotations of the next sweep, between columns l and m: (c, s) of the rotation of
  // columns i and i + 1 goes to the places 2 (i - 1) and 2 (i - 1) + 1.
  double* next_sweep(Index l, Index m) {
    if (count_ == sweeps_together) apply();
    first_[count_] = l - 1;
    last_[count_] = m - 1;
    return pairs_.column(++count_);
  }

  void apply() {
    kernels_.rotate_columns(z_, nm_, n_, {pairs_.data(), n_, first_, last_, count_}, panel_.data());
    count_ = 0;
  }

 private:
  const Kernels& kernels_;
  Index nm_, n_;
  double* z_;
  Array<double, 2> pairs_;
  Array<double, 1> panel_;
  Index first_[sweeps_together] = {};
  Index last_[sweeps_together] = {};
  int count_ = 0;
};

// One sweep of plane rotations, from m - 1 down to l.
void sweep(double* pairs, const Vector& d, const Vector& e, int l, int m) {
  double p = d(m);
  double c = 1.0;
  double s = 0.0;
  for (int i = m - 1; i >= l; --i) {
    const double g = c * e(i);
    const double h = c * p;
    // The larger of the two divides. Selected without branches, which nothing could predict.
    const bool p_divides = std::fabs(p) >= std::fabs(e(i));
    const double divisor = p_divides ? p : e(i);
    const double quotient = (p_divides ? e(i) : p) / divisor;
    const double r = std::sqrt(quotient * quotient + 1.0);
    e(i + 1) = s * divisor * r;
    const double inverse = 1.0 / r;
    s = p_divides ? quotient / r : inverse;
    c = p_divides ? inverse : quotient * inverse;
    p = c * d(i) - s * g;
    d(i + 1) = h + s * (c * g + s * d(i));
    double* const pair = pairs + 2 * (Index{i} - 1);
    pair[0] = c;
    pair[1] = s;
  }
  e(l) = s * p;
  d(l) = c * p;
}

// Shifts the origin by the eigenvalue of the leading 2 x 2 block that is nearer to d(l); the result
// is the shift.
double shift_origin(const Vector& d, const Vector& e, int n, int l) {
  const double g = d(l);
  const double p = (d(l + 1) - g) / (2.0 * e(l));
  const double r = std::sqrt(p * p + 1.0);
  d(l) = e(l) / (p + std::copysign(r, p));
  const double h = g - d(l);
  for (int i = l + 1; i <= n; ++i) d(i) -= h;
  return h;
}

// Finds the eigenvalues; false with `failed` when one does not converge.
bool iterate(const Vector& d, const Vector& e, int n, RotationBatch& rotations, int& failed) {
  double f = 0.0;
  double b = 0.0;
  for (int l = 1; l <= n; ++l) {
    const double h = epsilon * (std::fabs(d(l)) + std::fabs(e(l)));
    if (b < h) b = h;
    int m = l;
    while (m < n && !(std::fabs(e(m)) <= b)) ++m;
    // The negated tests keep a NaN from passing for converged.
    for (int count = 0; m != l && !(std::fabs(e(l)) <= b); ++count) {
      if (count == most_iterations) {
        failed = l;
        return false;
      }
      f += shift_origin(d, e, n, l);
      sweep(rotations.next_sweep(l, m), d, e, l, m);
    }
    d(l) += f;
  }
  return true;
}

void sort_ascending(double* z, Index nm, const Vector& d, int n) {
  for (int i = 1; i < n; ++i) {
    int smallest = i;
    for (int j = i + 1; j <= n; ++j) {
      if (d(j) < d(smallest)) smallest = j;
    }
    if (smallest == i) continue;
    std::swap(d(i), d(smallest));
    double* const column = z + Index{i - 1} * nm;
    std::swap_ranges(column, column + n, z + Index{smallest - 1} * nm);
  }
}

}  // namespace

void tred2e(const Kernels& kernels, const int& nm, const int& n, const double* a, double* d,
            double* e, double* z) {
  if (n < 1) return;
  const Index rows = nm;
  for (Index j = 0; j < n; ++j) {
    for (Index i = j; i < n; ++i) z[i * rows + j] = a[j * rows + i];
  }
  reduce(kernels, rows, n, d, e, z);
  d[0] = 0.0;
  e[0] = 0.0;
  accumulate(kernels, rows, n, d, z);
}

void tql2e(const Kernels& kernels, const int& nm, const int& n, double* d, double* e, double* z,
           int& ierr) {
  ierr = 0;
  if (n <= 1) return;
  const Vector diagonal(d, {n});
  const Vector subdiagonal(e, {n});
  std::copy(e + 1, e + n, e);
  subdiagonal(n) = 0.0;
  RotationBatch rotations(kernels, nm, n, z);
  const bool converged = iterate(diagonal, subdiagonal, n, rotations, ierr);
  rotations.apply();
  if (converged) sort_ascending(z, nm, diagonal, n);
}

void tred2e(const int& nm, const int& n, const double* a, double* d, double* e, double* z) {
  tred2e(best_kernels(), nm, n, a, d, e, z);
}

void tql2e(const int& nm, const int& n, double* d, double* e, double* z, int& ierr) {
  tql2e(best_kernels(), nm, n, d, e, z, ierr);
}

}  // namespace flib
