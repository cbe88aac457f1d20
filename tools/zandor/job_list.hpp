// First phase, continued: the job list.
#pragma once

#include "zandor/run_data.hpp"

namespace zandor {

// Reads "files.out": sizes, step, symmetry operations, atom table, jobs. Checks every index that a
// derived job uses: all lines with an index out of range are shown before the stop. Warns of jobs
// whose results rest on zeros and of computed jobs with the same name. The memory it takes grows
// with the lines read.
void read_job_list(RunData& run);

}  // namespace zandor
