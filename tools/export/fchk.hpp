// The formatted checkpoint file that programs for vibronic spectra and viewers read.
#pragma once

#include "export/content.hpp"
#include "io/output_file.hpp"

namespace exporting {

// Writes geometry, masses, force constants, the gradient if it is known, the projected vibrations,
// and the transition dipole with its derivatives along the true steps, if they are known, as those
// of the only excited state. All in atomic units but masses (u) and `Vib-E2` (cm-1, u,
// mDyne/Angstrom); reals have nine digits. Energies that are not known are 0. The charge is not
// known: 0, with the lowest multiplicity that goes with the electrons.
void write_fchk(const Content& content, io::OutputFile& out);

}  // namespace exporting
