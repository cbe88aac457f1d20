#include "analysis/turned_signs.hpp"

#include <algorithm>
#include <limits>
#include <utility>

#include "analysis/dipoles.hpp"

namespace analysis {

namespace {

// The two choices with the smallest squared residuals.
struct Ranking {
  struct Choice {
    double square = std::numeric_limits<double>::infinity();
    std::vector<int> jobs;
  };
  Choice best, next;

  void offer(double square, std::initializer_list<int> jobs) {
    if (square < best.square) {
      next = std::exchange(best, {square, jobs});
    } else if (square < next.square) {
      next = {square, jobs};
    }
  }
};

// What the conditions change by when the sign of each computed job is turned, with the jobs derived
// from it: -2 times the sum of their terms, at the column of the computed job.
SumRuleVectors changes_by_job(const zandor::RunData& run, const SumRuleVectors& terms) {
  SumRuleVectors changes = SumRuleVectors::Zero(sum_rule_count, terms.cols());
  changes.col(0) = -2.0 * terms.col(0);
  for (int i = 1; i <= run.n6; ++i) {
    const int source = computed_source(run, i);
    if (source > 0) changes.col(source) -= 2.0 * terms.col(i);
  }
  return changes;
}

// Jobs that change nothing are no choice.
std::vector<int> choices(const SumRuleVectors& changes) {
  std::vector<int> jobs;
  for (int i = 0; i < changes.cols(); ++i) {
    if (changes.col(i).squaredNorm() > 0.0) jobs.push_back(i);
  }
  return jobs;
}

Ranking rank_singles(const SumRuleVectors& changes, const Eigen::VectorXd& residual) {
  Ranking ranking;
  for (const int i : choices(changes)) {
    ranking.offer((residual + changes.col(i)).squaredNorm(), {i});
  }
  return ranking;
}

Ranking rank_pairs(const SumRuleVectors& changes, const Eigen::VectorXd& residual) {
  const std::vector<int> jobs = choices(changes);
  Ranking ranking;
  for (std::size_t a = 0; a < jobs.size(); ++a) {
    const Eigen::Matrix<double, sum_rule_count, 1> first = residual + changes.col(jobs[a]);
    for (std::size_t b = a + 1; b < jobs.size(); ++b) {
      ranking.offer((first + changes.col(jobs[b])).squaredNorm(), {jobs[a], jobs[b]});
    }
  }
  return ranking;
}

std::vector<int> against_reference(const zandor::RunData& run, const Eigen::Matrix3Xd& dipoles) {
  std::vector<int> against;
  std::vector<int> along = {0};
  for (int i = 1; i <= run.n6; ++i) {
    if (!run.jobs[static_cast<std::size_t>(i)].is_calc) continue;
    (dipoles.col(i).dot(dipoles.col(0)) < 0.0 ? against : along).push_back(i);
  }
  return along.size() < against.size() ? along : against;
}

SumRuleResidual residual_with(const zandor::RunData& run, const std::vector<int>& jobs,
                              Eigen::Matrix3Xd dipoles) {
  turn_signs(run, jobs, dipoles);
  return sum_rule_residual(run, dipoles);
}

// Takes the choice when it explains the residual.
bool settle(const zandor::RunData& run, const Eigen::Matrix3Xd& dipoles,
            const std::vector<int>& jobs, const std::vector<int>& next,
            const ResidualLimits& limits, TurnedSigns& signs) {
  if (jobs.empty()) return false;
  const SumRuleResidual residual = residual_with(run, jobs, dipoles);
  if (!limits.explain(residual)) return false;
  signs.jobs = jobs;
  signs.settled = residual;
  if (!next.empty()) signs.next_best = residual_with(run, next, dipoles);
  return true;
}

}  // namespace

TurnedSigns find_turned_signs(const zandor::RunData& run, const Eigen::Matrix3Xd& dipoles,
                              const ResidualLimits& limits) {
  TurnedSigns signs;
  signs.as_read = sum_rule_residual(run, dipoles);
  signs.settled = signs.as_read;
  if (limits.explain(signs.as_read)) return signs;
  if (settle(run, dipoles, against_reference(run, dipoles), {}, limits, signs)) return signs;
  const SumRuleVectors terms = sum_rule_terms(run, dipoles);
  const SumRuleVectors changes = changes_by_job(run, terms);
  const Eigen::VectorXd residual = terms.rowwise().sum();
  const Ranking single = rank_singles(changes, residual);
  if (settle(run, dipoles, single.best.jobs, single.next.jobs, limits, signs)) return signs;
  const Ranking pair = rank_pairs(changes, residual);
  settle(run, dipoles, pair.best.jobs, pair.next.jobs, limits, signs);
  return signs;
}

void turn_signs(const zandor::RunData& run, const std::vector<int>& jobs,
                Eigen::Matrix3Xd& dipoles) {
  const auto turned = [&](int job) {
    return std::find(jobs.begin(), jobs.end(), job) != jobs.end();
  };
  if (turned(0)) dipoles.col(0) *= -1.0;
  for (int i = 1; i <= run.n6; ++i) {
    const int source = computed_source(run, i);
    if (source > 0 && turned(source)) dipoles.col(i) *= -1.0;
  }
}

}  // namespace analysis
