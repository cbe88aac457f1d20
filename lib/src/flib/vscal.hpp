// Scaling of a vector.
#pragma once

namespace flib {

// Multiplies each of the n elements of v by skal.
void vscal(const int& n, const double& skal, double* v);

}  // namespace flib
