// What zandor_displace prints.
#pragma once

#include "displace/plan.hpp"

namespace displace {

// "CH3F, C3v: 30 displaced jobs, 8 to run, 22 derived by 6 operations", and behind it what there is
// to know about the axes and about atoms that were moved.
std::string summary_of(const Plan& plan);

// One JSON document: the summary's items, the geometry, and the jobs to run.
void print_json(const Plan& plan);

}  // namespace displace
