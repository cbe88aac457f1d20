// zandor_check --turn: mended copies of the sign files whose signs have to be turned.
#pragma once

#include <string>

#include "check/support/job_data.hpp"
#include "check/support/thresholds.hpp"

namespace check {

// Settles the signs of the transition dipoles and writes the sign files that have to be turned into
// the folder, which has to be new or empty: dipole and tden_maxval, if there is one, with the other
// sign, all else byte for byte. All or none. The result says in a line what was done. Signs that
// are not settled and lines that are not spelled plainly are fatal stops.
std::string write_turned(const JobData& jobs, const Thresholds& limits, const std::string& folder);

}  // namespace check
