#include "analysis/prepared_dipoles.hpp"

#include <cstdio>

#include "analysis/dipoles.hpp"
#include "io/process.hpp"

namespace analysis {

namespace {

constexpr std::size_t most_names = 10;

// A derived job whose dipole cannot be known; 0 where there is none.
int job_without_source(const zandor::RunData& run) {
  for (int i = 1; i <= run.n6; ++i) {
    if (computed_source(run, i) == 0) return i;
  }
  return 0;
}

CharacterChoice given_characters(const zandor::RunData& run, const std::string& text,
                                 const Eigen::Matrix3Xd& dipoles) {
  CharacterChoice given;
  given.characters = parse_characters(run, text);
  Eigen::Matrix3Xd filled = dipoles;
  derive_dipoles(run, given.characters, filled);
  given.residual = sum_rule_residual(run, filled);
  return given;
}

// Why the characters that were found are not to be used; empty where they are.
std::string doubts_about(const zandor::RunData& run, const CharacterChoice& choice) {
  std::string text;
  if (!choice.goes_through_reference) {
    text = "with the characters that meet the sum rules best (" + shown(run, choice.characters) +
           ") the derived transition dipoles do not go through that of the reference";
  } else if (!choice.meets_sum_rules()) {
    text = "no characters of the operations meet the sum rules of the transition dipole (" +
           residual_text(choice.residual) + ")";
  } else if (!choice.separated()) {
    text = "the sum rules do not tell the characters of the operations (" +
           shown(run, choice.characters) + ": " + residual_text(choice.residual) +
           "; the next best: " + residual_text(*choice.next_best) + ")";
  } else {
    return {};
  }
  return text +
         ": the state may be degenerate or signs of jobs may have turned (see zandor_check); "
         "compute the jobs that are derived, or give the characters by hand";
}

void choose_characters(const zandor::RunData& run, const DipoleChoices& choices,
                       PreparedDipoles& prepared) {
  CharacterChoice choice;
  if (choices.characters) {
    choice = given_characters(run, *choices.characters, prepared.dipoles);
  } else if (const auto stop =
                 io::collect([&] { choice = find_characters(run, prepared.dipoles); })) {
    prepared.refusal = stop->file + ": " + stop->message;
    return;
  } else {
    prepared.refusal = doubts_about(run, choice);
  }
  derive_dipoles(run, choice.characters, prepared.dipoles);
  prepared.characters = std::move(choice);
}

std::string turned_text(const zandor::RunData& run, const TurnedSigns& signs) {
  std::string text =
      "the transition dipoles miss their sum rules (" + residual_text(signs.as_read) + "): ";
  if (!signs.found()) {
    return text +
           "no turned sign of a job or of two explains it, the state may have changed (see "
           "zandor_check)";
  }
  text += "the sign of " + job_names(run, signs.jobs) + " seems to have turned, with it " +
          figure(signs.settled.absolute) + " is left";
  if (!signs.certain()) text += ", but others would do nearly as well";
  return text;
}

void settle_signs(const zandor::RunData& run, bool wanted, PreparedDipoles& prepared) {
  prepared.signs = find_turned_signs(run, prepared.dipoles);
  if (prepared.signs.fine_as_read()) return;
  const std::string text = turned_text(run, prepared.signs);
  if (wanted && !prepared.signs.certain()) {
    prepared.refusal = text;
    return;
  }
  if (!wanted) {
    prepared.warnings.push_back(text);
    return;
  }
  prepared.warnings.push_back(text + "; turned back");
  turn_signs(run, prepared.signs.jobs, prepared.dipoles);
  prepared.signs_turned = true;
}

}  // namespace

PreparedDipoles prepare_dipoles(const zandor::RunData& run, const DipoleChoices& choices) {
  PreparedDipoles prepared;
  prepared.dipoles = job_dipoles(run);
  if (const int job = job_without_source(run); job > 0) {
    prepared.refusal = "job " + std::to_string(job) +
                       " has no transition dipole: its source is not a computed displaced job";
    return prepared;
  }
  if (needs_characters(run)) {
    choose_characters(run, choices, prepared);
  } else if (choices.characters) {
    parse_characters(run, *choices.characters);
    prepared.warnings.emplace_back("no job is derived: the characters are not used");
  }
  if (prepared.dipoles.isZero(0.0)) {
    prepared.warnings.emplace_back("all transition dipoles are zero, and so are their derivatives");
  }
  if (prepared.refusal.empty()) settle_signs(run, choices.settle_signs, prepared);
  prepared.gradient = dipole_gradient(run, prepared.dipoles);
  if (!prepared.gradient.allFinite()) {
    prepared.refusal = "the derivatives of the transition dipole are not finite";
  }
  return prepared;
}

std::string figure(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.3g", value);
  return text;
}

std::string residual_text(const SumRuleResidual& residual) {
  return "residual " + figure(residual.absolute) + ", relative " + figure(residual.relative) +
         ", largest condition " + figure(residual.worst_ratio) + " times its rounding";
}

std::string job_names(const zandor::RunData& run, const std::vector<int>& jobs) {
  std::string names;
  for (std::size_t i = 0; i < jobs.size() && i < most_names; ++i) {
    if (i > 0) names += ", ";
    names += io::printable(run.jobs[static_cast<std::size_t>(jobs[i])].sgn_name.content());
  }
  if (jobs.size() > most_names) names += " and more, " + std::to_string(jobs.size()) + " in all";
  return names;
}

}  // namespace analysis
