// Net force and net torque of the jobs, for the checks that weigh one job against another.
#pragma once

#include <vector>

#include "check/support/job_data.hpp"
#include "check/support/thresholds.hpp"

namespace check {

// The sums of every job that can be used, in the geometry of the sign file.
AllSums sum_forces(const JobData& jobs);

// The computed jobs whose net force or torque is further from the median of all jobs than their
// columns may be from zero; ascending. None in a layered job, where such sums need not vanish.
std::vector<int> jobs_with_net_force(const JobData& jobs, const Thresholds& limits);

}  // namespace check
