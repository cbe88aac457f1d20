// Second phase: the numbers of every job.
#pragma once

#include "run_data.hpp"

namespace zandor {

// Reads the reference geometry, masses and transition dipole (job 0: sign file, input file, and the
// output file for the layered-job probe), then dipole and forces of every computed job, and derives
// the forces of the others. Files that are missing, short or malformed are fatal stops.
void read_job_results(RunData& run);

// The steps of read_job_results.
void read_reference(RunData& run);
void read_computed_jobs(RunData& run);
void derive_symmetry_jobs(RunData& run);

}  // namespace zandor
