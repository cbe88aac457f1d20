#include "check/support/force_constants.hpp"

#include <algorithm>
#include <cmath>

#include "analysis/dipoles.hpp"

namespace check {

RawForceConstants difference_forces(const JobData& jobs) {
  const zandor::RunData& run = jobs.run;
  RawForceConstants raw{{"raw force constants", {run.n3, run.n3}}, {}, {}};
  raw.rounding.resize(static_cast<std::size_t>(run.n3));
  for (int ih = 1; ih <= run.n3; ++ih) {
    if (!jobs.usable_column(ih)) continue;
    const analysis::StepJobs pair = analysis::step_jobs(run, ih);
    const double* const plus = run.force.column(1, pair.plus);
    const double* const minus = run.force.column(1, pair.minus);
    double* const column = raw.h.column(ih);
    for (int j = 0; j < run.n3; ++j) column[j] = (minus[j] - plus[j]) / (2.0 * run.dx);
    const double digits = jobs.rounding(pair.plus) + jobs.rounding(pair.minus);
    raw.rounding[static_cast<std::size_t>(ih - 1)] = digits / std::fabs(2.0 * run.dx);
    raw.columns.push_back(ih);
  }
  return raw;
}

double one_sided_deviation(const JobData& jobs, const RawForceConstants& raw, int job,
                           const std::vector<int>& coordinates) {
  const std::vector<double>& reference = jobs.reference_forces;
  if (reference.empty() || coordinates.empty()) return -1.0;
  const double step = step_sign(jobs.run, job) * jobs.run.dx;
  const double* const forces = jobs.run.force.column(1, job);
  const int ih = (job + 1) / 2;
  double sum = 0.0;
  for (const int c : coordinates) {
    const auto place = static_cast<std::size_t>(c - 1);
    const double deviation = (forces[place] - reference[place]) / step + raw.h(ih, c);
    sum += deviation * deviation;
  }
  return std::sqrt(sum / static_cast<double>(coordinates.size()));
}

double even_deviation(const JobData& jobs, int ih) {
  const std::vector<double>& reference = jobs.reference_forces;
  if (reference.empty()) return -1.0;
  const double* const a = jobs.run.force.column(1, 2 * ih - 1);
  const double* const b = jobs.run.force.column(1, 2 * ih);
  double sum = 0.0;
  for (std::size_t k = 0; k < reference.size(); ++k) {
    sum += std::pow((a[k] + b[k]) / 2.0 - reference[k], 2);
  }
  return std::sqrt(sum) / std::fabs(jobs.run.dx);
}

std::vector<int> single_out(const JobData& jobs, const RawForceConstants& raw,
                            const std::vector<int>& suspects, const std::vector<int>& coordinates) {
  double worst = -1.0;
  double next = -1.0;
  std::vector<int> job = suspects;
  for (const int suspect : suspects) {
    const double deviation = one_sided_deviation(jobs, raw, suspect, coordinates);
    if (deviation < 0.0) return suspects;
    if (deviation > worst) {
      next = worst;
      worst = deviation;
      job = {suspect};
    } else {
      next = std::max(next, deviation);
    }
  }
  return worst >= 2.0 * next ? job : suspects;
}

}  // namespace check
