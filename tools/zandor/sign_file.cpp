#include "zandor/sign_file.hpp"

#include <algorithm>
#include <cmath>
#include <type_traits>
#include <utility>

#include "flib/search_word.hpp"
#include "io/free_form.hpp"
#include "io/process.hpp"
#include "io/units.hpp"
#include "io/values.hpp"
#include "zandor/run_data.hpp"

namespace zandor {

namespace {

void go_back_to(std::int64_t position) {
  while (io::position(input_unit) > position) io::step_back(input_unit);
}

// The first item behind those that are read, as a person sees it: up to a blank. Where quotes,
// commas or repeat counts stand before it, as free-form reading takes it. Empty where there is
// none.
std::string item_behind(const io::FreeForm& row, int items_read) {
  const std::string_view rest = row.rest();
  const std::size_t begin = rest.find_first_not_of(" \t");
  if (begin == rest.npos) return {};
  const std::string record(row.record());
  const std::size_t special = record.find_first_of(",/'\"*");
  if (begin > 0 && special >= record.size() - rest.size() + begin) {
    if (rest[begin] == '/') return {};
    return std::string(rest.substr(begin, rest.find_first_of(" \t", begin) - begin));
  }
  io::FreeForm items(input_unit, record);
  io::Line item;
  for (int k = 0; k <= items_read; ++k) items.text_or_blank(item);
  return std::string(item.content());
}

// Looks at the rows of a block while they are read: whether they hold more, and their numbers.
class RowWatch {
 public:
  RowWatch(int items_read, BlockRows& rows, std::vector<long long>& lines)
      : items_read_(items_read), rows_(rows), lines_(lines) {}

  void look_at_number(std::string_view word, int atom) {
    int number = 0;
    if (!io::parse_integer(word, number) || number == atom) return;
    add(rows_.unordered, line_ + 1, atom, word);
  }
  // Takes what stands behind the items that are read, of rows that are one line.
  void look_behind(io::FreeForm& row, int atom) {
    line_ += row.records();
    lines_.push_back(line_);
    if (row.records() > 1) return;
    const std::string extra = item_behind(row, items_read_);
    if (!extra.empty()) add(rows_.extra, line_, atom, extra);
  }
  void pass_over_line() { lines_.push_back(++line_); }

 private:
  static void add(OddLines& odd, long long line, int atom, std::string_view found) {
    if (odd.count++ == 0) odd = {line, 1, atom, std::string(found)};
  }

