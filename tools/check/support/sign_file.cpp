#include "check/support/sign_file.hpp"

#include <algorithm>
#include <cmath>
#include <type_traits>

#include "io/free_form.hpp"
#include "io/units.hpp"
#include "io/values.hpp"
#include "zandor/run_data.hpp"
#include "zandor/sign_file_blocks.hpp"

namespace check {

namespace {

using zandor::input_unit;

using zandor::dipole_header;
using zandor::forces_header;
using zandor::geometry_header;

constexpr std::size_t most_items = 8;

// The items of one row, which begins at the next record: those that are read, and the one behind.
struct Row {
  explicit Row(std::size_t items) : wanted(items), line(io::line_number(input_unit)) {}
  std::array<std::string_view, most_items> item;
  std::size_t wanted;
  std::string extra;    // empty where there is none, or where the row goes on over several lines
  std::string storage;  // of items that were not spelled plainly
  long long line;       // where it ends; before the first, that of the record read last
};

void add_odd_line(OddLines& odd, const Row& row, int atom, std::string found) {
  if (odd.count++ > 0) return;
  odd.first = row.line;
  odd.atom = atom;
  odd.found = std::move(found);
}

enum CharacterKind : unsigned char { plain, blank, special };

constexpr auto character_kinds = [] {
  std::array<CharacterKind, 256> kinds{};
  for (const char c : {' ', '\t'}) kinds[static_cast<unsigned char>(c)] = blank;
  for (const char c : {',', '/', '\'', '"', '*'}) kinds[static_cast<unsigned char>(c)] = special;
  return kinds;
}();

CharacterKind kind_of(char c) { return character_kinds[static_cast<unsigned char>(c)]; }

// Splits a record at its blanks. False when it needs the rules of free-form reading: fewer items
// than wanted, commas, slashes, quotes, repeat counts.
bool split_plainly(std::string_view record, Row& row) {
  std::size_t at = 0;
  for (std::size_t k = 0; k <= row.wanted; ++k) {
    while (at < record.size() && kind_of(record[at]) == blank) ++at;
    if (at == record.size()) return k == row.wanted;
    const std::size_t begin = at;
    while (at < record.size() && kind_of(record[at]) == plain) ++at;
    const bool ends_plainly = at == record.size() || kind_of(record[at]) == blank;
    if (k == row.wanted) {
      if (record[begin] != '/') {
        row.extra = record.substr(begin, record.find_first_of(" \t", begin) - begin);
      }
    } else if (ends_plainly) {
      row.item[k] = record.substr(begin, at - begin);
    } else {
      return false;
    }
  }
  return true;
}

// The first item of a record behind the ones that are wanted; blank where there is none.
std::string item_behind(const std::string& record, std::size_t wanted) {
  io::FreeForm items(input_unit, record);
  io::Line item;
  for (std::size_t k = 0; k <= wanted; ++k) items.text_or_blank(item);
  return std::string(item.content());
}

// Reads the row as the run does. Items without a value stay empty.
void read_freely(Row& row, const io::Subject& subject) {
  const std::int64_t before = io::position(input_unit);
  std::array<io::Line, most_items> texts;
  io::FreeForm items(input_unit);
  for (std::size_t k = 0; k < row.wanted; ++k) items.text(texts[k], subject);
  row.storage.clear();
  for (const io::Line& text : texts) row.storage.append(text.padded());
  for (std::size_t k = 0; k < row.wanted; ++k) {
    row.item[k] =
        io::trimmed(std::string_view(row.storage).substr(k * io::line_capacity, io::line_capacity));
  }
  row.extra.clear();
  row.line = io::line_number(input_unit);
  if (row.line != io::line_number(input_unit, before) + 1) return;
  io::step_back(input_unit);
  std::string_view record;
  io::read_record(input_unit, record);
  row.extra = item_behind(std::string(record), row.wanted);
}

void read_row(Row& row, const io::Subject& subject) {
  row.extra.clear();
  row.storage.clear();
  std::string_view record;
  const bool ended = io::read_record(input_unit, record) != io::read_ok;
  if (!ended && split_plainly(record, row)) {
    ++row.line;
    return;
  }
  if (!ended) io::step_back(input_unit);
  read_freely(row, subject);
}

void look_at_numbering(const Row& row, int atom, BlockRows& rows) {
  int number = 0;
  if (!row.extra.empty()) add_odd_line(rows.extra, row, atom, row.extra);
  if (io::parse_integer(row.item[0], number) && number != atom) {
    add_odd_line(rows.unordered, row, atom, std::string(row.item[0]));
  }
}

double real_item(std::string_view item, const io::Subject& subject) {
  double value = 0.0;
  const std::size_t length = io::scan_decimal(item, value);
  if (length > 0 && length == item.size()) return value;
  if (!io::parse_real(item, value) || !std::isfinite(value)) {
    io::fatal_stop(io::place(input_unit), "expected " + std::string(subject.text) + " " +
                                              std::to_string(subject.number) +
                                              " (finite number), found " + io::quoted(item));
  }
  return value;
}

// Passes over the next record if it is this text.
bool pass_over(const std::string& text, Row& row) {
  if (text.empty()) return false;
  std::string_view record;
  if (io::read_record(input_unit, record) == io::read_ok && record == text) {
    ++row.line;
    return true;
  }
  io::step_back(input_unit);
  return false;
}

void read_geometry_row(int a, Row& row, Atoms& atoms) {
  const io::Subject subject{"the geometry of atom", a};
  const auto place = static_cast<std::size_t>(a - 1);
  read_row(row, subject);
  atoms.symbols[place] = row.item[1].substr(0, 2);
  atoms.numbers[place] = 0;
  io::parse_integer(row.item[2], atoms.numbers[place]);
  atoms.masses[place] = real_item(row.item[3], subject);
  for (std::size_t k = 0; k < 3; ++k) {
    atoms.x[3 * place + k] = real_item(row.item[k + 4], subject);
  }
}

// The record read last, if it holds the whole of a row that is not odd.
std::string plain_text(const Row& row, const BlockRows& rows) {
  if (!row.storage.empty() || rows.extra.count > 0 || rows.unordered.count > 0) return {};
  std::string_view record;
  io::step_back(input_unit);
  io::read_record(input_unit, record);
  return std::string(record);
}

void read_geometry(int natom, const SignFile* reference, SignFile& file) {
  io::pass_over_lines(input_unit, 1, "the caption of the geometry");
  const auto count = static_cast<std::size_t>(natom);
  Atoms atoms;
  if (reference != nullptr && reference->geometry) {
    atoms = *reference->geometry;
  } else {
    atoms.symbols.resize(count);
    atoms.numbers.resize(count);
    atoms.masses.resize(count);
    atoms.x.resize(3 * count);
  }
  atoms.lines.resize(count);
  Row row(7);
  for (int a = 1; a <= natom; ++a) {
    const auto place = static_cast<std::size_t>(a - 1);
    const bool repeats = reference != nullptr && reference->geometry &&
                         pass_over(reference->geometry_texts[place], row);
    if (!repeats) read_geometry_row(a, row, atoms);
    atoms.lines[place] = row.line;
    if (repeats) continue;
    look_at_numbering(row, a, file.geometry_rows);
    if (reference == nullptr) file.geometry_texts.push_back(plain_text(row, file.geometry_rows));
  }
  file.geometry = std::move(atoms);
}

void read_forces(int natom, bool keep, SignFile& file) {
  Row row(4);
  std::vector<double> forces;
  for (int a = 1; a <= natom; ++a) {
    const io::Subject subject{"the force on atom", a};
    read_row(row, subject);
    if (keep) file.force_lines.push_back(row.line);
    look_at_numbering(row, a, file.force_rows);
    for (std::size_t k = 1; keep && k < 4; ++k) forces.push_back(real_item(row.item[k], subject));
  }
  file.forces = std::move(forces);
}

void read_dipole(SignFile& file) {
  Row row(5);
  const io::Subject subject{"the transition dipole of job", 0};
  read_row(row, subject);
  for (std::size_t k = 0; k < 3; ++k) file.dipole[k] = real_item(row.item[k + 2], subject);
  file.has_dipole = true;
}

// The keyword of a header line: what stands before its first separator, without blanks and quotes.
std::string keyword_of(std::string_view record) {
  std::string keyword;
  for (const char c : record) {
    if (c == '=' || c == ',' || keyword.size() > 20) return keyword;
    if (c != ' ' && c != '\t' && c != '"' && c != '\'') keyword += c;
  }
  return {};
}

// The next value of a header line; what it should be goes to the header when it is not.
template <class Value>
std::optional<Value> next_value(io::FreeForm& items, bool (*parse)(std::string_view, Value&),
                                std::size_t place, SignHeader& header) {
  io::Line text;
  items.text_or_blank(text);
  Value value{};
  if (parse(text.content(), value) && std::isfinite(static_cast<double>(value))) return value;
  header.malformed.push_back(
      {header.lines[place], "expected " + std::string(header.names[place]) +
                                (std::is_integral_v<Value> ? " (integer)" : " (finite number)") +
                                ", found " + io::quoted(text.content())});
  return std::nullopt;
}

void read_header_line(std::string_view record, SignHeader& header) {
  const std::string keyword = keyword_of(record);
  const auto found = std::find(header.names.begin(), header.names.end(), keyword);
  if (found == header.names.end() || record.find('=') == record.npos) return;
  const auto place = static_cast<std::size_t>(found - header.names.begin());
  if (header.lines[place] > 0) return;
  header.lines[place] = io::line_number(input_unit);
  const std::string copy(record);
  io::FreeForm items(input_unit, copy);
  io::Line word;
  for (int k = 0; k < 2; ++k) items.text_or_blank(word);
  if (place < header.size_count) {
    header.sizes[place] = next_value<int>(items, io::parse_integer, place, header);
  } else if (place == header.size_count) {
    const auto row = next_value<int>(items, io::parse_integer, place, header);
    const auto column =
        row ? next_value<int>(items, io::parse_integer, place, header) : std::nullopt;
    if (row && column) header.tden_maxloc = {*row, *column};
  } else {
    header.tden_maxval = next_value<double>(items, io::parse_real, place, header);
  }
}

}  // namespace

void read_sign_file(std::string_view name, int natom, const SignFile* reference, SignFile& file) {
  const bool is_reference = reference == nullptr;
  io::open_existing(input_unit, name);
  bool dipole_met = false;
  std::string_view record;
  while (io::read_record(input_unit, record) == io::read_ok) {
    const std::string_view head = record.substr(0, io::line_capacity);
    if (file.geometry_line == 0 && head.find(geometry_header) != head.npos) {
      file.geometry_line = io::line_number(input_unit);
      read_geometry(natom, reference, file);
    } else if (!dipole_met && head.find(dipole_header) != head.npos) {
      dipole_met = true;
      if (is_reference) read_dipole(file);
    } else if (dipole_met && head.find(forces_header) != head.npos) {
      file.forces_line = io::line_number(input_unit);
      read_forces(natom, is_reference, file);
      break;
    } else if (!dipole_met) {
      read_header_line(record, file.header);
    }
  }
  io::close(input_unit);
}

void read_reference_input(std::string_view name, int natom, ReferenceInput& input) {
  io::open_existing(input_unit, name);
  std::string_view record;
  do {
    if (io::read_record(input_unit, record) != io::read_ok) {
      io::fatal_stop(io::next_place(input_unit),
                     "expected a line that begins with a digit (charge and multiplicity), found "
                     "the end of the file");
    }
    record = io::without_leading_blanks(record.substr(0, io::line_capacity));
  } while (record.empty() || !io::is_digit(record.front()));
  Row row(4);
  for (int a = 1; a <= natom; ++a) {
    const io::Subject subject{"the coordinates of atom", a};
    read_row(row, subject);
    if (!row.extra.empty()) add_odd_line(input.extra, row, a, row.extra);
    input.lines.push_back(row.line);
    input.words.emplace_back(row.item[0]);
    for (std::size_t k = 1; k < 4; ++k) input.x.push_back(real_item(row.item[k], subject));
  }
  io::close(input_unit);
}

}  // namespace check
