// Vibrations for viewers that read Chemical JSON.
#pragma once

#include "export/content.hpp"
#include "io/output_file.hpp"

namespace exporting {

// Writes geometry (Angstrom), bonds as the page draws them, and wavenumbers and displacements (unit
// Cartesian length) of the projected vibrations, as Avogadro 1.97 reads them. There are no
// intensities: it would show numbers as those of infrared absorption.
void write_cjson(const Content& content, io::OutputFile& out);

}  // namespace exporting
