// Transition dipoles: exact sum rules, and jumps.
#include <algorithm>
#include <cmath>
#include <optional>

#include "analysis/characters.hpp"
#include "analysis/dipoles.hpp"
#include "analysis/turned_signs.hpp"
#include "check/checks.hpp"

namespace check {

namespace {

using analysis::TurnedSigns;

// Why the sum rules cannot be looked at; empty when they can.
std::string obstacle(const JobData& jobs) {
  if (!jobs.has_geometry() || !jobs.sign_file(0).has_dipole) {
    return "the reference's geometry or dipole is missing";
  }
  int missing = 0;
  for (int i = 1; i <= jobs.run.n6; ++i) missing += jobs.usable(i) ? 0 : 1;
  if (missing > 0) return counted(missing, "job") + " without a dipole, and the sums need all";
  if (analysis::job_dipoles(jobs.run).isZero(0.0)) return "all transition dipoles are zero";
  return {};
}

struct Candidate {
  TurnedSigns signs;
  double gradient = 0.0;  // norm of the dipole gradient with these signs
  bool passes = true;     // through the reference's dipole, from one step to the other
  bool explains = false;  // the residual, with these signs
};

// One that explains the residual before one that does not; then the larger gradient, since wrong
// signs of the operations may make dipoles cancel, which explains anything.
bool is_better(const Candidate& a, const Candidate& b) {
  if (a.passes != b.passes) return a.passes;
  if (a.explains != b.explains) return a.explains;
  if (!a.explains) return a.signs.settled.absolute < b.signs.settled.absolute;
  if (a.gradient != b.gradient) return a.gradient > b.gradient;
  return a.signs.jobs.size() < b.signs.jobs.size();
}

// With derived jobs the signs of the operations are not known: all that the group allows are tried,
// as read and with signs of jobs turned.
Candidate search(const JobData& jobs, const analysis::ResidualLimits& limits) {
  Eigen::Matrix3Xd dipoles = analysis::job_dipoles(jobs.run);
  if (!analysis::needs_characters(jobs.run)) {
    return {analysis::find_turned_signs(jobs.run, dipoles, limits)};
  }
  std::optional<Candidate> best;
  for (const analysis::Characters& characters : analysis::allowed_characters(jobs.run)) {
    analysis::derive_dipoles(jobs.run, characters, dipoles);
    Candidate candidate{analysis::find_turned_signs(jobs.run, dipoles, limits)};
    Eigen::Matrix3Xd turned = dipoles;
    analysis::turn_signs(jobs.run, candidate.signs.jobs, turned);
    candidate.gradient = analysis::dipole_gradient(jobs.run, turned).norm();
    candidate.passes = analysis::goes_through_reference(jobs.run, turned);
    candidate.explains = limits.explain(candidate.signs.settled);
    if (!best || is_better(candidate, *best)) best = std::move(candidate);
  }
  Candidate found = best.value_or(Candidate{});
  // Among so many signs only what can be told from the next best is worth a word.
  if (!found.passes || !found.signs.certain()) found.signs.jobs.clear();
  return found;
}

void report_signs(const JobData& jobs, const Candidate& found, bool rules_met, Severity severity,
                  Report& report) {
  const TurnedSigns& signs = found.signs;
  std::string text = "the transition dipoles miss their sum rules: residual " +
                     rounded(signs.as_read.absolute) + " au (" + rounded(signs.as_read.relative) +
                     " of its terms, " + rounded(signs.as_read.worst_ratio) +
                     " times what print rounding allows)";
  if (rules_met) {
    text =
        "whatever the signs of the operations, the transition dipoles of derived jobs and of "
        "their sources do not lie on either side of the reference's";
  }
  if (severity == Severity::note) {
    if (!rules_met) text += ": those of turns alone, which need not hold in a layered job";
    report.note({zandor::job_list_name}, text);
    return;
  }
  if (!signs.found()) {
    report.add(severity, {zandor::job_list_name},
               text +
                   "; no single sign or pair of signs explains it: more signs have turned, or a "
                   "state has changed");
    return;
  }
  text += signs.certain() ? "; turn the sign of " : "; perhaps turn the sign of ";
  for (std::size_t k = 0; k < signs.jobs.size(); ++k) {
    text += (k > 0 ? " and of " : "") + job_text(jobs, signs.jobs[k]) + ", " +
            std::string(jobs.job(signs.jobs[k]).sgn_name.content());
  }
  report.add(severity, place_of(jobs, signs.jobs.front()),
             text + ": that leaves " + rounded(signs.settled.absolute), signs.jobs.front());
}

struct Jump {
  int ih = 0;
  int job = 0;          // the job to blame
  bool single = false;  // its partner has no dipole of its own: twice the change from the reference
  double as_read = 0.0;  // |mu(+) - mu(-)|
  double turned = 0.0;   // |mu(+) + mu(-)|
};

// The job whose dipole is further from the reference's, in either sign.
int further_job(const Eigen::Matrix3Xd& dipoles, int ih) {
  const auto distance = [&](int i) {
    return std::min((dipoles.col(i) - dipoles.col(0)).norm(),
                    (dipoles.col(i) + dipoles.col(0)).norm());
  };
  return distance(2 * ih) > distance(2 * ih - 1) ? 2 * ih : 2 * ih - 1;
}

// Whether a job has a dipole of its own that can be used.
bool has_dipole(const JobData& jobs, int i) { return jobs.job(i).is_calc && jobs.usable(i); }

std::vector<Jump> jumps_of(const JobData& jobs, const Eigen::Matrix3Xd& dipoles) {
  std::vector<Jump> jumps;
  const auto add = [&](int ih, int job, int from, double factor) {
    jumps.push_back({ih, job, from == 0, factor * (dipoles.col(job) - dipoles.col(from)).norm(),
                     factor * (dipoles.col(job) + dipoles.col(from)).norm()});
  };
  for (int ih = 1; ih <= jobs.run.n3; ++ih) {
    const bool first = has_dipole(jobs, 2 * ih - 1);
    const bool second = has_dipole(jobs, 2 * ih);
    if (first && second) {
      const int job = further_job(dipoles, ih);
      add(ih, job, job == 2 * ih ? 2 * ih - 1 : 2 * ih, 1.0);
    } else if ((first || second) && jobs.sign_file(0).has_dipole) {
      add(ih, first ? 2 * ih - 1 : 2 * ih, 0, 2.0);
    }
  }
  return jumps;
}

// The median of those that are not zero: symmetry leaves many dipoles as they are.
double median_jump(const std::vector<Jump>& jumps, double rounding) {
  std::vector<double> sizes;
  for (const Jump& jump : jumps) {
    const double size = jump.single ? std::min(jump.as_read, jump.turned) : jump.as_read;
    if (size > rounding) sizes.push_back(size);
  }
  if (sizes.empty()) return 0.0;
  const auto middle = sizes.begin() + static_cast<long>(sizes.size() / 2);
  std::nth_element(sizes.begin(), middle, sizes.end());
  return *middle;
}

void report_jump(const JobData& jobs, const Jump& jump, double size, double typical,
                 Report& report) {
  const int partner = jump.job % 2 == 0 ? jump.job - 1 : jump.job + 1;
  const std::string where =
      jump.single ? rounded(size / 2.0) + " au from the reference to " + job_text(jobs, jump.job)
                  : rounded(size) + " au between the two jobs of " + coordinate_text(jobs, jump.ih);
  const std::string others = rounded(jump.single ? typical / 2.0 : typical);
  const std::string other_job =
      jump.single ? ""
                  : " (the other job is " + std::string(jobs.job(partner).sgn_name.content()) + ")";
  report.add(Severity::warning, place_of(jobs, jump.job),
             "the transition dipole jumps by " + where + ", by " + others +
                 " in the median of the others: a state crossing" + other_job,
             jump.job, {jump.job});
}

void note_jumps_not_looked_at(const JobData& jobs, Report& report) {
  int missing = 0;
  bool needs_reference = false;
  for (int i = 1; i <= jobs.run.n6; ++i) {
    if (!jobs.job(i).is_calc) continue;
    missing += jobs.usable(i) ? 0 : 1;
    needs_reference |= has_dipole(jobs, i) && !has_dipole(jobs, i % 2 == 0 ? i - 1 : i + 1);
  }
  if (missing > 0) {
    report.note({zandor::job_list_name},
                "not looked at: " + counted(missing, "job") + " without a dipole");
  }
  if (needs_reference && !jobs.sign_file(0).has_dipole) {
    report.note(
        place_of(jobs, 0),
        "not looked at: jobs whose partner has no dipole, since the reference's is missing");
  }
}

}  // namespace

void check_dipole_sum(const JobData& jobs, const Thresholds& limits, Report& report) {
  if (const std::string why = obstacle(jobs); !why.empty()) {
    report.note({zandor::job_list_name}, "not looked at: " + why);
    return;
  }
  const analysis::ResidualLimits allowed{limits.dipole_bounds, limits.dipole_relative};
  const Candidate found = search(jobs, allowed);
  const analysis::SumRuleResidual& residual = found.signs.as_read;
  report.figure("residual (atomic units)", residual.absolute);
  report.figure("residual over its terms (1)", residual.relative);
  report.figure("residual that print rounding allows (atomic units)", residual.bound);
  report.figure("largest condition over its rounding (1)", residual.worst_ratio);
  const bool rules_met = allowed.explain(residual);
  if (found.passes && rules_met) return;
  const bool shifts_alone = residual.translation_ratio <= limits.dipole_bounds ||
                            residual.translation_relative <= limits.dipole_relative;
  report_signs(jobs, found, rules_met,
               jobs.layered && shifts_alone ? Severity::note : Severity::warning, report);
}

void check_dipole_jump(const JobData& jobs, const Thresholds& limits, Report& report) {
  const Eigen::Matrix3Xd dipoles = analysis::job_dipoles(jobs.run);
  const std::vector<Jump> jumps = jumps_of(jobs, dipoles);
  const double rounding = 4.0 * analysis::print_rounding(jobs.run).minCoeff();
  const double typical = median_jump(jumps, rounding);
  std::vector<double> sizes(static_cast<std::size_t>(jobs.run.n3), not_known);
  for (const Jump& jump : jumps) {
    sizes[static_cast<std::size_t>(jump.ih - 1)] = jump.as_read;
    const double size = std::min(jump.as_read, jump.turned);
    if (size > limits.dipole_jump * std::max(typical, rounding)) {
      report_jump(jobs, jump, size, typical, report);
    }
  }
  note_jumps_not_looked_at(jobs, report);
  report.figure("median change that is not zero (au)", typical);
  report.figure("change of each coordinate (au)", std::move(sizes));
}

}  // namespace check
