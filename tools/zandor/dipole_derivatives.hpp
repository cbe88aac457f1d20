// Third phase: the derivatives of the transition dipole (Herzberg-Teller terms).
#pragma once

#include "zandor/run_data.hpp"

namespace zandor {

// Forms tddip by central differences, positive minus negative step whatever disp_sign says. Does
// nothing when symm is set. A derivative that is not finite is a fatal stop.
void differentiate_transition_dipoles(RunData& run);

}  // namespace zandor
