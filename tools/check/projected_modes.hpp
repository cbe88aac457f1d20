// The projected set of the run: what its projector leaves of the rigid motions, and its noise.
#pragma once

#include "job_data.hpp"

namespace check {

// Fills hess, mhessp, evalp and cp of the run as the analysis does, in the geometry of the input.
// False where a job, the masses or the input are missing, or an eigenvalue does not converge.
bool analyse_projected_modes(JobData& jobs);

// Signed frequency in cm-1 of an eigenvalue.
double wavenumber(double eigenvalue);

// The part of the run that the geometry of the projection needs: natom, masses, x of the input.
zandor::RunData projection_frame(const JobData& jobs);

}  // namespace check
