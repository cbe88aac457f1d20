// The writers, one for each format: a source of its own in this folder and a row of the table in
// zandor_export.cpp.
#pragma once

#include "export/content.hpp"
#include "io/output_file.hpp"

namespace exporting {

// Everything as JSON in atomic units; docs/zandor-vibrations.schema.json describes the keys.
void write_json(const Content& content, io::OutputFile& out);

// The formatted checkpoint file that programs for vibronic spectra and viewers read: geometry,
// masses, force constants, the gradient if it is known, the projected vibrations, and the
// transition dipole with its derivatives along the true steps, if they are known, as those of the
// only excited state. All in atomic units but masses (u) and `Vib-E2` (cm-1, u, mDyne/Angstrom);
// reals have nine digits. Energies that are not known are 0. The charge is not known: 0, with the
// lowest multiplicity that goes with the electrons.
void write_fchk(const Content& content, io::OutputFile& out);

// The file in which ORCA keeps force constants: these, wavenumbers and modes (columns of unit
// Cartesian length), masses (u) and geometry; atomic units but for those. The rigid motions come
// first, as zeros. There is no place for derivatives of the transition dipole. An energy that is
// not known is 0.
void write_hess(const Content& content, io::OutputFile& out);

// Chemical JSON: geometry (Angstrom), bonds as the page draws them, and wavenumbers and
// displacements (unit Cartesian length) of the projected vibrations, as Avogadro 1.97 reads them.
// There are no intensities: it would show numbers as those of infrared absorption.
void write_cjson(const Content& content, io::OutputFile& out);

// Geometry, frequencies and displacements (Bohr, unit Cartesian length) of the modes of `list`. The
// sections are those that Jmol, Gabedit and Open Babel read; no line is blank, since Jmol ends a
// section there.
void write_molden(const Content& content, const ModeList& list, io::OutputFile& out);

// Extended XYZ: one frame for every mode of `list`, or for mode `only` (from 1; 0: all): per atom
// the symbol, its place (Angstrom) and its displacement, `amplitude` Angstrom for the atom that
// moves farthest.
void write_xyz(const Content& content, const ModeList& list, double amplitude, std::size_t only,
               io::OutputFile& out);

// `frames` plain XYZ frames that make up one period of mode `mode` (from 1).
void write_xyz_movie(const Content& content, const ModeList& list, double amplitude,
                     std::size_t mode, int frames, io::OutputFile& out);

// The page of page.html, which opens from disk and needs no network, with the molecule and both
// lists of modes in it.
void write_html(const Content& content, io::OutputFile& out);

// What the page needs to save a frame of its own: the second line of that of mode `mode` (from 1),
// and the first columns, symbol and place, of the line of atom `a` (from 0).
std::string frame_head(const Content& content, const ModeList& list, std::size_t mode);
std::string atom_at_rest(const Content& content, std::size_t a);

// Numbers, three to an atom, as 16-bit integers, low byte first, in base64: value = integer / 32767
// * scale, where `scale` is the largest magnitude among them.
std::string packed_displacements(const double* values, std::size_t size, double& scale);

}  // namespace exporting
