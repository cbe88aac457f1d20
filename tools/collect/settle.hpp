// The signs of the transition dipoles of all jobs against that of the reference.
#pragma once

#include "collect/collect.hpp"

namespace collect {

// Sets `sign` and `turned` of a job that was taken by the marks of its output and the reference's.
void take_sign_from_marks(const Collection& all, CollectedJob& job);

// Settles the signs of those where no mark tells, by the rules that the dipoles of all jobs have to
// keep (analysis::prepare_dipoles): reads the sign files, which have been written as read, and sets
// `turned`. What cannot be settled is told in `unsettled`.
void settle_other_signs(const Choices& choices, Collection& all);

}  // namespace collect
