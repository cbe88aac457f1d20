#include "flib/vscal.hpp"

namespace flib {

void vscal(const int& n, const double& skal, double* v) {
  for (int i = 0; i < n; ++i) v[i] *= skal;
}

}  // namespace flib
