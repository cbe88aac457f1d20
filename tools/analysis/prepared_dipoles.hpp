// Transition dipoles of all jobs, ready to be differentiated: derived ones filled in, signs settled
// if wanted, and what has to be said about them.
#pragma once

#include <Eigen/Dense>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "analysis/characters.hpp"
#include "analysis/settle_signs.hpp"
#include "zandor/run_data.hpp"
#include "zandor/sign_file.hpp"

namespace analysis {

struct DipoleChoices {
  // As parse_characters reads them; without them the dipoles tell.
  std::optional<std::string> characters;
  bool settle_signs = false;  // turn the signs that settle_signs names
  // tden_maxloc and tden_maxval of all jobs, asked for where signs are in doubt; may be empty.
  std::function<std::vector<DensityElement>()> density;
  ResidualLimits limits;
  // Of the modes along which strengths count; without it, vibration_directions of the run.
  std::function<Eigen::MatrixXd()> directions = {};
};

struct CharacterChoice {
  Characters characters;
  SumRuleResidual residual;  // as read, or with the signs that were settled
  // That of the other pattern that comes nearest among those that suit the dipoles and give other
  // derivatives.
  std::optional<SumRuleResidual> next_best;
  bool others_fall_out = false;  // a pattern that would give other derivatives does not suit them
  bool same_derivatives = true;  // all other patterns give the same, not only the same |dmu/dQ|**2
};

struct PreparedDipoles {
  Eigen::Matrix3Xd dipoles;   // 3 x (n6 + 1), atomic units, column i of job i, 0 the reference
  Eigen::Matrix3Xd gradient;  // 3 x n3, e, along the true steps (dipole_gradient)
  // Where jobs are derived: what was chosen or given. Empty where it could not be looked for.
  std::optional<CharacterChoice> characters;
  SettledSigns signs;
  bool signs_turned = false;  // `signs` have been applied
  // Why the gradient means nothing; empty where it is fit for use. One line, no full stop.
  std::string refusal;
  // What the user should know, each a line for standard error.
  std::vector<std::string> warnings;

  // The residual of the dipoles as they are used.
  const SumRuleResidual& residual() const { return signs_turned ? signs.settled : signs.as_read; }
};

// Stops only where the choices cannot be understood; everything else is a warning or a refusal.
// Takes a run as load_job_directory leaves it; dmu/dQ is taken along its vibrations.
PreparedDipoles prepare_dipoles(const zandor::RunData& run, const DipoleChoices& choices);

// n3 x n: L_jk / sqrt(m_j) of the n vibrations, the directions along which dmu/dQ is taken, from
// forces and masses of the run alone.
Eigen::MatrixXd vibration_directions(const zandor::RunData& run);
// The same of these mass-weighted force constants.
Eigen::MatrixXd vibration_directions(const zandor::RunData& run, const Eigen::MatrixXd& weighted);

DensityElement density_element(const zandor::SignHeader& header);

// tden_maxloc and tden_maxval of the sign files of all computed jobs, in the working folder; what
// cannot be read has no value.
std::vector<DensityElement> density_elements(const zandor::RunData& run);

// "residual 0.0017, relative 0.0032, largest condition 0.532 times its rounding".
std::string residual_text(const SumRuleResidual& residual);

// The base names of the jobs' sign files, as messages name them: "a.sgn, b.sgn"; of many the first
// ten and their number.
std::string job_names(const zandor::RunData& run, const std::vector<int>& jobs);

}  // namespace analysis
