// Net force and net torque of jobs and columns, for the checks that weigh one job against another.
#pragma once

#include <vector>

#include "check/support/job_data.hpp"
#include "check/support/thresholds.hpp"

namespace check {

NetForces sum_forces(const JobData& jobs);

// The median of a figure of the columns (n3), of those that are known. Columns that rest on the
// same jobs count once, with the largest, so that one bad job does not make it; of fewer than three
// such sets the smallest is taken, of one none: 0.
double median_over_jobs(const JobData& jobs, const Eigen::VectorXd& of_column);

// What a net force or torque must exceed to stand out.
double net_force_allowed(const JobData& jobs, double rounding, const Thresholds& limits);

// The computed jobs whose net force or torque is further from the median of all jobs than their
// columns may be from zero; ascending. None in a layered job, where such sums need not vanish.
std::vector<int> jobs_with_net_force(const JobData& jobs, const Thresholds& limits);

}  // namespace check
