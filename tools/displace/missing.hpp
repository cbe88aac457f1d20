// The jobs of a directory that are still to be run.
#pragma once

#include <string>
#include <vector>

#include "zandor/run_data.hpp"

namespace displace {

// Reads control file and job list in the working folder and gives the places of the computed jobs
// in the list, the reference's first, whose sign file is not there.
std::vector<int> missing_jobs(const std::string& control_file, zandor::RunData& run);

}  // namespace displace
