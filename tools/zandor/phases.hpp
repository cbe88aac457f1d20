// The phases of a run in their order, in the working folder.
#pragma once

#include "zandor/run_data.hpp"

namespace zandor {

// Reads control file, job list and the results of all jobs. A caller that writes no results is
// spared the check of their names, and the warning that the report takes the dipoles of derived
// jobs for zeros.
void read_phases(const io::Line& control_name, RunData& run, bool writes_results = true);

// The derivatives of the transition dipole, and the vibrations.
void analyse_phases(RunData& run);

// The whole run: opens the log, reads, analyses and writes the results.
void run_phases(int argc, const char* const* argv);

}  // namespace zandor
