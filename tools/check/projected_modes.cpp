#include "projected_modes.hpp"

#include <algorithm>
#include <cmath>

#include "flib/ddiag.hpp"
#include "flib/fc_to_fcm.hpp"
#include "flib/projtrm_rot.hpp"
#include "flib/units_of_measure.hpp"
#include "force_constants.hpp"

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

void shift_diagonal(flib::Array<double, 2>& matrix, int n3, double shift) {
  for (int i = 1; i <= n3; ++i) matrix(i, i) += shift;
}

}  // namespace

bool analyse_projected_modes(JobData& jobs) {
  zandor::RunData& run = jobs.run;
  const RawForceConstants raw = difference_forces(jobs);
  const bool has_masses =
      std::all_of(run.mass.data(), run.mass.data() + run.natom, [](double m) { return m > 0.0; });
  if (static_cast<int>(raw.columns.size()) < run.n3 || !jobs.input || !has_masses) return false;
  for (int ih = 1; ih <= run.n3; ++ih) run.sqtmass(ih) = std::sqrt(run.mass((ih - 1) / 3 + 1));
  symmetrise(raw, run.n3, run.hess);
  int info = 0;
  flib::fc_to_fcm(run.n3, run.sqtmass.data(), run.hess.data(), run.mhessp.data(), 1, info);
  flib::projtrm_rot(run.natom, jobs.input_x.data(), run.mass.data(), run.mhessp.data(), info);
  shift_diagonal(run.mhessp, run.n3, diagonal_shift);
  int ier = 0;
  flib::tred2e(run.n3, run.n3, run.mhessp.data(), run.evalp.data(), run.wkp.data(), run.cp.data());
  flib::tql2e(run.n3, run.n3, run.evalp.data(), run.wkp.data(), run.cp.data(), ier);
  if (ier != 0) return false;
  for (int i = 1; i <= run.n3; ++i) run.evalp(i) -= diagonal_shift;
  return true;
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
