// The file in which ORCA keeps force constants.
#pragma once

#include "export/content.hpp"
#include "io/output_file.hpp"

namespace exporting {

// Writes force constants, wavenumbers and modes (columns of unit Cartesian length), masses (u) and
// geometry; atomic units but for those. The rigid motions come first, as zeros. There is no place
// for derivatives of the transition dipole. An energy that is not known is 0.
void write_hess(const Content& content, io::OutputFile& out);

}  // namespace exporting
