// Transition dipoles of derived jobs. The dipole of a derived job is chi_k op_k mu(source): op_k is
// the operation of the job list, chi_k = +1 or -1 its character in the product of the two states.
#pragma once

#include <Eigen/Dense>
#include <optional>
#include <string>
#include <vector>

#include "analysis/sum_rules.hpp"
#include "zandor/run_data.hpp"

namespace analysis {

// One character, +1 or -1, per operation of the job list, that of operation k at [k - 1].
using Characters = std::vector<int>;

// Whether any job is derived, and so needs characters.
bool needs_characters(const zandor::RunData& run);

// Whether operation k is the identity, whose character is +1.
bool is_identity(const zandor::RunData& run, int k);

// All characters that the group allows: chi_k chi_l = chi_m wherever op_k op_l = op_m is in the
// list (elements agree within 1e-4; operations that do are one), and of those that differ only in
// operations that no derived job uses, one. A fatal stop when the list has more than 256 different
// operations, when more than 4096 patterns are possible (operations that are no group), or when a
// derived job uses an operation that is not orthogonal.
std::vector<Characters> allowed_characters(const zandor::RunData& run);

// Whether the characters, one per operation, contradict no product of the list. A fatal stop when
// it has more than 256 different operations.
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
  // That of the other pattern that comes nearest: of those that print rounding explains, else of
  // all, the one with the smallest absolute residual. Patterns that give the same gradient as the
  // chosen one, to print rounding, do not count; empty where there is no other.
  std::optional<SumRuleResidual> next_best;

  bool goes_through_reference = true;  // as the function of this name says

  // Fit to be used when that and these two hold; what is not may be a degenerate state, or signs of
  // jobs that have turned. The next best leaves 3 times as much, and more than print rounding can
  // make.
  bool separated() const {
    return !next_best ||
           (next_best->absolute >= 3.0 * residual.absolute && !next_best->within_rounding());
  }
  // No sum rule is missed by more than 10 times its bound, or they are missed by 1e-2 relative at
  // most.
  bool meets_sum_rules() const { return residual.explained(10.0); }
};

// Whether the dipoles of two steps lie on either side of the reference's, as they must: the norm of
// dipole_midpoints is at most half that of the gradient, or print rounding explains it. Signs that
// make differences vanish would meet the sum rules for that alone. dipoles: 3 x 0..n6, derived jobs
// filled in.
bool goes_through_reference(const zandor::RunData& run, const Eigen::Matrix3Xd& dipoles);

// Tries every pattern that the group allows and gives the one with the smallest sum-rule residual.
// dipoles as job_dipoles gives them.
CharacterChoice find_characters(const zandor::RunData& run, const Eigen::Matrix3Xd& dipoles);

}  // namespace analysis
