#include "check/support/common_cause.hpp"

#include <Eigen/Dense>
#include <algorithm>
#include <cmath>

#include "analysis/rigid_motions.hpp"
#include "check/support/net_force.hpp"
#include "check/support/report.hpp"

namespace check {

namespace {

using Forces = Eigen::Map<const Eigen::VectorXd>;

// |F(+) + F(-) - 2 F(ref)| over |F(+) - F(-)|, median column: two states that touch at the
// reference give forces with a kink there, 1.02 to 1.53 in E and T2 states. Elsewhere it is
// curvature: 0.047 at most (single columns 0.33).
double even_over_odd(const JobData& jobs) {
  const zandor::RunData& run = jobs.run;
  if (jobs.reference_forces.empty()) return not_known;
  const Forces reference(jobs.reference_forces.data(), run.n3);
  std::map<int, double> ratios;
  for (const int ih : jobs.context.raw.columns) {
    const Forces a(run.force.column(1, 2 * ih - 1), run.n3);
    const Forces b(run.force.column(1, 2 * ih), run.n3);
    const double odd = (a - b).norm();
    if (odd > 0.0) ratios[ih] = (a + b - 2.0 * reference).norm() / odd;
  }
  return median_over_jobs(jobs, ratios);
}

// The sum of the three own force constants of an atom, in size, where it is smallest; 0 where no
// atom has all of its jobs.
double smallest_own_trace(const JobData& jobs) {
  const RawForceConstants& raw = jobs.context.raw;
  double smallest = std::numeric_limits<double>::infinity();
  for (int atom = 1; atom <= jobs.run.natom; ++atom) {
    double trace = 0.0;
    bool known = true;
    for (int ih = 3 * atom - 2; ih <= 3 * atom; ++ih) {
      known = known && jobs.usable_column(ih);
      trace += raw.h(ih, ih);
    }
    if (known) smallest = std::min(smallest, std::fabs(trace));
  }
  return std::isfinite(smallest) ? smallest : 0.0;
}

// |h(i,j) - h(j,i)|, the largest of each column; relative: over the largest |h(i,j)| of it.
double median_asymmetry(const JobData& jobs, bool relative) {
  const RawForceConstants& raw = jobs.context.raw;
  std::map<int, double> asymmetries;
  for (const int j : raw.columns) {
    double largest = 0.0, size = 0.0;
    for (const int i : raw.columns) {
      largest = std::max(largest, std::fabs(raw.h(i, j) - raw.h(j, i)));
      size = std::max(size, std::fabs(raw.h(i, j)));
    }
    if (!relative) {
      const double rounding = raw.rounding[static_cast<std::size_t>(j - 1)];
      asymmetries[j] = largest - 2.0 * rounding;
    } else if (size > 0.0) {
      asymmetries[j] = largest / size;
    }
  }
  return median_over_jobs(jobs, asymmetries);
}

// How much of the transition dipoles, each taken with length 1, lies along the line that most of
// them share. Not known where they are not of the length of the reference's, within 5 % in
// three of four, or that is dark.
double share_along_line(const JobData& jobs) {
  constexpr double kept = 0.05;  // 0.016 and 0.012 in a Pi and an E state
  constexpr double dark = 1e-3;  // au
  const zandor::RunData& run = jobs.run;
  const double length = Eigen::Map<const Eigen::Vector3d>(run.dipole0.data()).norm();
  Eigen::Matrix3d sum = Eigen::Matrix3d::Zero();
  int all = 0, as_long = 0;
  for (int i = 1; i <= run.n6; ++i) {
    if (!jobs.job(i).is_calc || !jobs.usable(i)) continue;
    const Eigen::Map<const Eigen::Vector3d> dipole(run.tdip.column(i));
    ++all;
    if (std::fabs(dipole.norm() - length) > kept * length) continue;
    ++as_long;
    sum += dipole.normalized() * dipole.normalized().transpose();
  }
  if (length < dark || all < 4 || 4 * as_long < 3 * all) return not_known;
  const Eigen::SelfAdjointEigenSolver<Eigen::Matrix3d> solver(sum / as_long);
  return solver.eigenvalues()(2);
}

// The forces of E and T2 states spoil the odd parts, too (asymmetry over the column's largest
// element 0.62 and 0.79, elsewhere 0.017 at most); a wrong reference does not. Only in linear
// molecules may a degenerate state have smooth forces (Jahn and Teller): its dipoles tell.
bool is_degenerate(const JobData& jobs, const CommonCause& cause) {
  constexpr double kink = 0.3;
  constexpr double asymmetric = 0.1;
  constexpr double turning = 0.75;  // 0.50 to 0.57 in E and Pi states, elsewhere 0.9994 at least
  if (cause.even > kink && median_asymmetry(jobs, true) > asymmetric) return true;
  return cause.along_line < turning && analysis::rigid_motions(jobs.run).rank == 5;
}

CommonCause::Kind kind_of(const JobData& jobs, const CommonCause& cause, const Thresholds& limits) {
  // Atoms have 0.19 to 2.6; 51 times as much with forces in eV/Angstrom.
  constexpr double stiff = 5.0;
  constexpr double much = 10.0;
  std::map<int, double> forces, excesses;
  for (const auto& [ih, column] : net_forces(jobs)) {
    forces[ih] = column.force - column.rounding;
    excesses[ih] = column.largest() - column.rounding;
  }
  const double excess = median_over_jobs(jobs, excesses);
  if (is_degenerate(jobs, cause) && excess <= much * limits.net_force) {
    return CommonCause::Kind::degenerate;
  }
  if (cause.own_trace > stiff) return CommonCause::Kind::other_units;
  if (excess > much * limits.net_force) {
    const bool turned = median_over_jobs(jobs, forces) <= limits.net_force &&
                        median_asymmetry(jobs, false) > limits.asymmetry;
    return turned ? CommonCause::Kind::other_axes : CommonCause::Kind::held;
  }
  // Real runs at default thresholds have 0.97e-4 and 1.6e-4, tight ones 2e-5 at most.
  return excess > 0.5 * limits.net_force ? CommonCause::Kind::loose : CommonCause::Kind::none;
}

}  // namespace

CommonCause find_common_cause(const JobData& jobs, const Thresholds& limits) {
  CommonCause cause;
  std::map<int, double> sums;
  for (const auto& [ih, column] : net_forces(jobs)) sums[ih] = column.largest();
  cause.net_force = median_over_jobs(jobs, sums);
  cause.own_trace = smallest_own_trace(jobs);
  cause.even = even_over_odd(jobs);
  cause.along_line = share_along_line(jobs);
  cause.kind = kind_of(jobs, cause, limits);
  return cause;
}

}  // namespace check
