// Transition dipoles: their sum rules, and whether the two steps lie on either side of the
// reference's.
#include <algorithm>
#include <cmath>
#include <optional>
#include <sstream>

#include "analysis/characters.hpp"
#include "analysis/dipoles.hpp"
#include "check/checks.hpp"
#include "check/support/dipole_fit.hpp"
#include "check/support/dipole_signs.hpp"

namespace check {

namespace {

using analysis::SettledSigns;

// Why nothing can be looked at; empty when it can.
std::string obstacle(const JobData& jobs) {
  if (!jobs.has_geometry() || !jobs.sign_file(0).has_dipole) {
    return "the reference's geometry or dipole is missing";
  }
  if (analysis::job_dipoles(jobs.run).isZero(0.0)) return "all transition dipoles are zero";
  return {};
}

int without_dipole(const JobData& jobs) {
  int missing = 0;
  for (int i = 1; i <= jobs.run.n6; ++i) missing += jobs.usable(i) ? 0 : 1;
  return missing;
}

struct Candidate {
  SettledSigns signs;
  analysis::Characters characters;  // of the operations; empty where no job is derived
  bool passes = true;               // through the reference's dipole, from one step to the other
};

Candidate search(const JobData& jobs, const Thresholds& limits) {
  const analysis::PreparedDipoles settled = settle_dipoles(jobs, limits);
  if (!settled.characters) return {settled.signs, {}};
  return {settled.signs, settled.characters->characters,
          analysis::goes_through_reference(jobs.run, settled.dipoles)};
}

// The dipoles as they stand; without the sum rules only those of computed jobs.
JobDipoles dipoles_of(const JobData& jobs, const Candidate& found, const Thresholds& limits,
                      bool all) {
  JobDipoles at{analysis::job_dipoles(jobs.run),
                found.characters,
                {},
                all,
                {limits.dipole_bounds, limits.dipole_relative, limits.dipole_noise},
                limits.dipole_mean};
  if (!at.characters.empty()) analysis::derive_dipoles(jobs.run, at.characters, at.dipoles);
  const auto has_own = [&](int i) { return jobs.usable(i) && (all || jobs.job(i).is_calc); };
  for (int ih = 1; ih <= jobs.run.n3; ++ih) {
    at.looked.push_back(has_own(2 * ih - 1) && has_own(2 * ih) ? 1 : 0);
  }
  return at;
}

// Turned signs are worth a word when they leave much less, and everything fits with them.
bool is_worth_a_word(const JobData& jobs, const SettledSigns& signs, JobDipoles at, double limit) {
  if (signs.jobs.empty() || 3.0 * signs.settled.absolute > signs.as_read.absolute) return false;
  analysis::turn_signs(jobs.run, signs.jobs, at.dipoles);
  return dipoles_fit(jobs, at, limit);
}

void report_signs(const JobData& jobs, const SettledSigns& signs, std::string text,
                  Report& report) {
  if (std::any_of(signs.jobs.begin(), signs.jobs.end(), [&](int i) { return report.blames(i); })) {
    report.add(
        Severity::warning, place_of(jobs, signs.jobs.front()),
        text + "; first see to what else is said of " + analysis::job_names(jobs.run, signs.jobs),
        signs.jobs.front());
    return;
  }
  text += "; turn the sign of ";
  for (std::size_t k = 0; k < signs.jobs.size(); ++k) {
    text += (k > 0 ? " and of " : "") + job_text(jobs, signs.jobs[k]) + ", " +
            std::string(jobs.job(signs.jobs[k]).sgn_name.content());
  }
  report.add(Severity::warning, place_of(jobs, signs.jobs.front()),
             text + ": that leaves " + rounded(signs.settled.absolute), signs.jobs.front());
}

std::string misses_text(const analysis::SumRuleResidual& residual) {
  return "the transition dipoles miss their sum rules: residual " + rounded(residual.absolute) +
         " au (" + rounded(residual.relative) + " of its terms, " + rounded(residual.worst_ratio) +
         " times what print rounding allows)";
}

std::string dipole_text(const Eigen::Vector3d& dipole) {
  return rounded(dipole(0)) + " " + rounded(dipole(1)) + " " + rounded(dipole(2));
}

std::string unit_hint(const Eigen::Vector3d& found, const Eigen::Vector3d& expected) {
  constexpr double debye_per_au = 2.541746;  // CODATA 2018
  const bool is_debye = (found - debye_per_au * expected).norm() <= 0.02 * found.norm();
  return is_debye ? " (Debye?)" : "";
}

void report_wrong(const JobData& jobs, const JobDipoles& at, const WrongDipole& wrong,
                  Report& report) {
  const Eigen::Vector3d found = at.dipoles.col(wrong.job);
  const std::string others =
      wrong.other < 0 ? ""
                      : "; another one of " + job_text(jobs, wrong.other) + ", " +
                            std::string(place_of(jobs, wrong.other).file) + ", would do as well";
  if ((found + wrong.expected).norm() <= 0.1 * found.norm()) {
    report.add(Severity::warning, place_of(jobs, wrong.job),
               "the transition dipole of " + job_text(jobs, wrong.job) +
                   " has the other sign: turn it" + others,
               wrong.job);
    return;
  }
  std::vector<int> rerun = {wrong.job};
  if (wrong.other >= 0) rerun.push_back(wrong.other);
  report.add(Severity::warning, place_of(jobs, wrong.job),
             "the transition dipole of " + job_text(jobs, wrong.job) +
                 " does not fit the others: " + dipole_text(found) + " au, expected about " +
                 dipole_text(wrong.expected) + unit_hint(found, wrong.expected) + others,
             wrong.job, rerun);
}

// The job whose dipole is further from the reference's: as it stands, if signs are what is wrong.
int further_job(const Eigen::Matrix3Xd& dipoles, int ih, bool signs) {
  const auto distance = [&](int i) {
    const double as_read = (dipoles.col(i) - dipoles.col(0)).norm();
    return signs ? as_read : std::min(as_read, (dipoles.col(i) + dipoles.col(0)).norm());
  };
  return distance(2 * ih) > distance(2 * ih - 1) ? 2 * ih : 2 * ih - 1;
}

void report_mean(const JobData& jobs, const JobDipoles& at, const DipoleMeans& means, int ih,
                 Report& report) {
  const double even = analysis::sign_free_steps(jobs.run, at.dipoles).even.col(ih - 1).norm();
  const bool signs = even <= means.limit;
  const int job = further_job(at.dipoles, ih, signs);
  const int other = job % 2 == 0 ? job - 1 : job + 1;
  std::vector<int> rerun;
  if (!signs) rerun.push_back(jobs.source(job));
  report.add(Severity::warning, place_of(jobs, job),
             "the transition dipoles of " + coordinate_text(jobs, ih) +
                 " do not lie on either side of the reference's: their mean is " +
                 rounded(means.sizes(ih - 1)) + " au off, " + rounded(means.limit) +
                 " at most is expected: " +
                 (signs ? "a sign has turned" : "a state has changed, or a dipole is wrong") +
                 " (the other job is " + io::printable(place_of(jobs, other).file) + ")",
             job, rerun);
}

// A wrong dipole may favour wrong signs of the operations: then the others are tried, and it is
// named where all that help name the same job.
std::optional<WrongDipole> find_wrong(const JobData& jobs, const JobDipoles& at,
                                      const DipoleMeans& means) {
  std::optional<WrongDipole> found = find_wrong_dipole(jobs, at, means);
  if (found || at.characters.empty()) return found;
  JobDipoles with = at;
  for (const analysis::Characters& characters : analysis::allowed_characters(jobs.run)) {
    with.characters = characters;
    analysis::derive_dipoles(jobs.run, characters, with.dipoles);
    const auto wrong = find_wrong_dipole(jobs, with, dipole_means(jobs, with));
    if (wrong && found && wrong->job != found->job) return std::nullopt;
    if (wrong) found = wrong;
  }
  return found;
}

// Of what explains everything the simplest: turned signs, one wrong dipole; else coordinate by
// coordinate what stands out, and the sum rules.
void report_misfit(const JobData& jobs, const JobDipoles& at, const DipoleMeans& means,
                   const Candidate& found, Report& report) {
  const analysis::SumRuleResidual& residual = found.signs.as_read;
  if (at.all && is_worth_a_word(jobs, found.signs, at, means.limit)) {
    report_signs(jobs, found.signs, misses_text(residual), report);
    return;
  }
  const bool rules_met = !at.all || at.limits.explain(residual);
  const bool shifts_met = residual.translation_ratio <= at.limits.bounds ||
                          residual.translation_relative <= at.limits.relative;
  if (jobs.layered && shifts_met && means.off.empty() && !rules_met) {
    report.note(
        {zandor::job_list_name},
        misses_text(residual) + ": those of turns alone, which need not hold in a layered job");
    return;
  }
  if (const auto wrong = find_wrong(jobs, at, means)) {
    report_wrong(jobs, at, *wrong, report);
    return;
  }
  for (const int ih : means.off) report_mean(jobs, at, means, ih, report);
  if (!rules_met) {
    report.add(Severity::warning, {zandor::job_list_name},
               misses_text(residual) + "; no single job explains it: " +
                   (found.signs.refusal.empty() ? "a state has changed" : found.signs.refusal));
  } else if (!found.passes) {
    report.add(
        Severity::warning, {zandor::job_list_name},
        "whatever the signs of the operations, the transition dipoles of derived jobs and of "
        "their sources do not lie on either side of the reference's");
  }
}

}  // namespace

void check_dipole_sum(const JobData& jobs, const Thresholds& limits, Report& report) {
  if (const std::string why = obstacle(jobs); !why.empty()) {
    report.note({zandor::job_list_name}, "not looked at: " + why);
    return;
  }
  const int missing = without_dipole(jobs);
  if (missing > 0) {
    report.note({zandor::job_list_name},
                "the sum rules are not looked at: " + counted(missing, "job") +
                    " without a dipole, and the sums need all");
  }
  const Candidate found = missing > 0 ? Candidate{} : search(jobs, limits);
  const JobDipoles at = dipoles_of(jobs, found, limits, missing == 0);
  const DipoleMeans means = dipole_means(jobs, at);
  const analysis::SumRuleResidual& residual = found.signs.as_read;
  report.figure("residual (atomic units)", missing == 0 ? residual.absolute : not_known);
  if (missing == 0) {
    report.figure("residual over its terms (1)", residual.relative);
    report.figure("residual that print rounding allows (atomic units)", residual.bound);
    report.figure("largest condition over its rounding (1)", residual.worst_ratio);
  }
  report.figure("largest distance of a mean (au)",
                largest_known({means.sizes.begin(), means.sizes.end()}));
  report.figure("what is expected of it at most (au)", means.limit);
  const double noise = analysis::dipole_noise(analysis::sign_free_steps(jobs.run, at.dipoles));
  const bool is_noise = !(means.sizes.maxCoeff() > limits.dipole_noise * noise);
  if ((found.passes || is_noise) && dipoles_fit(jobs, at, means.limit)) return;
  report_misfit(jobs, at, means, found, report);
}

}  // namespace check
