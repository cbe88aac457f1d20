#include "flib/qm_file_natom.hpp"

#include <algorithm>

#include "flib/is_number.hpp"
#include "flib/qm_file.hpp"
#include "flib/search_word.hpp"
#include "io/fatal.hpp"
#include "io/units.hpp"

namespace flib {

namespace {

constexpr std::string_view number_of_atoms = "the number of atoms";

// What a count function gives when the file does not hold what it looks for.
constexpr int not_found = -1;

// Takes the count from the line that was found, or from the lines behind it.
using CountAtoms = int (*)(int fid, const io::Line& found);

int behind_items(io::FreeForm items, int skipped) {
  int natom = 0;
  read_counts(items, {{skipped, number_of_atoms, natom}});
  return natom;
}

template <int skipped>
int in_items(int fid, const io::Line& found) {
  return behind_items({fid, found.padded()}, skipped);
}

int behind_equals(int fid, const io::Line& found) {
  return integer_behind_mark(fid, found.padded(), "=", number_of_atoms);
}

int behind_column_66(int fid, const io::Line& found) {
  return behind_items({fid, found.padded().substr(66)}, 0);
}

int on_next_line(int fid, const io::Line& /*found*/) { return behind_items(io::FreeForm(fid), 0); }

// Counts lines up to one for which `ends` holds. A file that ends before it has broken off.
template <class Ends>
int count_lines(int fid, Ends ends) {
  io::Line line;
  for (int count = 0;; ++count) {
    if (io::read_line(fid, line) != io::read_ok) {
      io::fatal_stop(io::next_place(fid), "expected the end of the atom block after ", count,
                     " atoms, found the end of the file");
    }
    if (ends(line)) return count;
  }
}

bool is_blank(std::string_view text) {
  return text.find_first_not_of(" \t") == std::string_view::npos;
}

bool begins_with(const io::Line& line, std::string_view text) {
  return io::without_leading_blanks(line.padded()).starts_with(text);
}

template <int header_lines, bool or_ruler = false>
int lines_up_to_blank(int fid, const io::Line& /*found*/) {
  io::pass_over_lines(fid, header_lines, "the header of the atom block");
  return count_lines(fid, [](const io::Line& line) {
    return is_blank(line.padded()) || (or_ruler && begins_with(line, "--"));
  });
}

// The lines that begin with an integer, from the first one on.
int numbered_lines(int fid, const io::Line& /*found*/) {
  io::Line line;
  if (!search_word_first_number(fid, line)) return not_found;
  io::step_back(fid);
  return count_lines(fid, [fid](const io::Line& text) {
    io::Line item = io::item_of(fid, text.padded());
    return !is_number(item);
  });
}

// The table below the heading that was found: column titles that begin with "No.", a ruler, the
// atoms and a blank line.
int lines_below_column_titles(int fid, const io::Line& found) {
  io::Line line;
  if (!search_word(fid, 3, 5, "No.", line)) return not_found;
  return lines_up_to_blank<1>(fid, found);
}

int lines_below_second_title(int fid, const io::Line& found) {
  io::Line line;
  if (!search_word_free(fid, "atomic coordinates", line)) return not_found;
  return lines_up_to_blank<0>(fid, found);
}

// The rows of a CIF loop, up to the next loop, name, data block or the end of the file. Further
// names of the loop's header may follow the one that was found.
int loop_rows(int fid, const io::Line& /*found*/) {
  int count = 0;
  io::Line line;
  while (io::read_line(fid, line) == io::read_ok && !begins_with(line, "loop_")) {
    const bool is_name = begins_with(line, "_");
    if ((is_name && count > 0) || begins_with(line, "data_")) break;
    if (!is_name && !is_blank(line.padded()) && !begins_with(line, "#")) ++count;
  }
  return count;
}

// Where the search text must stand: in these columns, anywhere, or anywhere with blanks ignored.
struct Columns {
  int first, last;
};
constexpr Columns anywhere = {0, 0};
constexpr Columns ignoring_blanks = {-1, -1};

struct AtomCount {
  std::string_view label;
  std::string_view text;
  Columns columns;
  CountAtoms count_atoms;
};

// Columns as the programs print them. No file gets the label MOLPRO; its row waits for one that
// does.
constexpr AtomCount atom_counts[] = {
    {"BDF OUT", "Atom           Cartcoord(Bohr)", anywhere, lines_up_to_blank<0>},
    {"BDF UMV", "NATM", {1, 4}, on_next_line},
    {"CHEMSHELL", "Input Coordinates", anywhere, numbered_lines},
    {"CIF", "_atom_site_occupancy", anywhere, loop_rows},
    {"QRX", "NAtoms", ignoring_blanks, in_items<1>},
    {"GAMESS_US", "TOTAL NUMBER OF ATOMS", {2, 22}, behind_equals},
    {"GAUSSIAN FCHK", "Number of atoms", {1, 15}, in_items<4>},
    {"GAUSSIAN LOG", "NAtoms=", {2, 8}, in_items<1>},
    {"MOLPRO", "ATOMIC COORDINATES", {2, 19}, numbered_lines},
    {"ZANDORCE", "NAtoms", ignoring_blanks, in_items<1>},
    {"NWCHEM", "Geometry", anywhere, lines_below_column_titles},
    {"ORCA HESS", "$atoms", {1, 6}, on_next_line},
    {"ORCA OUT", "CARTESIAN COORDINATES (ANGSTROEM)", {1, 33}, lines_up_to_blank<1>},
    {"PWOUT", "number of atoms", {6, 20}, behind_equals},
    {"QCHEM", "Standard Nuclear Orientation (Angstroms)", anywhere, lines_up_to_blank<2, true>},
    {"TERACHEM", "Total atoms:", {1, 12}, in_items<2>},
    {"TURBOMOLE", "Atomic coordinate, charge", {17, 41}, lines_below_second_title},
    {"TURBOMOLE CTRL", "natoms=", {4, 10}, behind_equals},
    {"VASP", "number of ions", {40, 53}, behind_column_66},
};

bool find_text(int fid, const AtomCount& row, io::Line& line) {
  if (row.columns.first == anywhere.first) return search_word_free(fid, row.text, line);
  if (row.columns.first == ignoring_blanks.first) return search_word_del_space(fid, row.text, line);
  return search_word(fid, row.columns.first, row.columns.last, row.text, line);
}

}  // namespace

void qm_file_natom(std::string_view fname, int& natom, int& info) {
  const ProbedFile file = open_probed_file(fname, info);
  info = -1;
  const std::string_view label = file.file_type.content();
  const AtomCount* const row = std::find_if(std::begin(atom_counts), std::end(atom_counts),
                                            [&](const AtomCount& r) { return r.label == label; });
  io::Line line;
  if (row != std::end(atom_counts) && find_text(file.fid, *row, line)) {
    const int count = row->count_atoms(file.fid, line);
    if (count != not_found) {
      natom = count;
      info = 0;
    }
  }
  io::close(file.fid);
}

}  // namespace flib
