// Transition dipoles: their sum rules, and whether the two steps lie on either side of the
// reference's.
#include <algorithm>
#include <cmath>
#include <optional>

#include "analysis/dipoles.hpp"
#include "analysis/prepared_dipoles.hpp"
#include "check/checks.hpp"
#include "check/support/dipoles.hpp"

namespace check {

namespace {

// Why nothing can be looked at; empty when it can.
std::string obstacle(const JobData& jobs) {
  if (!jobs.has_geometry() || !jobs.sign_file(0).has_dipole) {
    return "the reference's geometry or dipole is missing";
  }
  if (analysis::job_dipoles(jobs.run).isZero(0.0)) return "all transition dipoles are zero";
  return {};
}

// Whether everything fits with the signs that are settled.
bool signs_explain(const JobData& jobs, Dipoles at, double limit) {
  if (at.signs.jobs.empty()) return false;
  analysis::turn_signs(jobs.run, at.signs.jobs, at.of_job);
  return dipoles_fit(jobs, at, limit);
}

std::string misses_text(const analysis::SumRuleResidual& residual) {
  return io::joined("the transition dipoles miss their sum rules: residual ",
                    rounded(residual.absolute), " au (", rounded(residual.relative),
                    " of its terms, ", rounded(residual.worst_ratio),
                    " times what print rounding allows)");
}

void report_signs(const JobData& jobs, const analysis::SettledSigns& signs, Findings& findings) {
  const int first = signs.jobs.front();
  const std::string misses = misses_text(signs.as_read);
  if (std::ranges::any_of(signs.jobs, [&](int i) { return findings.blames(i); })) {
    findings.warn(place_of(jobs, first), {first}, misses, "; first see to what else is said of ",
                  analysis::job_names(jobs.run, signs.jobs));
    return;
  }
  std::string which;
  for (const int i : signs.jobs) {
    which += io::joined(i == first ? "" : " and of ", job_text(jobs, i), ", ", jobs.sign_name(i));
  }
  findings.warn(place_of(jobs, first), {first}, misses, "; turn the sign of ", which,
                ": that leaves ", rounded(signs.settled.absolute));
}

std::string dipole_text(const Eigen::Vector3d& dipole) {
  return io::joined(rounded(dipole(0)), " ", rounded(dipole(1)), " ", rounded(dipole(2)));
}

std::string unit_hint(const Eigen::Vector3d& found, const Eigen::Vector3d& expected) {
  constexpr double debye_per_au = 2.541746;  // CODATA 2018
  constexpr double alike = 0.02;             // of its length: the fit gives it within 1 %
  const bool is_debye = (found - debye_per_au * expected).norm() <= alike * found.norm();
  return is_debye ? " (Debye?)" : "";
}

void report_wrong(const JobData& jobs, const Dipoles& at, const WrongDipole& wrong,
                  Findings& findings) {
  constexpr double turned = 0.1;  // of its length: a small one is expected no better
  const Eigen::Vector3d found = at.of_job.col(wrong.job);
  const std::string others =
      wrong.other < 0 ? ""
                      : io::joined("; another one of ", job_text(jobs, wrong.other), ", ",
                                   place_of(jobs, wrong.other).file, ", would do as well");
  if ((found + wrong.expected).norm() <= turned * found.norm()) {
    findings.warn(place_of(jobs, wrong.job), {wrong.job}, "the transition dipole of ",
                  job_text(jobs, wrong.job), " has the other sign: turn it", others);
    return;
  }
  std::vector<int> rerun = {wrong.job};
  if (wrong.other >= 0) rerun.push_back(wrong.other);
  findings.warn(place_of(jobs, wrong.job), {wrong.job, rerun}, "the transition dipole of ",
                job_text(jobs, wrong.job), " does not fit the others: ", dipole_text(found),
                " au, expected about ", dipole_text(wrong.expected),
                unit_hint(found, wrong.expected), others);
}

// The job whose dipole is further from the reference's: as it stands, if signs are what is wrong.
int further_job(const Eigen::Matrix3Xd& dipoles, int ih, bool signs) {
  const auto distance = [&](int i) {
    const double as_read = (dipoles.col(i) - dipoles.col(0)).norm();
    return signs ? as_read : std::min(as_read, (dipoles.col(i) + dipoles.col(0)).norm());
  };
  return distance(2 * ih) > distance(2 * ih - 1) ? 2 * ih : 2 * ih - 1;
}

void report_mean(const JobData& jobs, const Dipoles& at, const DipoleMeans& means, int ih,
                 Findings& findings) {
  const double even = analysis::sign_free_steps(jobs.run, at.of_job).even.col(ih - 1).norm();
  const bool signs = even <= means.limit;
  const int job = further_job(at.of_job, ih, signs);
  const int other = job % 2 == 0 ? job - 1 : job + 1;
  std::vector<int> rerun;
  if (!signs) rerun.push_back(jobs.source(job));
  findings.warn(
      place_of(jobs, job), {job, rerun}, "the transition dipoles of ", coordinate_text(jobs, ih),
      " do not lie on either side of the reference's: their mean is ", rounded(means.sizes(ih - 1)),
      " au off, ", rounded(means.limit), " at most is expected: ",
      signs ? "a sign has turned" : "a state has changed, or a dipole is wrong",
      " (the other job is ", io::printable(place_of(jobs, other).file), ")");
}

// A wrong dipole may favour wrong signs of the operations: then the others are tried, and it is
// named where all that help name the same job.
std::optional<WrongDipole> find_wrong(const JobData& jobs, const Dipoles& at,
                                      const DipoleMeans& means) {
  std::optional<WrongDipole> found = find_wrong_dipole(jobs, at, means);
  if (found || at.characters.empty()) return found;
  Dipoles with = at;
  for (const analysis::Characters& characters : analysis::allowed_characters(jobs.run)) {
    with.characters = characters;
    analysis::derive_dipoles(jobs.run, characters, with.of_job);
    const auto wrong = find_wrong_dipole(jobs, with, dipole_means(jobs, with));
    if (wrong && found && wrong->job != found->job) return std::nullopt;
    if (wrong) found = wrong;
  }
  return found;
}

// Of what explains everything the simplest: turned signs, one wrong dipole; else coordinate by
// coordinate what stands out, and the sum rules.
void report_misfit(const JobData& jobs, const Dipoles& at, const DipoleMeans& means,
                   Findings& findings) {
  const analysis::SumRuleResidual& residual = at.signs.as_read;
  if (at.all && signs_explain(jobs, at, means.limit)) {
    report_signs(jobs, at.signs, findings);
    return;
  }
  const bool rules_met = !at.all || at.explain(residual);
  const bool shifts_met = residual.translation_ratio <= at.limits.dipole_bounds ||
                          residual.translation_relative <= at.limits.dipole_relative;
  if (jobs.layered && shifts_met && means.off.empty() && !rules_met) {
    findings.note(whole_list, misses_text(residual),
                  ": those of turns alone, which need not hold in a layered job");
    return;
  }
  if (const auto wrong = find_wrong(jobs, at, means)) {
    report_wrong(jobs, at, *wrong, findings);
    return;
  }
  for (const int ih : means.off) report_mean(jobs, at, means, ih, findings);
  if (!rules_met) {
    findings.warn(whole_list, {}, misses_text(residual), "; no single job explains it: ",
                  at.signs.refusal.empty() ? "a state has changed" : at.signs.refusal);
  } else if (!at.passes) {
    findings.warn(
        whole_list, {},
        "whatever the signs of the operations, the transition dipoles of derived jobs and "
        "of their sources do not lie on either side of the reference's");
  }
}

}  // namespace

void check_dipole_sum(const JobData& jobs, const Thresholds& limits, Findings& findings) {
  if (const std::string why = obstacle(jobs); !why.empty()) {
    findings.note(whole_list, "not looked at: ", why);
    return;
  }
  const Dipoles at = dipoles_at_hand(jobs, limits);
  if (!at.all) {
    findings.note(whole_list,
                  "the sum rules are not looked at: ", counted(jobs.without_results(), "job"),
                  " without a dipole, and the sums need all");
  }
  const DipoleMeans means = dipole_means(jobs, at);
  const analysis::SumRuleResidual& residual = at.signs.as_read;
  findings.figure("residual (atomic units)", at.all ? residual.absolute : not_known);
  if (at.all) {
    findings.figure("residual over its terms (1)", residual.relative);
    findings.figure("residual that print rounding allows (atomic units)", residual.bound);
    findings.figure("largest condition over its rounding (1)", residual.worst_ratio);
  }
  const double largest = largest_known(means.sizes);
  findings.figure("largest distance of a mean (au)", largest);
  findings.figure("what is expected of it at most (au)", means.limit);
  const double noise = analysis::dipole_noise(analysis::sign_free_steps(jobs.run, at.of_job));
  const bool is_noise = !(largest > limits.dipole_noise * noise);
  if ((at.passes || is_noise) && dipoles_fit(jobs, at, means.limit)) return;
  report_misfit(jobs, at, means, findings);
}

}  // namespace check
