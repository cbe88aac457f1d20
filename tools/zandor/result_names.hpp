// The names of the results, and what they must not lead to.
#pragma once

#include "run_data.hpp"

namespace zandor {

// The results, in the order in which they are put in place.
inline constexpr const char* animation_name = "vib.xyz";
inline constexpr const char* projected_animation_name = "vibp.xyz";
inline constexpr const char* report_name = "zandor-es.out";

// Stops when the name of a result leads, through a link, to an input of this run or to the file of
// another result. The control file and the job list have been read.
void check_result_names(const RunData& run);

}  // namespace zandor
