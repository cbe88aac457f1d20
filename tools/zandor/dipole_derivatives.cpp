#include "zandor/dipole_derivatives.hpp"

#include <cmath>

namespace zandor {

void differentiate_transition_dipoles(RunData& run) {
  if (run.symm) return;
  for (int iatom = 1; iatom <= run.natom; ++iatom) {
    for (int ixyz = 1; ixyz <= 3; ++ixyz) {
      const int ih = 3 * (iatom - 1) + ixyz;
      for (int k = 1; k <= 3; ++k) {
        const double derivative = (run.tdip(k, 2 * ih) - run.tdip(k, 2 * ih - 1)) / run.dx / 2.0;
        if (!std::isfinite(derivative)) {
          io::fatal_stop({}, "expected finite transition dipole derivatives, found ", derivative,
                         " for coordinate ", ih, " (jobs ", 2 * ih - 1, ", ", 2 * ih, ")");
        }
        run.tddip(k, ixyz, iatom) = derivative;
      }
    }
  }
}

}  // namespace zandor
