// Vibrations for viewers that read the Molden format.
#pragma once

#include "export/content.hpp"
#include "io/output_file.hpp"

namespace exporting {

// Writes geometry, frequencies and displacements (Bohr, unit Cartesian length) of the vibrations of
// `list`, or of all its modes. The sections are those that Jmol, Gabedit and Open Babel read; no
// line is blank, since Jmol ends a section there.
void write_molden(const Content& content, const ModeList& list, bool all_modes,
                  io::OutputFile& out);

}  // namespace exporting