  int items_read_;
  BlockRows& rows_;
  std::vector<long long>& lines_;
  long long line_ = io::line_number(input_unit);
};

// Reads a word and three numbers per atom into the columns of a 3 x natom array. The words go to
// `words`, or are taken for numbers of the rows.
void read_atom_vectors(int natom, double* vectors, std::string_view what, std::string_view remark,
                       RowWatch* watch, std::vector<std::string>* words = nullptr) {
  for (int a = 1; a <= natom; ++a) {
    const io::Subject subject{what, a, remark};
    io::FreeForm row(input_unit);
    row.skip_words(1, subject);
    if (words != nullptr) {
      words->emplace_back(row.word());
    } else if (watch != nullptr) {
      watch->look_at_number(row.word(), a);
    }
    for (int k = 0; k < 3; ++k) row.finite_real(*vectors++, subject);
    if (a == natom) row.warn_of_open_end(subject);
    if (watch != nullptr) watch->look_behind(row, a);
  }
}

// Passes over the next record if it is this text.
bool pass_over(const std::string& text) {
  if (text.empty()) return false;
  std::string_view record;
  if (io::read_record(input_unit, record) == io::read_ok && record == text) return true;
  io::step_back(input_unit);
  return false;
}

void read_geometry_row(io::FreeForm& row, int a, Atoms& atoms, RowWatch& watch) {
  const io::Subject subject{"the geometry of atom", a};
  const auto place = static_cast<std::size_t>(a - 1);
  row.skip_words(1, subject);
  watch.look_at_number(row.word(), a);
  atoms.symbols[place] = std::string_view{};
  row.text(atoms.symbols[place], subject);
  io::Line number;
  row.text(number, subject);
  atoms.numbers[place] = 0;
  io::parse_integer(number.content(), atoms.numbers[place]);
  row.finite_real(atoms.masses[place], subject);
  for (std::size_t k = 0; k < 3; ++k) row.finite_real(atoms.x[3 * place + k], subject);
}

void read_geometry(int natom, const SignFile* reference, SignFile& file) {
  io::pass_over_lines(input_unit, 1, "the caption of the geometry");
  const auto count = static_cast<std::size_t>(natom);
  const bool known = reference != nullptr && reference->geometry;
  Atoms atoms;
  if (known) atoms = *reference->geometry;
  atoms.symbols.resize(count);
  atoms.numbers.resize(count);
  atoms.masses.resize(count);
  atoms.x.resize(3 * count);
  atoms.lines.clear();
  RowWatch watch(7, file.geometry_rows, atoms.lines);
  for (int a = 1; a <= natom; ++a) {
    if (known && pass_over(reference->geometry_texts[static_cast<std::size_t>(a - 1)])) {
      watch.pass_over_line();
      continue;
    }
    io::FreeForm row(input_unit);
    read_geometry_row(row, a, atoms, watch);
    const std::string_view record = row.record();
    watch.look_behind(row, a);
    if (reference != nullptr) continue;
    const bool plain = row.records() == 1 && file.geometry_rows.extra.count == 0 &&
                       file.geometry_rows.unordered.count == 0;
    file.geometry_texts.emplace_back(plain ? record : std::string_view{});
  }
  file.geometry = std::move(atoms);
}

// A geometry that cannot be read does not end the reading. The search for the next block begins
// behind its header, unless its rows are known to hold no other.
void look_at_geometry(int natom, const SignFile* reference, SignFile& file) {
  file.geometry_line = io::line_number(input_unit);
  const std::int64_t begin = io::position(input_unit);
  file.geometry_stop = io::collect([&] { read_geometry(natom, reference, file); });
  if (file.geometry_stop || file.geometry_rows.extra.count > 0) go_back_to(begin);
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

void read_state_line(std::string_view record, StateLines& states) {
  constexpr std::pair<std::string_view, std::optional<double> StateLines::*> lines[] = {
      {"total ground state energy (hartree)", &StateLines::ground_energy},
      {"energy of the state (hartree)", &StateLines::energy},
      {"excitation energy (ev)", &StateLines::excitation_energy},
      {"oscillator strength", &StateLines::oscillator_strength}};
  const std::string_view text = io::trimmed(io::without_leading_blanks(record));
  for (const auto& [beginning, place] : lines) {
    const std::string_view head = text.substr(0, beginning.size());
    if (states.*place || !std::ranges::equal(head, beginning, {}, io::lowered)) continue;
    double value = 0.0;
    if (io::parse_real(io::without_leading_blanks(text.substr(head.size())), value) &&
        std::isfinite(value)) {
      states.*place = value;
    }
  }
}

// Looks at the lines before the next one that holds `header`, and stays before it. False, and where
// it began, when there is none.
bool look_up_to(const char* header, int natom, const SignFile* reference, SignFile& file) {
  const std::int64_t begin = io::position(input_unit);
  std::string_view record;
  while (io::read_record(input_unit, record) == io::read_ok) {
    const std::string_view head = record.substr(0, io::line_capacity);
    if (head.find(header) != head.npos) {
      io::step_back(input_unit);
      return true;
    }
    if (file.geometry_line == 0 && head.find(geometry_header) != head.npos) {
      look_at_geometry(natom, reference, file);
    } else if (!file.has_dipole) {
      read_header_line(record, file.header);
      read_state_line(record, file.states);
    }
  }
  go_back_to(begin);
  return false;
}

// Passes over the lines up to the one with charge and multiplicity, the first that begins with a
// digit, and gives its number. A negative charge is not taken for one, deliberately.
long long pass_over_input_head() {
  io::Line line;
  do {
    if (io::read_line(input_unit, line) != io::read_ok) {
      io::fatal_stop(io::next_place(input_unit),
                     "expected a line that begins with a digit (charge and multiplicity), found "
                     "the end of the file (a negative charge is written without its sign)");
    }
    const std::string_view text = io::without_leading_blanks(line.padded());
    if (!text.empty() && io::is_digit(text.front())) return io::line_number(input_unit);
  } while (true);
}

}  // namespace

void find_block(const char* header, int job) {
  const std::int64_t before = io::position(input_unit);
  io::Line line;
  if (!flib::search_word_free(input_unit, header, line)) {
    if (io::position(input_unit) == 0) {
      io::fatal_stop({io::name(input_unit)}, "expected the results of job " + std::to_string(job) +
                                                 ", found an empty file");
    }
    io::fatal_stop({io::name(input_unit)}, "no line holds '" + std::string(header) +
                                               "' after line " +
                                               std::to_string(io::line_number(input_unit, before)) +
                                               " (job " + std::to_string(job) + ")");
  }
}

void read_dipole(int job, double* dipole) {
  find_block(dipole_header, job);
  io::FreeForm row(input_unit);
  row.skip_words(2, {"the transition dipole of job", job});
  for (int k = 0; k < 3; ++k) row.finite_real(dipole[k], {"the transition dipole of job", job});
  row.warn_of_open_end({"the transition dipole of job", job});
}

void read_sign_file(std::string_view name, int job, int natom, double* dipole, double* forces,
                    SignFile* file, const SignFile* reference) {
  io::open_existing(input_unit, name);
  std::optional<RowWatch> watch;
  if (file != nullptr) look_up_to(dipole_header, natom, reference, *file);
  read_dipole(job, dipole);
  if (file != nullptr) {
    file->has_dipole = true;
    if (!look_up_to(forces_header, natom, reference, *file) && job == 0) {
      io::close(input_unit);
      return;
    }
  }
  find_block(forces_header, job);
  if (file != nullptr) {
    file->forces_line = io::line_number(input_unit);
    watch.emplace(4, file->force_rows, file->force_lines);
  }
  read_atom_vectors(natom, forces, "the force on atom", {}, watch ? &*watch : nullptr);
  io::close(input_unit);
}

void read_input_file(std::string_view name, int natom, double* x, ReferenceInput* input) {
  io::open_existing(input_unit, name);
  const long long head = pass_over_input_head();
  ReferenceInput ignored;
  ReferenceInput& found = input != nullptr ? *input : ignored;
  BlockRows rows;
  RowWatch watch(4, rows, found.lines);
  read_atom_vectors(natom, x, "the coordinates of atom",
                    "line " + std::to_string(head) + " was taken for charge and multiplicity",
                    &watch, &found.words);
  found.x.assign(x, x + 3 * natom);
  found.extra = rows.extra;
  io::close(input_unit);
}

}  // namespace zandor
