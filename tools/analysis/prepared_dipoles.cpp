#include "analysis/prepared_dipoles.hpp"

#include <cmath>
#include <tuple>
#include <utility>

#include "analysis/dipoles.hpp"
#include "analysis/rigid_motions.hpp"
#include "analysis/vibrations.hpp"
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

// One pattern of characters, and what it makes of the dipoles.
struct Trial {
  Characters characters;
  Eigen::Matrix3Xd dipoles;  // derived jobs filled in, signs turned if they are to be
  SettledSigns signs;

  const SumRuleResidual& residual() const { return signs.settled; }
};

// Whatever the signs, headers are looked at only where they are in doubt.
SettledSigns look_at_signs(const zandor::RunData& run, const DipoleChoices& choices,
                           const Eigen::Matrix3Xd& dipoles, SignEvidence evidence) {
  if (!choices.settle_signs) {
    SettledSigns signs = settle_signs(run, dipoles, evidence);
    if (signs.fits_as_read && signs.found()) return signs;
  }
  if (choices.density) evidence.density = density_signs(choices.density());
  return settle_signs(run, dipoles, evidence);
}

Eigen::MatrixXd directions_of(const zandor::RunData& run, const DipoleChoices& choices) {
  return choices.directions ? choices.directions() : vibration_directions(run);
}

// With characters that are not known, signs are turned only if they are to be.
Trial trial_of(const zandor::RunData& run, const DipoleChoices& choices,
               const Characters& characters) {
  Trial trial{characters, job_dipoles(run), {}};
  derive_dipoles(run, characters, trial.dipoles);
  const SignEvidence evidence{
      {},
      needs_characters(run) ? image_relations(run, characters) : std::vector<ImageRelation>{},
      [&] { return directions_of(run, choices); },
      choices.limits};
  trial.signs = choices.settle_signs || choices.characters || !needs_characters(run)
                    ? look_at_signs(run, choices, trial.dipoles, evidence)
                    : signs_as_read(run, trial.dipoles, evidence);
  if (choices.settle_signs) turn_signs(run, trial.signs.jobs, trial.dipoles);
  return trial;
}

// Adds to the choice what another pattern says about it. The result is why the choice is not to be
// used, if it is not.
std::string compare(const zandor::RunData& run, const DipoleChoices& choices, const Trial& best,
                    const Trial& other, CharacterChoice& choice) {
  const Eigen::Matrix3Xd gradient = dipole_gradient(run, best.dipoles);
  const Eigen::Matrix3Xd of_other = dipole_gradient(run, other.dipoles);
  if ((gradient - of_other).cwiseAbs().maxCoeff() <= gradient_rounding(run)) return {};
  const bool ambiguous = !other.signs.found() && !other.signs.nothing_fits;
  if (!ambiguous && !other.signs.found()) {
    choice.others_fall_out = true;
    return {};
  }
  const double noise = sign_demands(run, best.dipoles, image_relations(run, best.characters)).noise;
  const double near =
      in_doubt * std::max(best.residual().absolute, noise * sum_rule_errors(run).norm());
  if (other.residual().absolute <= near) {
    choice.same_derivatives = false;
    if (!ambiguous && same_strengths(run, gradient, of_other, directions_of(run, choices), noise)) {
      return {};
    }
    return "the dipoles do not tell the characters of the operations (" +
           shown(run, best.characters) + ": " + residual_text(best.residual()) + "; " +
           shown(run, other.characters) + ": " + residual_text(other.residual()) + ")";
  }
  if (!choice.next_best || other.residual().absolute < choice.next_best->absolute) {
    choice.next_best = other.residual();
  }
  return {};
}

// Every pattern that the group allows, and the one of those that suit the dipoles that meets the
// sum rules best.
void find_characters(const zandor::RunData& run, const DipoleChoices& choices,
                     PreparedDipoles& prepared) {
  std::vector<Characters> patterns;
  if (const auto stop = io::collect([&] { patterns = allowed_characters(run); })) {
    prepared.refusal = stop->file + ": " + stop->message;
    return;
  }
  const auto rank = [&](const Trial& c) {
    // Wrong characters may make dipoles cancel, which meets the sum rules.
    return std::make_tuple(!c.signs.found(), !goes_through_reference(run, c.dipoles),
                           c.residual().absolute);
  };
  Trial best = trial_of(run, choices, patterns.front());
  for (std::size_t k = 1; k < patterns.size(); ++k) {
    Trial next = trial_of(run, choices, patterns[k]);
    if (rank(next) < rank(best)) best = std::move(next);
  }
  CharacterChoice choice{best.characters, best.residual(), {}};
  if (!best.signs.found()) {
    prepared.refusal =
        !best.signs.nothing_fits
            ? best.signs.refusal
            : "no characters of the operations suit the transition dipoles of the computed "
              "jobs (the nearest: " +
                  shown(run, best.characters) + ", " + residual_text(best.residual()) + ")";
  }
  for (std::size_t k = 0; k < patterns.size() && prepared.refusal.empty(); ++k) {
    if (patterns[k] == best.characters) continue;
    prepared.refusal = compare(run, choices, best, trial_of(run, choices, patterns[k]), choice);
  }
  if (!prepared.refusal.empty()) {
    prepared.refusal +=
        ": the state may be degenerate or signs of jobs may have turned (see zandor_check); "
        "compute the jobs that are derived, or give the characters by hand";
  }
  prepared.dipoles = std::move(best.dipoles);
  prepared.signs = std::move(best.signs);
  prepared.characters = std::move(choice);
}

