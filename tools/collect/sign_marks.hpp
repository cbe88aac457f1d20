// The sign of a job's wave function against that of the reference, by what the output prints of the
// transition beside its dipole.
#pragma once

#include <string>

#include "collect/output_data.hpp"

namespace collect {

struct SignDecision {
  int sign = 0;    // +1, -1; 0: nothing tells
  std::string by;  // the mark that told
};

// Takes the first mark that tells. It has to be so large in the reference that a displacement by
// `step` (Bohr) cannot turn it, and to have changed by less than half of it.
SignDecision compare_marks(const JobOutput& job, const JobOutput& reference, double step);

}  // namespace collect
