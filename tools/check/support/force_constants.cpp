#include "check/support/force_constants.hpp"

#include <algorithm>
#include <cmath>

#include "analysis/dipoles.hpp"

namespace check {

namespace {

// The root mean square of (F(c) - F0(c)) / step + h(ih, c) over the columns, with F0 the forces of
// the reference. It holds the error of a one-sided difference, which is the same for both jobs of a
// coordinate.
double one_sided_deviation(const JobData& jobs, int job, const std::vector<int>& columns) {
  const Eigen::VectorXd change = (jobs.forces(job) - jobs.forces(0)) / jobs.step(job);
  const Eigen::VectorXd deviation =
      change(columns) + jobs.context.raw.h((job - 1) / 2, columns).transpose();
  return deviation.norm() / std::sqrt(static_cast<double>(columns.size()));
}

}  // namespace

Eigen::MatrixXd RawForceConstants::asymmetry() const {
  Eigen::MatrixXd among = Eigen::MatrixXd::Zero(h.rows(), h.cols());
  among(columns, columns) = (h - h.transpose())(columns, columns).cwiseAbs();
  return among;
}

std::map<int, Eigen::Matrix3d> own_force_constants(const JobData& jobs) {
  std::map<int, Eigen::Matrix3d> blocks;
  for (int a = 0; a < jobs.run.natom; ++a) {
    if (jobs.usable_column(3 * a + 1) && jobs.usable_column(3 * a + 2) &&
        jobs.usable_column(3 * a + 3)) {
      blocks[a + 1] = jobs.context.raw.h.block<3, 3>(3 * a, 3 * a);
    }
  }
  return blocks;
}

RawForceConstants difference_forces(const JobData& jobs) {
  const zandor::RunData& run = jobs.run;
  RawForceConstants raw{{}, Eigen::VectorXd::Zero(run.n3), {}};
  for (int k = 0; k < run.n3; ++k) {
    if (!jobs.usable_column(k + 1)) continue;
    if (raw.columns.empty()) raw.h.setZero(run.n3, run.n3);  // a list without files needs no memory
    const analysis::StepJobs pair = analysis::step_jobs(run, k + 1);
    raw.h.col(k) = (jobs.forces(pair.minus) - jobs.forces(pair.plus)) / (2.0 * run.dx);
    raw.rounding(k) =
        (jobs.rounding(pair.plus) + jobs.rounding(pair.minus)) / std::fabs(2.0 * run.dx);
    raw.columns.push_back(k);
  }
  return raw;
}

std::vector<int> single_out(const JobData& jobs, const std::vector<int>& suspects,
                            const std::vector<int>& columns) {
  constexpr double stands_out = 2.0;
  if (suspects.size() < 2 || jobs.reference_forces.empty() || columns.empty()) return suspects;
  std::vector<std::pair<double, int>> deviations;
  for (const int job : suspects)
    deviations.emplace_back(one_sided_deviation(jobs, job, columns), job);
  std::stable_sort(deviations.rbegin(), deviations.rend());
  if (deviations[0].first < stands_out * deviations[1].first) return suspects;
  return {deviations[0].second};
}

}  // namespace check
