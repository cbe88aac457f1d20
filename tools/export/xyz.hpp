// Modes as extended XYZ, and one mode as frames of a film.
#pragma once

#include "export/content.hpp"
#include "io/output_file.hpp"

namespace exporting {

// The second line of a frame: what the columns are, the mode's number (from 1) and frequency.
std::string frame_head(const Content& content, const ModeList& list, std::size_t mode);

// Symbol and place (Angstrom) of atom `a` (from 0) where it rests: the first columns of its line.
std::string atom_at_rest(const Content& content, std::size_t a);

// Writes one frame for every mode of `list`, or for mode `only` (from 1; 0: all): per atom the
// symbol, its place (Angstrom) and its displacement, `amplitude` Angstrom for the atom that moves
// farthest.
void write_xyz(const Content& content, const ModeList& list, double amplitude, std::size_t only,
               io::OutputFile& out);

// Writes `frames` plain XYZ frames that make up one period of mode `mode` (from 1).
void write_xyz_movie(const Content& content, const ModeList& list, double amplitude,
                     std::size_t mode, int frames, io::OutputFile& out);

}  // namespace exporting
