#include "check/support/projected_modes.hpp"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "check/support/force_constants.hpp"
#include "flib/com.hpp"
#include "flib/ddiag.hpp"
#include "flib/fc_to_fcm.hpp"
#include "flib/formtrm1.hpp"
#include "flib/kernels.hpp"
#include "flib/units_of_measure.hpp"

namespace check {

namespace {

// The shift of the analysis, which sets the noise of its eigenvalues.
constexpr double diagonal_shift = 100000.0;

void symmetrise(const RawForceConstants& raw, int n3, flib::Array<double, 2>& hess) {
  for (int i = 1; i <= n3; ++i) {
    for (int j = 1; j <= i; ++j) {
      hess(j, i) = (raw.h(i, j) + raw.h(j, i)) / 2.0;
      hess(i, j) = hess(j, i);
    }
  }
}

// product = A V of a symmetric n3 x n3 matrix and six vectors.
void multiply_by_vectors(int n3, const flib::Array<double, 2>& a, const flib::Array<double, 2>& v,
                         flib::Array<double, 2>& product) {
  for (int j = 1; j <= n3; ++j) {
    const double* const column = a.column(j);
    for (int k = 1; k <= 6; ++k) {
      const double factor = v(j, k);
      double* const sum = product.column(k);
      for (int i = 0; i < n3; ++i) sum[i] += column[i] * factor;
    }
  }
}

// What projtrm_rot does, P A P with P = 1 - V V^T, as A - V W^T - W V^T with
// W = A V - V (V^T A V) / 2: of the order n3**2.
void project(const JobData& jobs, flib::Array<double, 2>& a) {
  const int n3 = jobs.run.n3;
  int info = 0;
  flib::Array<double, 2> centred("centred geometry", {3, jobs.run.natom});
  std::copy_n(jobs.input_x.data(), n3, centred.data());
  flib::com(jobs.run.natom, jobs.run.mass.data(), centred.data(), info);
  flib::Array<double, 2> v("rigid motions", {n3, 6});
  flib::formtrm1(jobs.run.natom, jobs.run.mass.data(), centred.data(), v.data());
  flib::Array<double, 2> w("product", {n3, 6});
  multiply_by_vectors(n3, a, v, w);
  double block[6][6];
  for (int k = 0; k < 6; ++k) {
    for (int l = 0; l < 6; ++l) {
      block[k][l] = std::inner_product(v.column(k + 1), v.column(k + 1) + n3, w.column(l + 1), 0.0);
    }
  }
  for (int l = 1; l <= 6; ++l) {
    for (int k = 1; k <= 6; ++k) {
      for (int i = 1; i <= n3; ++i) w(i, l) -= v(i, k) * block[k - 1][l - 1] / 2.0;
    }
  }
  for (int j = 1; j <= n3; ++j) {
    double* const column = a.column(j);
    for (int k = 1; k <= 6; ++k) {
      const double* const v_k = v.column(k);
      const double* const w_k = w.column(k);
      for (int i = 0; i < n3; ++i) column[i] -= v_k[i] * w_k[j - 1] + w_k[i] * v_k[j - 1];
    }
  }
}

}  // namespace

bool find_eigenvalues(int n, const double* matrix, double* values) {
  flib::Kernels kernels = flib::best_kernels();
  kernels.reflect_columns = [](double*, std::ptrdiff_t, std::ptrdiff_t, std::ptrdiff_t,
                               const double* const*, const double* const*, int, double*) {};
  kernels.rotate_columns = [](double*, std::ptrdiff_t, std::ptrdiff_t, const flib::Sweeps&,
                              double*) {};
  flib::Array<double, 1> subdiagonal("subdiagonal", {n});
  flib::Array<double, 2> work("reduced matrix", {n, n});
  int ier = 0;
  flib::tred2e(kernels, n, n, matrix, values, subdiagonal.data(), work.data());
  flib::tql2e(kernels, n, n, values, subdiagonal.data(), work.data(), ier);
  return ier == 0;
}

std::string analyse_projected_modes(JobData& jobs) {
  zandor::RunData& run = jobs.run;
  const bool has_masses =
      std::all_of(run.mass.data(), run.mass.data() + run.natom, [](double m) { return m > 0.0; });
  if (!has_masses) return "the projection needs the masses";
  if (!jobs.input) return "the projection needs the input";
  const RawForceConstants raw = difference_forces(jobs);
  if (static_cast<int>(raw.columns.size()) < run.n3) return "the projection needs all jobs";
  for (int ih = 1; ih <= run.n3; ++ih) run.sqtmass(ih) = std::sqrt(run.mass((ih - 1) / 3 + 1));
  symmetrise(raw, run.n3, run.hess);
  int info = 0;
  flib::fc_to_fcm(run.n3, run.sqtmass.data(), run.hess.data(), run.mhessp.data(), 1, info);
  project(jobs, run.mhessp);
  flib::Array<double, 2> shifted("shifted force constants", {run.n3, run.n3});
  std::copy_n(run.mhessp.data(), run.mhessp.size(), shifted.data());
  for (int i = 1; i <= run.n3; ++i) shifted(i, i) += diagonal_shift;
  if (!find_eigenvalues(run.n3, shifted.data(), run.evalp.data())) {
    return "an eigenvalue of the projected force constants does not converge";
  }
  for (int i = 1; i <= run.n3; ++i) run.evalp(i) -= diagonal_shift;
  return {};
}

double wavenumber(double eigenvalue) {
  return std::copysign(std::sqrt(std::fabs(eigenvalue)), eigenvalue) * flib::wavenumbers_per_au;
}

zandor::RunData projection_frame(const JobData& jobs) {
  zandor::RunData frame;
  frame.natom = jobs.run.natom;
  frame.n3 = jobs.run.n3;
  frame.mass = {"mass", {frame.natom}};
  frame.x = {"x", {3, frame.natom}};
  std::copy_n(jobs.run.mass.data(), jobs.run.mass.size(), frame.mass.data());
  std::copy_n(jobs.input_x.data(), jobs.input_x.size(), frame.x.data());
  return frame;
}

}  // namespace check
