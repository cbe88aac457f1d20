// The reader of sign files and of the reference's input. On request it also gives, from the same
// pass over the file, what the file holds beyond the numbers of the run, and what is odd in it.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "io/fatal.hpp"
#include "io/free_form.hpp"
#include "io/text.hpp"

namespace zandor {

// The lines that head the blocks of a sign file; each may stand anywhere in its line.
inline constexpr const char* geometry_header =
    "Center  Atomic  Atomic    Atomic            Coordinates (Angstroms)";
inline constexpr const char* dipole_header =
    "Ground to excited state transition electric dipole moments (Au)";
inline constexpr const char* forces_header = "Center Atomic Forces (Hartrees/Bohr)";

// The nine values of the keyword header in their order, as far as they are there.
struct SignHeader {
  static constexpr std::array names = {"natom", "nmo", "mi",          "ma",         "mci",
                                       "NFC",   "NFV", "tden_maxloc", "tden_maxval"};
  static constexpr std::size_t size_count = 7;
  std::array<std::optional<int>, size_count> sizes;
  std::optional<std::array<int, 2>> tden_maxloc;
  std::optional<double> tden_maxval;
  std::array<long long, names.size()> lines{};
  // Values that are malformed or not finite: why, with the line.
  struct Malformed {
    long long line = 0;
    std::string text;
  };
  std::vector<Malformed> malformed;
};

// What lines in front of the dipole tell of the states, each by how it begins, in any letter case:
// "Total ground state energy (Hartree)", "energy of the state (Hartree)", "Excitation energy (eV)",
// "Oscillator strength". A number below a million follows, alone; any other line says nothing.
struct StateLines {
  std::optional<double> ground_energy, energy, excitation_energy, oscillator_strength;
};

// Symbols, numbers, masses (amu) and coordinates (3 per atom, Angstrom) of a geometry, each in the
// order of the file.
struct Atoms {
  std::vector<io::Text<2>> symbols;
  std::vector<int> numbers;
  std::vector<double> masses;
  std::vector<double> x;
  std::vector<long long> lines;
};

// Lines of one block that look alike: the first of them, how many, and what was found there.
struct OddLines {
  long long first = 0;
  int count = 0;
  int atom = 0;
  std::string found;
};

// A block of rows, one per atom.
struct BlockRows {
  OddLines extra;      // more items than are read; `found` is the first of them
  OddLines unordered;  // a running number that is not the line's
};

// What a sign file holds beyond dipole and forces, as far as it could be read.
struct SignFile {
  SignHeader header;  // what stands in front of the dipole
  StateLines states;
  std::optional<Atoms> geometry;          // complete, or not there
  std::optional<io::Stop> geometry_stop;  // a row of it that is short, malformed or not finite
  BlockRows geometry_rows;
  BlockRows force_rows;
  std::vector<long long> force_lines;
  long long geometry_line = 0;  // of the block's header; 0: none
  long long forces_line = 0;
  bool has_dipole = false;
  // The lines of the geometry, empty where they are odd or not one per atom.
  std::vector<std::string> geometry_texts;
};

// Moves to the next line that holds the header of a block. If there is none, it is a fatal stop
// that names the job.
void find_block(const char* header, int job);

// Opens, reads and closes the sign file of a job: the first dipole (3, atomic units) and the first
// forces behind it (3 x natom, Hartree/Bohr). A number that is missing, malformed or not finite is
// a fatal stop. With `file`, the rest of the sign file goes there as far as it could be read, and
// job 0 needs no forces. Lines of the geometry that equal those of `reference` are not parsed
// again.
void read_sign_file(std::string_view name, int job, int natom, double* dipole, double* forces,
                    SignFile* file = nullptr, const SignFile* reference = nullptr);

// The dipole behind the next header of its block.
void read_dipole(int job, double* dipole);

// The rest of a row of the geometry behind its first word: symbol, atomic number, mass (amu) and
// coordinates (Angstrom). A symbol or number that is left out keeps its value; anything else that
// is missing, malformed or out of range is a fatal stop.
void read_atom(io::FreeForm& row, int a, io::Text<2>& symbol, int& number, double& mass, double* x);

// The forces, from the next line on.
void read_forces(int natom, double* forces);

// What the reference's input holds besides the coordinates.
struct ReferenceInput {
  std::vector<std::string> words;  // what stands in front of the coordinates of each atom
  std::vector<double> x;           // the coordinates once more
  std::vector<long long> lines;
  OddLines extra;  // more items than are read
};

// Reads the coordinates (3 x natom, Angstrom) of an input behind its first line that begins with a
// digit. A file that is missing or short, or a number that is malformed or not finite, is a fatal
// stop.
void read_input_file(std::string_view name, int natom, double* x, ReferenceInput* input = nullptr);

}  // namespace zandor
