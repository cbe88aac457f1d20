// Third phase: what follows from the numbers of the jobs by central differences. The derivatives of
// the transition dipole (Herzberg-Teller terms); force constants, frequencies and normal modes.
#pragma once

#include "zandor/run_data.hpp"

namespace zandor {

// Forms tddip, positive minus negative step whatever disp_sign says. Does nothing when symm is set.
// A derivative that is not finite is a fatal stop.
void differentiate_transition_dipoles(RunData& run);

// Builds hess by central differences of the forces, mass-weights it, projects the rigid motions out
// of a copy, diagonalises both and fills eval, c, freq, disp (and evalp, cp, freqp, dispp). A
// number that is not finite or an eigenvalue that does not converge is a fatal stop.
void analyse_vibrations(RunData& run);

// The step of analyse_vibrations that builds hess. Warns when the differences are further from
// symmetric than a step and printed digits make them.
void assemble_force_constants(RunData& run);

}  // namespace zandor
