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

// A rank-two update u q^T + q u^T that the block has not seen yet; null where there is none.
struct Pending {
  const double* u = nullptr;
  const double* q = nullptr;
};

void update_column(double* column, Index j, const Pending& pending) {
  if (pending.u == nullptr) return;
  const double uj = pending.u[j];
  const double qj = pending.q[j];
  for (Index k = 0; k <= j; ++k) {
    column[k] = (column[k] - uj * pending.q[k]) - qj * pending.u[k];
  }
}

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
  Pending pending;
  for (Index i = n - 1; i >= 1; --i) {
    double* const u = z + i * nm;
    update_column(u, i, pending);
    double scale = 0.0;
    if (i > 1) {
      for (Index k = 0; k < i; ++k) scale += std::fabs(u[k]);
    }
    d[i] = 0.0;
    if (scale == 0.0) {
      e[i] = u[i - 1];
      kernels.reduction_pass(z, nm, i, pending.u, pending.q, nullptr, nullptr);
      pending = {};
      continue;
    }
    const double h = form_householder_vector(u, i, scale, e[i]);
    kernels.reduction_pass(z, nm, i, pending.u, pending.q, u, d);
    form_update(u, d, i, h, e);
    d[i] = h;
    pending = {u, e};
  }
}

// The reflections of the steps [begin, end), copied out of z, whose columns become those of the
// transformation: u, and w = u / h.
class ReflectionBatch {
 public:
  explicit ReflectionBatch(Index n) : vectors_("reflections", {n, 2 * reflections_together}) {}

  // Also gives the columns their first elements: d(i) the diagonal, 1 in its place, 0 elsewhere.
  void take(Index nm, Index begin, Index end, double* d, double* z) {
    for (Index i = begin; i < end; ++i) {
      const Index b = i - begin;
      double* const column = z + i * nm;
      double* const u = vectors_.column(2 * b + 1);
      double* const w = vectors_.column(2 * b + 2);
      for (Index k = 0; k < i && d[i] != 0.0; ++k) {
        u[k] = column[k];
        w[k] = column[k] / d[i];
      }
      u_[b] = d[i] != 0.0 ? u : nullptr;
      w_[b] = w;
      d[i] = column[i];
      std::fill_n(column, end, 0.0);
      column[i] = 1.0;
    }
    for (Index j = 0; j < begin; ++j) std::fill(z + j * nm + begin, z + j * nm + end, 0.0);
  }

  const double* const* u() const { return u_; }
  const double* const* w() const { return w_; }

 private:
  Array<double, 2> vectors_;
  const double* u_[reflections_together] = {};
  const double* w_[reflections_together] = {};
};

void accumulate(const Kernels& kernels, Index nm, Index n, double* d, double* z) {
  ReflectionBatch batch(n);
  Array<double, 1> panel("panel", {n * reflection_columns});
  for (Index begin = 0; begin < n; begin += reflections_together) {
    const Index end = std::min(begin + reflections_together, n);
    batch.take(nm, begin, end, d, z);
    kernels.reflect_columns(z, nm, end - 1, begin, batch.u(), batch.w(),
                            static_cast<int>(end - begin), panel.data());
  }
}

// The same for matrices with a NaN, one reflection and column at a time. Batches also take columns
// through reflections of earlier steps than their own, which changes nothing unless there is a NaN.
void accumulate_one_by_one(Index nm, Index n, double* d, double* z) {
  for (Index i = 0; i < n; ++i) {
    double* const u = z + i * nm;
    const double h = d[i];
    for (Index j = 0; j < i && h != 0.0; ++j) {
      double* const column = z + j * nm;
      double g = 0.0;
      for (Index k = 0; k < i; ++k) g += u[k] * column[k];
      for (Index k = 0; k < i; ++k) column[k] -= g * (u[k] / h);
    }
    d[i] = u[i];
    std::fill_n(u, i, 0.0);
    u[i] = 1.0;
    for (Index j = 0; j < i; ++j) z[j * nm + i] = 0.0;
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
  if (std::all_of(d, d + n, [](double h) { return std::isfinite(h); })) {
    accumulate(kernels, rows, n, d, z);
  } else {
    accumulate_one_by_one(rows, n, d, z);
  }
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
