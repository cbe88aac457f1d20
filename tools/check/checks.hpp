// The checks, in the order in which they run. Each looks at one thing in all jobs and adds what it
// finds, and what it could not look at, to the findings. docs/checks.md explains each of them.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "check/support/findings.hpp"
#include "check/support/job_data.hpp"
#include "check/support/thresholds.hpp"

namespace check {

using Check = void(const JobData& jobs, const Thresholds& limits, Findings& findings);

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
Check check_state;
Check check_asymmetry;
Check check_net_force;
Check check_force_constants;
Check check_precision;
Check check_dipole_sum;
Check check_frame;
Check check_noise;

// Marks the jobs, of 0..n6, whose source or operation is wrong, and those derived from them. The
// other checks take them for not read.
std::vector<char> find_wrong_images(const JobData& jobs, const Thresholds& limits);

// Marks the jobs, of 0..n6, that share a sign file with another or stand behind another's number.
std::vector<char> listed_wrongly(const JobData& jobs);

// The computed jobs whose net force or torque is further from the median of all jobs than their
// columns may be from zero; ascending. None in a layered job, where such sums need not vanish.
std::vector<int> jobs_with_net_force(const JobData& jobs, const Thresholds& limits);

// The list of them all.
struct NamedCheck {
  const char* name;
  Check* look;
  bool needs_one_state = false;  // means nothing where the state is degenerate or crosses another
  bool needs_modes = false;      // of the context
};
std::span<const NamedCheck> all_checks();

// Forms the context of the jobs and runs the checks of these names, all when there is none. The
// findings are sorted: those about the directory as a whole first, then by job; of the same job in
// the order of the checks.
Findings run_checks(JobData& jobs, const Thresholds& limits,
                    const std::vector<std::string>& only = {});

}  // namespace check