std::string turned_text(const zandor::RunData& run, const PreparedDipoles& prepared, bool given) {
  const SettledSigns& signs = prepared.signs;
  std::string text = signs.fits_as_read
                         ? "the transition dipoles meet their sum rules as they are"
                         : "the transition dipoles miss their sum rules or do not go through that "
                           "of the reference (" +
                               residual_text(signs.as_read) + ")";
  if (signs.found()) {
    return text + ": the sign of " + job_names(run, signs.jobs) +
           " seems to have turned, with it " + io::rounded(signs.settled.absolute) + " is left";
  }
  if (given && signs.nothing_fits) return text + ": the characters given do not fit";
  return text + (signs.fits_as_read ? ", but so do others: " : ": ") + signs.refusal +
         (signs.nothing_fits ? " (see zandor_check)" : "");
}

void apply_signs(const zandor::RunData& run, const DipoleChoices& choices,
                 PreparedDipoles& prepared) {
  const SettledSigns& signs = prepared.signs;
  if (signs.found() && (signs.jobs.empty() || (signs.fits_as_read && !choices.settle_signs))) {
    return;
  }
  const std::string text = turned_text(run, prepared, choices.characters.has_value());
  if (choices.settle_signs && !signs.found()) {
    prepared.refusal = text;
    return;
  }
  prepared.warnings.push_back(text + (choices.settle_signs ? "; turned back" : ""));
  prepared.signs_turned = choices.settle_signs;
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
  const bool derived = needs_characters(run);
  if (derived && !choices.characters) {
    find_characters(run, choices, prepared);
  } else {
    Characters given(static_cast<std::size_t>(run.nop), 1);
    if (choices.characters) given = parse_characters(run, *choices.characters);
    Trial trial = trial_of(run, choices, given);
    prepared.dipoles = std::move(trial.dipoles);
    prepared.signs = std::move(trial.signs);
    if (derived) prepared.characters = CharacterChoice{given, prepared.signs.settled, {}};
  }
  if (!derived && choices.characters) {
    prepared.warnings.emplace_back("no job is derived: the characters are not used");
  }
  if (prepared.dipoles.isZero(0.0)) {
    prepared.warnings.emplace_back("all transition dipoles are zero, and so are their derivatives");
  }
  if (prepared.refusal.empty()) apply_signs(run, choices, prepared);
  prepared.gradient = dipole_gradient(run, prepared.dipoles);
  if (!prepared.gradient.allFinite()) {
    prepared.refusal = "the derivatives of the transition dipole are not finite";
  }
  return prepared;
}

Eigen::MatrixXd vibration_directions(const zandor::RunData& run, const Eigen::MatrixXd& weighted) {
  const Eigen::Map<const Eigen::VectorXd> root_mass(run.sqtmass.data(), run.n3);
  return root_mass.cwiseInverse().asDiagonal() * modes_beside(rigid_motions(run), weighted).vectors;
}

Eigen::MatrixXd vibration_directions(const zandor::RunData& run) {
  const Eigen::Map<const Eigen::MatrixXd> forces(run.force.column(1, 1), run.n3, run.n6);
  Eigen::VectorXd inverse(run.n3);
  for (int i = 0; i < run.n3; ++i) inverse(i) = 1.0 / std::sqrt(run.mass(i / 3 + 1));
  Eigen::MatrixXd weighted(run.n3, run.n3);
  for (Eigen::Index i = 0; i < run.n3; ++i) {
    weighted.col(i) = inverse(i) * inverse.cwiseProduct(forces.col(2 * i) - forces.col(2 * i + 1));
  }
  return vibration_directions(run, weighted + weighted.transpose());
}

DensityElement density_element(const zandor::SignHeader& header) {
  if (!header.tden_maxloc) return {};
  return {*header.tden_maxloc, header.tden_maxval};
}

std::vector<DensityElement> density_elements(const zandor::RunData& run) {
  std::vector<DensityElement> elements(run.jobs.size());
  std::vector<double> ignored(static_cast<std::size_t>(run.n3) + 3);
  for (std::size_t i = 0; i < elements.size(); ++i) {
    if (i > 0 && !run.jobs[i].is_calc) continue;
    zandor::SignFile file;
    io::collect([&] {
      zandor::read_sign_file(run.jobs[i].sgn_name.content(), static_cast<int>(i), run.natom,
                             ignored.data(), ignored.data() + 3, &file);
    });
    elements[i] = density_element(file.header);
  }
  return elements;
}

std::string residual_text(const SumRuleResidual& residual) {
  return "residual " + io::rounded(residual.absolute) + ", relative " +
         io::rounded(residual.relative) + ", largest condition " +
         io::rounded(residual.worst_ratio) + " times its rounding";
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
