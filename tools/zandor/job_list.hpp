// First phase, continued: the job list.
#pragma once

#include "run_data.hpp"

namespace zandor {

// Reads "files.out": sizes, step, symmetry operations, atom table, jobs. Checks every index that a
// derived job uses and warns of jobs whose results rest on zeros. The memory it takes grows with
// the lines read.
void read_job_list(RunData& run);

}  // namespace zandor
