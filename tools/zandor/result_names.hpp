// The names of the results, and what they must not lead to.
#pragma once

#include <string>
#include <vector>

#include "zandor/run_data.hpp"

namespace zandor {

// The results, in the order in which they are put in place.
inline constexpr const char* animation_name = "vib.xyz";
inline constexpr const char* projected_animation_name = "vibp.xyz";
inline constexpr const char* report_name = "zandor-es.out";

// The files that a run reads, the control file first. The control file and the job list have been
// read.
std::vector<std::string> input_names(const RunData& run);

// The first input that is the same file as `name`; empty if none.
std::string input_behind(const std::string& name, const std::vector<std::string>& inputs);

// Stops when the name of a result is that of the control file, or leads through a link to an input
// of this run or to the file of another result. The control file and the job list have been read.
void check_result_names(const RunData& run);

}  // namespace zandor
