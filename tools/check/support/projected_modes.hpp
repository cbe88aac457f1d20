// The projected set of the run: what its projector leaves of the rigid motions, and its noise.
#pragma once

#include "check/support/job_data.hpp"

namespace check {

// Fills hess, mhessp and evalp of the run as the analysis does, in the geometry of the input, but
// for rounding in mhessp. The result says why it could not; it is empty when it could.
std::string analyse_projected_modes(JobData& jobs);

// The n eigenvalues, ascending, of a symmetric n x n matrix stored by columns, of which the lower
// triangle is read. Vectors are not formed, so that it takes a third of the time. False when one
// does not converge (NaN never does).
bool find_eigenvalues(int n, const double* matrix, double* values);

// Signed frequency in cm-1 of an eigenvalue.
double wavenumber(double eigenvalue);

// The part of the run that the geometry of the projection needs: natom, masses, x of the input.
zandor::RunData projection_frame(const JobData& jobs);

}  // namespace check
