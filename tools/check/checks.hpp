// The checks, in the order in which they run. Each looks at one thing in all jobs and adds what it
// finds, and what it could not look at, to the report. docs/checks.md explains each of them.
#pragma once

#include "job_data.hpp"
#include "report.hpp"
#include "thresholds.hpp"

namespace check {

using Check = void(const JobData& jobs, const Thresholds& limits, Report& report);

Check check_names;
Check check_files;
Check check_columns;
Check check_header;
Check check_symbols;
Check check_masses;
Check check_geometry;
Check check_input;
Check check_derived;
Check check_duplicate;
Check check_stationary;
Check check_asymmetry;
Check check_net_force;
Check check_dipole_sum;
Check check_dipole_jump;
Check check_frame;
Check check_noise;

}  // namespace check
