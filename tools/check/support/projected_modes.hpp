// The projected set of the run.
#pragma once

#include "check/support/job_data.hpp"

namespace check {

// Takes the raw force constants of the context and the masses and input of the run.
ProjectedModes project_modes(const JobData& jobs);

// Signed frequency in cm-1 of an eigenvalue.
double wavenumber(double eigenvalue);

}  // namespace check
