// Whether one cause explains what is wrong with most jobs.
#include <Eigen/Dense>
#include <algorithm>
#include <cmath>

#include "analysis/rigid_motions.hpp"
#include "check/support/context.hpp"
#include "check/support/findings.hpp"
#include "check/support/job_data.hpp"
#include "check/support/thresholds.hpp"

namespace check {

namespace {

// |F(+) + F(-) - 2 F(ref)| over |F(+) - F(-)|, median column: two states that touch at the
// reference give forces with a kink there, 1.02 to 1.53 in E and T2 states. Elsewhere it is
// curvature: 0.047 at most (single columns 0.33).
double even_over_odd(const JobData& jobs) {
  if (jobs.reference_forces.empty()) return not_known;
  Eigen::VectorXd ratios = Eigen::VectorXd::Constant(jobs.run.n3, not_known);
  for (const int k : jobs.context.raw.columns) {
    const auto a = jobs.forces(2 * k + 1), b = jobs.forces(2 * k + 2);
    const double odd = (a - b).norm();
    if (odd > 0.0) ratios(k) = (a + b - 2.0 * jobs.forces(0)).norm() / odd;
  }
  return median_over_jobs(jobs, ratios);
}

// The sum of the three own force constants of an atom, in size, where it is smallest; 0 where no
// atom has all of its jobs.
double smallest_own_trace(const JobData& jobs) {
  std::vector<double> traces;
  for (const auto& [atom, block] : own_force_constants(jobs)) {
    traces.push_back(std::fabs(block.trace()));
  }
  return traces.empty() ? 0.0 : *std::ranges::min_element(traces);
}

// |h(i,j) - h(j,i)|, the largest of each column, over the largest |h(i,j)| of it, in the median;
// and the same above print rounding, Hartree/Bohr**2.
struct Asymmetry {
  double relative = 0.0, excess = 0.0;
};
Asymmetry median_asymmetry(const JobData& jobs) {
  const RawForceConstants& raw = jobs.context.raw;
  const Eigen::VectorXd largest = raw.asymmetry().colwise().maxCoeff();
  Eigen::VectorXd relative = Eigen::VectorXd::Constant(jobs.run.n3, not_known);
  Eigen::VectorXd excess = relative;
  for (const int k : raw.columns) {
    const double size = raw.h(raw.columns, k).cwiseAbs().maxCoeff();
    if (size > 0.0) relative(k) = largest(k) / size;
    excess(k) = largest(k) - 2.0 * raw.rounding(k);
  }
  return {median_over_jobs(jobs, relative), median_over_jobs(jobs, excess)};
}

// How much of the transition dipoles, each taken with length 1, lies along the line that most of
// them share. Not known where most are not of the length of the reference's, or that is dark.
double share_along_line(const JobData& jobs) {
  constexpr double kept = 0.05;  // 0.016 and 0.012 in a Pi and an E state
  constexpr double dark = 1e-3;  // au: a hundred last digits of five decimals
  constexpr double most = 0.75;  // of the jobs: one of four may be wrong
  constexpr double few = 4.0;    // of fewer jobs one wrong dipole would make the share
  const zandor::RunData& run = jobs.run;
  const double length = Eigen::Map<const Eigen::Vector3d>(run.dipole0.data()).norm();
  Eigen::Matrix3d sum = Eigen::Matrix3d::Zero();
  int as_long = 0;
  for (const int i : jobs.read) {
    const Eigen::Map<const Eigen::Vector3d> dipole(run.tdip.column(i));
    if (std::fabs(dipole.norm() - length) > kept * length) continue;
    ++as_long;
    sum += dipole.normalized() * dipole.normalized().transpose();
  }
  const auto all = static_cast<double>(jobs.read.size());
  if (length < dark || all < few || as_long < most * all) return not_known;
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
  if (cause.even > kink && median_asymmetry(jobs).relative > asymmetric) return true;
  return cause.along_line < turning && analysis::rigid_motions(jobs.run).rank == 5;
}

CommonCause::Kind kind_of(const JobData& jobs, const CommonCause& cause, const Thresholds& limits) {
  // Atoms have 0.19 to 2.6; 51 times as much with forces in eV/Angstrom.
  constexpr double stiff = 5.0;
  // Of net_force: a turn of 0.5 degree makes 7 to 15 times as much. Real runs at default thresholds
  // have 0.97 and 1.6 times as much, tight ones 0.2 at most.
  constexpr double much = 10.0;
  constexpr double loose = 0.5;
  const NetForces& sums = jobs.context.sums;
  const double excess = median_over_jobs(jobs, sums.largest - sums.rounding);
  if (is_degenerate(jobs, cause) && excess <= much * limits.net_force) {
    return CommonCause::Kind::degenerate;
  }
  if (cause.own_trace > stiff) return CommonCause::Kind::other_units;
  if (excess > much * limits.net_force) {
    const bool turned = median_over_jobs(jobs, sums.force - sums.rounding) <= limits.net_force &&
                        median_asymmetry(jobs).excess > limits.asymmetry;
    return turned ? CommonCause::Kind::other_axes : CommonCause::Kind::held;
  }
  return excess > loose * limits.net_force ? CommonCause::Kind::loose : CommonCause::Kind::none;
}

}  // namespace

CommonCause find_common_cause(const JobData& jobs, const Thresholds& limits) {
  CommonCause cause;
  cause.net_force = median_over_jobs(jobs, jobs.context.sums.largest);
  cause.own_trace = smallest_own_trace(jobs);
  cause.even = even_over_odd(jobs);
  cause.along_line = share_along_line(jobs);
  cause.kind = kind_of(jobs, cause, limits);
  return cause;
}

}  // namespace check
