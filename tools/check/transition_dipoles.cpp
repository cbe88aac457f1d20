// Transition dipoles: exact sum rules, and jumps.
#include <algorithm>
#include <cmath>
#include <optional>

#include "characters.hpp"
#include "checks.hpp"
#include "dipoles.hpp"
#include "turned_signs.hpp"

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
};

// One that explains the residual before one that does not; then the larger gradient, since wrong
// signs of the operations may make dipoles cancel, which explains anything.
bool is_better(const Candidate& a, const Candidate& b) {
  const bool explains = a.signs.settled.explained();
  if (explains != b.signs.settled.explained()) return explains;
  if (!explains) return a.signs.settled.absolute < b.signs.settled.absolute;
  if (a.gradient != b.gradient) return a.gradient > b.gradient;
  return a.signs.jobs.size() < b.signs.jobs.size();
}

// With derived jobs the signs of the operations are not known: all that the group allows are tried,
// as read and with signs of jobs turned.
TurnedSigns search(const JobData& jobs) {
  Eigen::Matrix3Xd dipoles = analysis::job_dipoles(jobs.run);
  if (!analysis::needs_characters(jobs.run)) {
    return analysis::find_turned_signs(jobs.run, dipoles);
  }
  std::optional<Candidate> best;
  for (const analysis::Characters& characters : analysis::allowed_characters(jobs.run)) {
    analysis::derive_dipoles(jobs.run, characters, dipoles);
    Candidate candidate{analysis::find_turned_signs(jobs.run, dipoles), 0.0};
    Eigen::Matrix3Xd turned = dipoles;
    analysis::turn_signs(jobs.run, candidate.signs.jobs, turned);
    candidate.gradient = analysis::dipole_gradient(jobs.run, turned).norm();
    if (!best || is_better(candidate, *best)) best = std::move(candidate);
  }
  return best ? best->signs : TurnedSigns{};
}

void report_signs(const JobData& jobs, const TurnedSigns& signs, Report& report) {
  std::string text = "the transition dipoles miss their sum rules: residual " +
                     rounded(signs.as_read.absolute) + " au (" + rounded(signs.as_read.relative) +
                     " of its terms, " + rounded(signs.as_read.worst_ratio) +
                     " times what print rounding allows)";
  const Severity severity = jobs.layered ? Severity::note : Severity::warning;
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
  double as_read = 0.0;  // |mu(+) - mu(-)|
  double turned = 0.0;   // |mu(+) + mu(-)|
};

std::vector<Jump> jumps_of(const JobData& jobs, const Eigen::Matrix3Xd& dipoles) {
  std::vector<Jump> jumps;
  for (int ih = 1; ih <= jobs.run.n3; ++ih) {
    if (!jobs.usable_column(ih) || !jobs.job(2 * ih - 1).is_calc || !jobs.job(2 * ih).is_calc) {
      continue;
    }
    const Eigen::Vector3d a = dipoles.col(2 * ih - 1);
    const Eigen::Vector3d b = dipoles.col(2 * ih);
    jumps.push_back({ih, (b - a).norm(), (b + a).norm()});
  }
  return jumps;
}

// The median of those that are not zero: symmetry leaves many dipoles as they are.
double median_jump(const std::vector<Jump>& jumps, double rounding) {
  std::vector<double> sizes;
  for (const Jump& jump : jumps) {
    if (jump.as_read > rounding) sizes.push_back(jump.as_read);
  }
  if (sizes.empty()) return 0.0;
  const auto middle = sizes.begin() + static_cast<long>(sizes.size() / 2);
  std::nth_element(sizes.begin(), middle, sizes.end());
  return *middle;
}

// The job whose dipole is further from the reference's, in either sign.
int further_job(const Eigen::Matrix3Xd& dipoles, int ih) {
  const auto distance = [&](int i) {
    return std::min((dipoles.col(i) - dipoles.col(0)).norm(),
                    (dipoles.col(i) + dipoles.col(0)).norm());
  };
  return distance(2 * ih) > distance(2 * ih - 1) ? 2 * ih : 2 * ih - 1;
}

}  // namespace

void check_dipole_sum(const JobData& jobs, const Thresholds& limits, Report& report) {
  if (const std::string why = obstacle(jobs); !why.empty()) {
    report.note({zandor::job_list_name}, "not looked at: " + why);
    return;
  }
  const TurnedSigns signs = search(jobs);
  const analysis::SumRuleResidual& residual = signs.as_read;
  report.figure("residual (atomic units)", residual.absolute);
  report.figure("residual over its terms (1)", residual.relative);
  report.figure("residual that print rounding allows (atomic units)", residual.bound);
  report.figure("largest condition over its rounding (1)", residual.worst_ratio);
  const bool explained =
      residual.worst_ratio <= limits.dipole_bounds || residual.relative <= limits.dipole_relative;
  if (!explained) report_signs(jobs, signs, report);
}

void check_dipole_jump(const JobData& jobs, const Thresholds& limits, Report& report) {
  const Eigen::Matrix3Xd dipoles = analysis::job_dipoles(jobs.run);
  const std::vector<Jump> jumps = jumps_of(jobs, dipoles);
  const double rounding = 4.0 * analysis::print_rounding(jobs.run).minCoeff();
  const double typical = median_jump(jumps, rounding);
  std::vector<double> sizes(static_cast<std::size_t>(jobs.run.n3), 0.0);
  for (const Jump& jump : jumps) {
    sizes[static_cast<std::size_t>(jump.ih - 1)] = jump.as_read;
    const double size = std::min(jump.as_read, jump.turned);
    if (size <= limits.dipole_jump * std::max(typical, rounding)) continue;
    const int job = further_job(dipoles, jump.ih);
    const int partner = job % 2 == 0 ? job - 1 : job + 1;
    report.add(Severity::warning, place_of(jobs, job),
               "the transition dipole jumps by " + rounded(size) + " au between the two jobs of " +
                   coordinate_text(jobs, jump.ih) + ", by " + rounded(typical) +
                   " in the median of the others: a state crossing (the other job is " +
                   std::string(jobs.job(partner).sgn_name.content()) + ")",
               job, {job});
  }
  report.figure("median change that is not zero (au)", typical);
  report.figure("change of each coordinate (au)", std::move(sizes));
}

}  // namespace check
