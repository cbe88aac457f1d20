// The signs of transition dipoles, as the checks settle them.
#pragma once

#include "analysis/prepared_dipoles.hpp"
#include "check/support/job_data.hpp"
#include "check/support/thresholds.hpp"

namespace check {

// Dipoles as they are; where they do not fit, with the signs turned that settle_signs finds. All
// jobs have to be usable.
analysis::PreparedDipoles settle_dipoles(const JobData& jobs, const Thresholds& limits);

// The jobs whose signs have to be turned. Signs that cannot be settled are a fatal stop.
std::vector<int> signs_to_turn(const JobData& jobs, const Thresholds& limits);

}  // namespace check
