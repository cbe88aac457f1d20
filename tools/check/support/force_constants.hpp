// Force constants as the jobs give them, before they are made symmetric.
#pragma once

#include <map>
#include <vector>

#include "check/support/job_data.hpp"

namespace check {

RawForceConstants difference_forces(const JobData& jobs);

// The 3 x 3 blocks of the atoms, from 1, that have all of their jobs: the force on an atom when it
// is moved itself.
std::map<int, Eigen::Matrix3d> own_force_constants(const JobData& jobs);

// Finds the one of several computed jobs whose forces are further from what the given columns say
// than those of the others, by a factor of 2 and more. All jobs where there is none, or where
// nothing can be compared.
std::vector<int> single_out(const JobData& jobs, const std::vector<int>& suspects,
                            const std::vector<int>& columns);

}  // namespace check
