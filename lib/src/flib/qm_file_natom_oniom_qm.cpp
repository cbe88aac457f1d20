#include "flib/qm_file_natom_oniom_qm.hpp"

#include <string>
#include <vector>

#include "flib/qm_file.hpp"
#include "flib/search_word.hpp"
#include "io/fatal.hpp"
#include "io/free_form.hpp"
#include "io/units.hpp"
#include "io/values.hpp"

namespace flib {

namespace {

// The fields of an atom line. Commas within parentheses belong to the atom's name
// (C(PDBName=CA,ResName=ALA)) and do not separate.
std::vector<std::string_view> fields_of(std::string_view line) {
  std::vector<std::string_view> fields;
  std::size_t begin = 0;
  int depth = 0;
  for (std::size_t i = 0; i <= line.size(); ++i) {
    const char c = i < line.size() ? line[i] : ' ';
    if (c == '(') ++depth;
    if (c == ')') --depth;
    const bool separates = c == ' ' || c == '\t' || (c == ',' && depth <= 0);
    if (!separates) continue;
    if (i > begin) fields.push_back(line.substr(begin, i - begin));
    begin = i + 1;
  }
  return fields;
}

// Under a single charge line the first atom line tells for all whether the layer is the fifth field
// or, behind a freeze code, the sixth. Reads free-form, as the file's other readers do.
bool is_high_below_one_charge_line(int fid, int skipped, int atom) {
  io::FreeForm items(fid);
  items.skip_words(skipped, {"the layer of atom", atom});
  io::Line layer;
  items.text(layer, {"the layer of atom", atom});
  return layer.content() == "H";
}

// Under several charge lines each atom line tells: the layer stands right behind the coordinates,
// so it is the fifth field unless that is the third coordinate, behind a freeze code.
bool is_high_below_layer_lines(int fid, int atom) {
  const std::string what = "the layer of atom " + std::to_string(atom);
  io::Line line;
  io::read_expected_line(fid, line, what);
  const std::vector<std::string_view> fields = fields_of(line.content());
  double coordinate = 0.0;
  const std::size_t layer = fields.size() > 4 && io::parse_real(fields[4], coordinate) ? 5 : 4;
  if (fields.size() <= layer) {
    io::fatal_stop(io::place(fid), "expected ", what, ", found the end of the line");
  }
  return fields[layer] == "H";
}

// Counts the atoms of the high layer; the unit stands behind the first charge line.
int count_high_layer(int fid, int atoms) {
  io::Line line;
  bool several_charge_lines = false;
  for (;;) {
    io::read_expected_line(fid, line, "the first atom line");
    if (io::item_of(fid, line.padded()).content() != "Charge") break;
    several_charge_lines = true;
  }
  const std::size_t columns = fields_of(line.content()).size();
  if (columns == 0) {
    io::fatal_stop(io::place(fid), "expected the first atom line, found a blank one");
  }
  const int skipped = columns == 5 ? 4 : 5;
  io::step_back(fid);
  int count = 0;
  for (int atom = 1; atom <= atoms; ++atom) {
    const bool high = several_charge_lines ? is_high_below_layer_lines(fid, atom)
                                           : is_high_below_one_charge_line(fid, skipped, atom);
    if (high) ++count;
  }
  return count;
}

}  // namespace

void qm_file_natom_oniom_qm(std::string_view fname, int& nqm, int& nqmmm, int& info) {
  const ProbedFile file = open_probed_file(fname, info);
  info = -1;
  nqm = 0;
  if (file.file_type.content() == "GAUSSIAN LOG") {
    io::Line line;
    int atoms = 0;
    if (search_word(file.fid, 2, 8, "NAtoms=", line)) {
      read_counts({file.fid, line.padded()}, {{1, "the number of atoms", atoms}});
      nqmmm = atoms;
    }
    io::rewind(file.fid);
    if (search_word_free(file.fid, "Charge =", line)) {
      nqm = count_high_layer(file.fid, atoms);
      info = 0;
    }
  }
  io::close(file.fid);
}

}  // namespace flib
