// Second phase: the numbers of every job.
#pragma once

#include "zandor/run_data.hpp"
#include "zandor/sign_file.hpp"

namespace zandor {

// Reads the reference geometry, masses and transition dipole (job 0: sign file, input file, and the
// output file for the layered-job probe), then dipole and forces of every computed job, and derives
// the forces of the others. Files that are missing, short or malformed are fatal stops; of the
// computed jobs all bad ones are shown first, one line each.
void read_job_results(RunData& run);

// The steps of read_job_results.
void read_reference_sign_file(RunData& run);
void read_reference_input(RunData& run, ReferenceInput* input = nullptr);
void read_computed_jobs(RunData& run);
// Dipole and forces of the computed job i, 1..n6; `file` and `reference` as of read_sign_file.
void read_computed_job(RunData& run, int i, SignFile* file = nullptr,
                       const SignFile* reference = nullptr);
void derive_symmetry_jobs(RunData& run);

}  // namespace zandor
