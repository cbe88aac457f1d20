#include <Eigen/Dense>
#include <algorithm>
#include <array>
#include <cmath>
#include <istream>
#include <nlohmann/json.hpp>
#include <streambuf>

#include "analysis/checkpoint.hpp"
#include "analysis/isotopes.hpp"
#include "ht/other_state.hpp"
#include "io/free_form.hpp"
#include "io/units.hpp"

namespace ht {

namespace {

constexpr int unit = 14;

// What is wanted of a file, under the name that it has there. The molecule of the jobs tells how
// many values there must be: no count in a file makes room for more.
struct Array {
  std::string name;
  std::size_t size;
  std::vector<double>& values;  // none until it is found
};
using Arrays = std::array<Array, 4>;  // in the order of OtherState

[[noreturn]] void stop(const std::string& expected, const std::string& found) {
  io::fatal_stop(io::place(unit), "expected ", expected, ", found ", found);
}

void check_size(const Array& array, long long size) {
  if (size == static_cast<long long>(array.size)) return;
  stop(io::joined("'", array.name, "' with ", array.size, " values for the atoms of the jobs"),
       std::to_string(size));
}

// Null where nothing of this name is wanted.
const Array* find(const Arrays& arrays, std::string_view name) {
  const auto* const array = std::ranges::find(arrays, name, &Array::name);
  return array == arrays.end() ? nullptr : array;
}

void read_fchk(const Arrays& arrays) {
  analysis::CheckpointArrays found;
  for (const Array& array : arrays) found[array.name];
  analysis::read_checkpoint(unit, found, [&](const std::string& name, int size) {
    check_size(*find(arrays, name), size);
  });
  for (const Array& array : arrays) array.values = std::move(found[array.name]);
}

void expect_number(io::FreeForm& form, const char* what, std::size_t expected) {
  int found = -1;
  form.integer(found, {what});
  if (found == static_cast<int>(expected)) return;
  stop(std::string(what) + " " + std::to_string(expected), std::to_string(found));
}

// Blocks of a few columns each, whose first line has their numbers from 0.
void read_blocks(std::size_t n3, std::vector<double>& values) {
  io::FreeForm form(unit);
  expect_number(form, "the number of coordinates", n3);
  values.assign(n3 * n3, 0.0);
  for (std::size_t first = 0, end = 0; first < n3; first = end) {
    do {
      expect_number(form, "the column of the force constants", end++);
    } while (end < n3 && !io::without_leading_blanks(form.rest()).empty());
    for (std::size_t i = 0; i < n3; ++i) {
      expect_number(form, "the row of the force constants", i);
      for (std::size_t j = first; j < end; ++j) {
        form.finite_real(values[n3 * i + j], {"a force constant"});
      }
    }
  }
}

void read_atoms(std::size_t natom, const Arrays& arrays) {
  io::FreeForm form(unit);
  expect_number(form, "the number of atoms", natom);
  for (std::size_t a = 0; a < natom; ++a) {
    std::array<char, 4> symbol{};
    form.text(symbol, {"the symbol of an atom"});
    arrays[0].values.push_back(analysis::element_number(io::trimmed(io::view(symbol))));
    form.finite_real(arrays[1].values.emplace_back(), {"the mass of an atom"});
    for (int k = 0; k < 3; ++k) {
      form.finite_real(arrays[2].values.emplace_back(), {"a coordinate of an atom"});
    }
  }
}

void read_hess(const Arrays& arrays) {
  std::string_view record;
  while (io::read_record(unit, record) == io::read_ok) {
    const std::string_view section = io::trimmed(io::without_leading_blanks(record));
    if (section == "$hessian") read_blocks(arrays[2].size, arrays[3].values);
    if (section == "$atoms" && arrays[0].values.empty()) read_atoms(arrays[0].size, arrays);
  }
}

// The file line by line as a stream: its place, for messages, is where the parser reads.
class LineBuffer : public std::streambuf {
  int_type underflow() override {
    std::string_view record;
    if (io::read_record(unit, record) != io::read_ok) return traits_type::eof();
    line_.assign(record).push_back('\n');
    setg(line_.data(), line_.data(), line_.data() + line_.size());
    return traits_type::to_int_type(line_[0]);
  }
  std::string line_;
};

// Numbers go to the arrays as they come; the parser keeps nothing but the schema's name.
void read_json(const Arrays& arrays) {
  using Json = nlohmann::json;
  using Event = Json::parse_event_t;
  constexpr const char* schema = "schema_name";
  constexpr int deepest = 16;
  const Array* wanted = nullptr;
  long long count = 0;
  const auto take = [&](int depth, Event event, Json& value) {
    if (depth > deepest) stop("at most 16 brackets within each other", "more");
    if (event == Event::array_start || event == Event::object_start) return true;
    if (event == Event::key && depth == 1) {
      wanted = find(arrays, value.get_ref<const std::string&>());
      count = 0;
      if (wanted != nullptr) wanted->values.clear();
      return wanted != nullptr || value == schema;
    }
    if (wanted == nullptr) return depth < 2;
    if (event == Event::value && depth > 1) {
      const double number = value.is_number() ? value.get<double>() : std::nan("");
      if (!std::isfinite(number)) {
        stop("finite numbers in '" + wanted->name + "'", value.type_name());
      }
      if (wanted->values.size() < wanted->size) wanted->values.push_back(number);
      ++count;
    }
    if (event == Event::array_end && depth == 1) check_size(*wanted, count);
    return depth == 0;
  };
  LineBuffer buffer;
  std::istream stream(&buffer);
  const Json document = Json::parse(stream, take, false);
  if (document.is_discarded()) stop("a JSON object", "a text that is none (cut, or malformed)");
  if (!document.contains(schema) || document[schema] != "zandor_vibrations") {
    stop("'schema_name' to be \"zandor_vibrations\"", "another, or none");
  }
}

// The first line that is not blank, or the third where that begins a formatted checkpoint.
std::string first_words() {
  constexpr std::string_view third = "Number of atoms";
  std::string first;
  std::string_view record;
  for (int line = 1; (line <= 3 || first.empty()) && io::read_record(unit, record) == io::read_ok;
       ++line) {
    if (line == 3 && record.starts_with(third)) first = third;
    if (first.empty()) first = io::trimmed(io::without_leading_blanks(record));
  }
  io::rewind(unit);
  return first;
}

struct Kind {
  std::string_view first;  // of its first words
  void (*read)(const Arrays& arrays);
  std::array<const char*, 4> names;  // of Arrays
  bool triangle;                     // its force constants are the lower one, by rows
};

constexpr Kind kinds[] = {
    {"Number of atoms",
     read_fchk,
     {"Atomic numbers", "Real atomic weights", "Current cartesian coordinates",
      "Cartesian Force Constants"},
     true},
    {"$orca_hessian_file", read_hess, {"$atoms", "$atoms", "$atoms", "$hessian"}, false},
    {"{", read_json, {"atomic_numbers", "masses", "geometry", "hessian"}, false}};

void read_arrays(std::size_t natom, OtherState& state) {
  const std::string first = first_words();
  const auto* const kind = std::find_if(std::begin(kinds), std::end(kinds), [&](const Kind& k) {
    return first == k.first || (k.first == "{" && first.starts_with("{"));
  });
  if (kind == std::end(kinds)) {
    io::fatal_stop({io::name(unit), 1},
                   "expected a formatted checkpoint file, an ORCA .hess file or the JSON of "
                   "zandor_export, found ",
                   first.empty() ? "nothing" : io::quoted(first));
  }
  const std::size_t n3 = 3 * natom;
  const Arrays arrays = {
      {{kind->names[0], natom, state.numbers},
       {kind->names[1], natom, state.masses},
       {kind->names[2], n3, state.places},
       {kind->names[3], kind->triangle ? n3 * (n3 + 1) / 2 : n3 * n3, state.force_constants}}};
  kind->read(arrays);
  for (const Array& array : arrays) {
    if (!array.values.empty()) continue;
    io::fatal_stop(io::next_place(unit), "expected '", array.name, "', found the end of the file");
  }
}

// The whole symmetric matrix, from its lower triangle by rows.
std::vector<double> unpacked(const std::vector<double>& triangle, std::size_t n3) {
  std::vector<double> all(n3 * n3);
  auto value = triangle.begin();
  for (std::size_t i = 0; i < n3; ++i) {
    for (std::size_t j = 0; j <= i; ++j) all[n3 * i + j] = all[n3 * j + i] = *value++;
  }
  return all;
}

// Bounds far from any molecule's numbers; beyond them other units, or another kind of file.
void check_values(const std::string& file, const OtherState& state) {
  const auto within = [](const std::vector<double>& values, double low, double high) {
    return std::ranges::all_of(values, [=](double value) { return value > low && value < high; });
  };
  constexpr double heaviest = 1e3, farthest = 1e6, stiffest = 1e3;  // u, Bohr, Hartree/Bohr**2
  if (!within(state.masses, 0.1, heaviest) || !within(state.places, -farthest, farthest) ||
      !within(state.force_constants, -stiffest, stiffest)) {
    io::fatal_stop({file},
                   "expected masses, places and force constants of a molecule, found others");
  }
}

// Only one half goes into the modes: both have to hold the same, but for last digits.
void take_mean_of_halves(const std::string& file, std::vector<double>& force_constants,
                         std::size_t n3) {
  constexpr double most = 1e-3;  // Hartree/Bohr**2, as asymmetry of zandor_check
  const auto size = static_cast<Eigen::Index>(n3);
  Eigen::Map<Eigen::MatrixXd> all(force_constants.data(), size, size);
  const Eigen::MatrixXd turned = all.transpose();
  const double difference = (all - turned).cwiseAbs().maxCoeff();
  if (difference > most) {
    io::fatal_stop({file}, "expected symmetric force constants, found two that differ by ",
                   difference, " Hartree/Bohr**2");
  }
  all = (all + turned) / 2.0;
}

}  // namespace

OtherState read_other_state(const std::string& file, int natom) {
  OtherState state;
  io::open_existing(unit, file);
  read_arrays(static_cast<std::size_t>(natom), state);
  io::close(unit);
  const std::size_t n3 = state.places.size();
  if (state.force_constants.size() < n3 * n3) {
    state.force_constants = unpacked(state.force_constants, n3);
  }
  check_values(file, state);
  take_mean_of_halves(file, state.force_constants, n3);
  return state;
}

}  // namespace ht
