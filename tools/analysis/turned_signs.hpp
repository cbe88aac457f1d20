// Search for jobs whose transition dipole has turned its sign against the others.
//
// The sign of an excited state's wave function is arbitrary in every job. Where a sign has turned,
// the sum rules (sum_rules.hpp) are missed by twice what the job adds to them.
#pragma once

#include <Eigen/Dense>
#include <optional>
#include <vector>

#include "analysis/sum_rules.hpp"
#include "zandor/run_data.hpp"

namespace analysis {

// What counts as explained, as SumRuleResidual::explained takes it.
struct ResidualLimits {
  double bounds = 3.0;
  double relative = residual_allowed;
  double noise = noise_allowed;
  bool explain(const SumRuleResidual& residual) const {
    return residual.explained(bounds, relative, noise);
  }
};

struct TurnedSigns {
  SumRuleResidual as_read;
  // Computed jobs (0 is the reference) whose dipoles, with those of the jobs derived from them,
  // have to be multiplied by -1; empty where the signs as read are fine or nothing settles them.
  std::vector<int> jobs;
  SumRuleResidual settled;  // with the signs of `jobs` turned
  // The same with the next best choice of as many jobs; empty where the reference's dipole told.
  std::optional<SumRuleResidual> next_best;

  bool fine_as_read() const { return as_read.explained(); }
  // False where no single job or pair brings the residual to its floor: then a state has changed,
  // or more signs have turned than can be told.
  bool found() const { return !jobs.empty(); }
  // Whether the flips can be told from the next best ones: these leave 3 times as much, and more
  // than print rounding can make.
  bool certain() const {
    return found() && (!next_best || (next_best->absolute >= 3.0 * settled.absolute &&
                                      next_best->worst_ratio > 1.0));
  }
};

// When the residual is not explained, turns the jobs, any number, whose dipole points against that
// of the reference; if that does not explain it, the single job, then the pair of jobs, whose
// turned sign leaves the smallest residual. The first that leaves an explained residual is taken.
// dipoles with derived jobs filled in; an overall sign means nothing and is left as it is. Takes
// time and memory of the square of the number of computed jobs.
TurnedSigns find_turned_signs(const zandor::RunData& run, const Eigen::Matrix3Xd& dipoles,
                              const ResidualLimits& limits = {});

// Multiplies the dipoles of these jobs, and of those derived from them, by -1.
void turn_signs(const zandor::RunData& run, const std::vector<int>& jobs,
                Eigen::Matrix3Xd& dipoles);

}  // namespace analysis
