#include "zandor/sign_file.hpp"

#include <algorithm>
#include <cmath>
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

// Looks at the rows of a block while they are read: whether they hold more, and their numbers.
class RowWatch {
 public:
  RowWatch(BlockRows& rows, std::vector<long long>& lines) : rows_(rows), lines_(lines) {}

  void look_at_number(std::string_view word, int atom) {
    int number = 0;
    if (!io::parse_integer(word, number) || number == atom) return;
    add(rows_.unordered, line_ + 1, atom, word);
  }
  // Takes what stands behind the items that are read, of rows that are one line.
  void look_behind(io::FreeForm& row, int atom) {
    line_ += row.records();
    lines_.push_back(line_);
    const std::string_view rest = row.rest();
    const std::size_t begin = rest.find_first_not_of(" \t");
    if (row.records() > 1 || begin == rest.npos) return;
    // What is left begins with the separator behind the last item that was read.
    const io::Line item = io::item_of(input_unit, "x" + std::string(rest), 2);
    std::string_view extra = item.content();
    // A quote that stays open is no item, but stands there.
    if (extra.empty() && (rest[begin] == '"' || rest[begin] == '\'')) {
      extra = rest.substr(begin, rest.find_first_of(" \t", begin) - begin);
    }
    if (!extra.empty()) add(rows_.extra, line_, atom, extra);
  }
  void pass_over_line() { lines_.push_back(++line_); }

 private:
  static void add(OddLines& odd, long long line, int atom, std::string_view found) {
    if (odd.count++ == 0) odd = {line, 1, atom, std::string(found)};
  }

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

void read_geometry(int natom, const SignFile* reference, SignFile& file) {
  io::pass_over_lines(input_unit, 1, "the caption of the geometry");
  const auto count = static_cast<std::size_t>(natom);
  Atoms atoms;
  if (reference != nullptr && reference->geometry) atoms = *reference->geometry;
  const bool known = !atoms.symbols.empty();
  atoms.symbols.resize(count);
  atoms.numbers.resize(count);
  atoms.masses.resize(count);
  atoms.x.resize(3 * count);
  atoms.lines.clear();
  RowWatch watch(file.geometry_rows, atoms.lines);
  for (std::size_t i = 0; i < count; ++i) {
    if (known && pass_over(reference->geometry_texts[i])) {
      watch.pass_over_line();
      continue;
    }
    const int a = static_cast<int>(i) + 1;
    io::FreeForm row(input_unit);
    row.skip_words(1, {"the geometry of atom", a});
    watch.look_at_number(row.word(), a);
    atoms.symbols[i] = std::string_view{};
    atoms.numbers[i] = 0;
    read_atom(row, a, atoms.symbols[i], atoms.numbers[i], atoms.masses[i], &atoms.x[3 * i]);
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

// Takes the values of a header line: a keyword, in which separators and quotes do not count, an
// equals sign and integers or a real.
void read_header_line(std::string_view record, SignHeader& header) {
  const std::size_t equals = record.find('=');
  if (equals == record.npos) return;
  std::string keyword(record.substr(0, equals));
  std::erase_if(keyword, [](char c) {
    return std::string_view(" \t\"',").find(c) != std::string_view::npos;
  });
  const auto found = std::find(header.names.begin(), header.names.end(), keyword);
  if (found == header.names.end()) return;
  const auto place = static_cast<std::size_t>(found - header.names.begin());
  if (header.lines[place] > 0) return;
  header.lines[place] = io::line_number(input_unit);
  const std::string line(record);
  const auto stop = io::collect([&] {
    const io::Subject subject{keyword};
    io::FreeForm items(input_unit, line);
    std::array<int, 2> integers{};
    double real = 0.0;
    items.skip_words(2, subject);
    if (place <= header.size_count) items.integer(integers[0], subject);
    if (place < header.size_count) {
      header.sizes[place] = integers[0];
    } else if (place == header.size_count) {
      items.integer(integers[1], subject);
      header.tden_maxloc = integers;
    } else {
      items.finite_real(real, subject);
      header.tden_maxval = real;
    }
  });
  if (stop) header.malformed.push_back({stop->line, stop->message});
}

void read_state_line(std::string_view record, StateLines& states) {
  constexpr std::pair<std::string_view, std::optional<double> StateLines::*> lines[] = {
      {"total ground state energy (hartree)", &StateLines::ground_energy},
      {"energy of the state (hartree)", &StateLines::energy},
      {"excitation energy (ev)", &StateLines::excitation_energy},
      {"oscillator strength", &StateLines::oscillator_strength}};
  constexpr double largest = 1e6;  // Hartree or eV; beyond any molecule's
  const std::string_view text = io::trimmed(io::without_leading_blanks(record));
  for (const auto& [beginning, place] : lines) {
    const std::string_view head = text.substr(0, beginning.size());
    if (states.*place || !std::ranges::equal(head, beginning, {}, io::lowered)) continue;
    double value = 0.0;
    if (io::parse_real(io::without_leading_blanks(text.substr(head.size())), value) &&
        std::fabs(value) < largest) {
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
  while (io::read_line(input_unit, line) == io::read_ok) {
    const std::string_view text = io::without_leading_blanks(line.padded());
    if (!text.empty() && io::is_digit(text.front())) return io::line_number(input_unit);
  }
  io::fatal_stop(
      io::next_place(input_unit),
      "expected a line that begins with a digit (charge and multiplicity), found the end "
      "of the file (a negative charge is written without its sign)");
}

}  // namespace

void find_block(const char* header, int job) {
  const std::int64_t before = io::position(input_unit);
  io::Line line;
  if (!flib::search_word_free(input_unit, header, line)) {
    if (io::position(input_unit) == 0) {
      io::fatal_stop({io::name(input_unit)}, "expected the results of job ", job,
                     ", found an empty file");
    }
    io::fatal_stop({io::name(input_unit)}, "no line holds '", header, "' after line ",
                   io::line_number(input_unit, before), " (job ", job, ")");
  }
}

void read_atom(io::FreeForm& row, int a, io::Text<2>& symbol, int& number, double& mass,
               double* x) {
  row.text(symbol, {"the symbol of atom", a});
  row.optional_integer(number, {"the atomic number of atom", a});
  row.finite_real(mass, {"the mass of atom", a});
  if (!(mass > 0.0)) {
    io::fatal_stop(io::place(input_unit), "expected a mass above 0 for atom ", a, ", found ", mass);
  }
  for (int k = 0; k < 3; ++k) row.finite_real(x[k], {"the geometry of atom", a});
}

void read_forces(int natom, double* forces) {
  read_atom_vectors(natom, forces, "the force on atom", {}, nullptr);
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
    watch.emplace(file->force_rows, file->force_lines);
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
  RowWatch watch(rows, found.lines);
  read_atom_vectors(natom, x, "the coordinates of atom",
                    "line " + std::to_string(head) + " was taken for charge and multiplicity",
                    &watch, &found.words);
  found.x.assign(x, x + 3 * natom);
  found.extra = rows.extra;
  io::close(input_unit);
}

}  // namespace zandor
