// Modes as extended XYZ, and one mode as frames of a film.
#pragma once

#include "export/results.hpp"
#include "io/output_file.hpp"

namespace exporting {

// Writes one frame for every mode of `list`, or for mode `only` (from 1; 0: all): per atom the
// symbol, its place (Angstrom) and its displacement, `amplitude` Angstrom for the atom that moves
// farthest. The frame's second line says what the columns are, the mode's number and frequency.
void write_xyz(const Results& results, const ModeList& list, double amplitude, std::size_t only,
               io::OutputFile& out);

// Writes `frames` plain XYZ frames that make up one period of mode `mode` (from 1).
void write_xyz_movie(const Results& results, const ModeList& list, double amplitude,
                     std::size_t mode, int frames, io::OutputFile& out);

}  // namespace exporting
