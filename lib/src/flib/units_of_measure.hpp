// Conversion factors, exactly as the workflow's programs use them.
#pragma once

namespace flib {

inline constexpr double angstrom_per_bohr = 0.529177249;
inline constexpr double electron_masses_per_amu = 1822.88853;
inline constexpr double wavenumbers_per_au = 219474.6307;  // cm-1 per atomic unit of frequency
inline constexpr double debye_per_au = 2.541580252938;
// debye_per_au / angstrom_per_bohr, with the digits that reports print.
inline constexpr double debye_per_angstrom_per_au = 4.802890256035933;

// Used by the companions only; CODATA 2018.
inline constexpr double electronvolts_per_hartree = 27.211386245988;
inline constexpr double hartree_per_kelvin = 3.1668115634556e-6;  // Boltzmann's constant

}  // namespace flib
