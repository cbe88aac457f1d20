// Vibrations for viewers that read Chemical JSON.
#pragma once

#include <vector>

#include "export/content.hpp"
#include "io/output_file.hpp"

namespace exporting {

// Writes geometry (Angstrom), bonds, and wavenumbers and displacements (unit Cartesian length) of
// the projected vibrations, as Avogadro 1.97 reads them. There are no intensities: it would show
// numbers as those of infrared absorption.
void write_cjson(const Content& content, io::OutputFile& out);

// Pairs of atoms (from 0), one after the other, that are closer than 1.2 times the sum of their
// covalent radii (Cordero et al., Dalton Trans. 2008, 2832), as the page draws them.
std::vector<int> bonded_atoms(const Content& content);

}  // namespace exporting
