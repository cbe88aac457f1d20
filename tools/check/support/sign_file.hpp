// What a sign file holds beyond the numbers that the run reads, line by line: header values, the
// geometry block, columns that are not read, running numbers.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "io/text.hpp"

namespace check {

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

struct SignFile {
  SignHeader header;
  std::optional<Atoms> geometry;       // complete, or not there
  std::vector<double> forces;          // 3 per atom, Hartree/Bohr; of the reference only
  std::vector<long long> force_lines;  // of the reference only
  std::array<double, 3> dipole{};
  bool has_dipole = false;  // read of the reference only
  BlockRows geometry_rows;
  BlockRows force_rows;
  long long geometry_line = 0;  // of the block's header; 0: none
  long long forces_line = 0;
  // Of the reference: the geometry's lines, empty those that are odd or not spelled plainly.
  std::vector<std::string> geometry_texts;
};

// Reads what it can of a sign file of natom atoms. Without `reference` it is that of the reference,
// of which dipole and forces are kept, too; with it, lines of the geometry that are those of the
// reference are not taken apart once more. A row that is short, or holds a number that is malformed
// or not finite, is a fatal stop; `file` then holds what came before it.
void read_sign_file(std::string_view name, int natom, const SignFile* reference, SignFile& file);

// The reference's input, in the order of the file.
struct ReferenceInput {
  std::vector<std::string> words;  // what stands in front of the coordinates
  std::vector<double> x;           // 3 per atom, Angstrom
  std::vector<long long> lines;
  OddLines extra;  // more items than are read
};

// Reads the coordinates of an input of natom atoms behind its first line that begins with a digit.
// A file that is missing or short, or a number that is malformed or not finite, is a fatal stop.
void read_reference_input(std::string_view name, int natom, ReferenceInput& input);

}  // namespace check
