// Transition dipoles of derived jobs. The dipole of a derived job is chi_k op_k mu(source): op_k is
// the operation of the job list, chi_k = +1 or -1 its character in the product of the two states.
#pragma once

#include <Eigen/Dense>
#include <string>
#include <vector>

#include "run_data.hpp"
#include "sum_rules.hpp"

namespace analysis {

// One character, +1 or -1, per operation of the job list, that of operation k at [k - 1].
using Characters = std::vector<int>;

// Whether any job is derived, and so needs characters.
bool needs_characters(const zandor::RunData& run);

// Whether operation k is the identity, whose character is +1.
bool is_identity(const zandor::RunData& run, int k);

// All characters that the group allows: chi_k chi_l = chi_m wherever op_k op_l = op_m is in the
// list (elements agree within 1e-4), and of those that differ only in operations that no derived
// job uses, one. A fatal stop when the list has more than 256 operations, or more than 4096
// patterns are possible (operations that are no group).
std::vector<Characters> allowed_characters(const zandor::RunData& run);

// Whether the characters, one per operation, contradict no product of the list. Limits as above.
bool are_allowed(const zandor::RunData& run, const Characters& characters);

// "+,-,-" as --characters takes it: one sign per operation of the list, or one per operation that
// is not the identity. What is of another form, number or contradicts the products is a fatal stop.
Characters parse_characters(const zandor::RunData& run, const std::string& text);

// The characters as parse_characters reads them, without those of identities.
std::string shown(const zandor::RunData& run, const Characters& characters);

// Fills the columns of the derived jobs; zero where a job has no computed source (computed_source).
void derive_dipoles(const zandor::RunData& run, const Characters& characters,
                    Eigen::Matrix3Xd& dipoles);

struct CharacterChoice {
  Characters characters;
  SumRuleResidual residual;
  // The smallest absolute residual among the other patterns, infinity where there is none. Patterns
  // that give the same gradient as the chosen one, to print rounding, do not count.
  double next_best = 0.0;

  // Norm of dipole_midpoints over the norm of the gradient: small when the dipoles of two steps lie
  // on either side of the reference's, as they must. 0 where print rounding explains the midpoints.
  double midpoint_ratio = 0.0;

  // Fit to be used: the next best is 3 times as large; no sum rule is missed by more than 10 times
  // its bound, or they are missed by 1e-2 relative at most; and the midpoints stand back behind the
  // gradient (otherwise a pattern that makes differences vanish would meet the sum rules for that
  // alone). What is not fit may be a degenerate state, or signs of jobs that have turned.
  bool separated() const { return next_best >= 3.0 * residual.absolute; }
  bool sound() const { return residual.explained(10.0) && midpoint_ratio <= 0.5; }
};

// Tries every pattern that the group allows and gives the one with the smallest sum-rule residual.
// dipoles as job_dipoles gives them.
CharacterChoice find_characters(const zandor::RunData& run, const Eigen::Matrix3Xd& dipoles);

}  // namespace analysis
