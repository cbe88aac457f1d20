// The lines that head the blocks of a sign file; each may stand anywhere in its line.
#pragma once

namespace zandor {

inline constexpr const char* geometry_header =
    "Center  Atomic  Atomic    Atomic            Coordinates (Angstroms)";
inline constexpr const char* dipole_header =
    "Ground to excited state transition electric dipole moments (Au)";
inline constexpr const char* forces_header = "Center Atomic Forces (Hartrees/Bohr)";

}  // namespace zandor
