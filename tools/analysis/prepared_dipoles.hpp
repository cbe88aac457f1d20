// Transition dipoles of all jobs, ready to be differentiated: derived ones filled in, signs settled
// if wanted, and what has to be said about them.
#pragma once

#include <Eigen/Dense>
#include <optional>
#include <string>
#include <vector>

#include "analysis/characters.hpp"
#include "analysis/turned_signs.hpp"
#include "zandor/run_data.hpp"

namespace analysis {

struct DipoleChoices {
  // As parse_characters reads them; without them they are found by the sum rules.
  std::optional<std::string> characters;
  bool settle_signs = false;  // turn the signs that find_turned_signs names
};

struct PreparedDipoles {
  Eigen::Matrix3Xd dipoles;   // 3 x (n6 + 1), atomic units, column i of job i, 0 the reference
  Eigen::Matrix3Xd gradient;  // 3 x n3, e, along the true steps (dipole_gradient)
  // Where jobs are derived: what was chosen or given. Empty where it could not be looked for.
  std::optional<CharacterChoice> characters;
  TurnedSigns signs;
  bool signs_turned = false;  // `signs` have been applied
  // Why the gradient means nothing; empty where it is fit for use. One line, no full stop.
  std::string refusal;
  // What the user should know, each a line for standard error.
  std::vector<std::string> warnings;

  // The residual of the dipoles as they are used.
  const SumRuleResidual& residual() const { return signs_turned ? signs.settled : signs.as_read; }
};

// Stops only where the choices cannot be understood; everything else is a warning or a refusal.
PreparedDipoles prepare_dipoles(const zandor::RunData& run, const DipoleChoices& choices);

// A number with the three digits with which texts show residuals.
std::string figure(double value);

// "residual 0.0017, relative 0.0032, largest condition 0.532 times its rounding".
std::string residual_text(const SumRuleResidual& residual);

// The base names of the jobs' sign files, as messages name them: "a.sgn, b.sgn"; of many the first
// ten and their number.
std::string job_names(const zandor::RunData& run, const std::vector<int>& jobs);

}  // namespace analysis
