// Transition dipoles of derived jobs. The dipole of a derived job is chi_k op_k mu(source): op_k is
// the operation of the job list, chi_k = +1 or -1 its character in the product of the two states.
#pragma once

#include <Eigen/Dense>
#include <string>
#include <vector>

#include "analysis/settle_signs.hpp"
#include "zandor/run_data.hpp"

namespace analysis {

// One character, +1 or -1, per operation of the job list, that of operation k at [k - 1].
using Characters = std::vector<int>;

// Whether any job is derived, and so needs characters.
bool needs_characters(const zandor::RunData& run);

// Whether operation k is the identity, whose character is +1.
bool is_identity(const zandor::RunData& run, int k);

// All characters that the group allows: chi_k chi_l = chi_m wherever op_k op_l = op_m is in the
// list (operations within same_within are one). A fatal stop when the list has
// more than 256 different operations, when more than 4096 patterns are possible (operations that
// are no group), or when a derived job uses an operation that is not orthogonal.
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

// What the operations demand of the dipoles of computed jobs with these characters, the reference
// among them: mu(image) = chi_k op_k mu(job) wherever operation k carries the displacement of one
// onto that of the other, or onto itself. None where the run has no atom table.
std::vector<ImageRelation> image_relations(const zandor::RunData& run,
                                           const Characters& characters);

}  // namespace analysis
