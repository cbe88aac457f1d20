#include "displace/molecule.hpp"

#include <cctype>
#include <cmath>
#include <filesystem>

#include "analysis/isotopes.hpp"
#include "io/units.hpp"
#include "io/values.hpp"
#include "zandor/run_data.hpp"

namespace displace {

namespace {

constexpr int most_atoms = 600;        // 3601 jobs
constexpr double largest_place = 1e4;  // Angstrom
constexpr double nearest_atoms = 0.3;  // Angstrom; the shortest bond, H2, is 0.74

std::vector<std::string> words_of(std::string_view record) {
  std::vector<std::string> words(1);
  for (const char c : record) {
    if (c != ' ' && c != '\t' && c != ',' && c != '\r') {
      words.back() += c;
    } else if (!words.back().empty()) {
      words.emplace_back();
    }
  }
  if (words.back().empty()) words.pop_back();
  return words;
}

// The next line in words; false at the end of the file.
bool next_line(std::vector<std::string>& words) {
  std::string_view record;
  if (io::read_record(zandor::input_unit, record) != io::read_ok) return false;
  words = words_of(record);
  return true;
}

std::string joined(const std::vector<std::string>& words) {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : " ") + word;
  return text;
}

[[noreturn]] void stop_at(const std::string& expected, const std::vector<std::string>& found) {
  io::fatal_stop(io::place(zandor::input_unit),
                 "expected " + expected + ", found " + io::quoted(joined(found)));
}

// "CL" and "cl" are Cl.
std::string spelt(std::string symbol) {
  for (std::size_t i = 0; i < symbol.size(); ++i) {
    symbol[i] = i == 0 ? static_cast<char>(std::toupper(static_cast<unsigned char>(symbol[i])))
                       : io::lowered(symbol[i]);
  }
  return symbol;
}

void add_atom(const std::vector<std::string>& words, bool more_may_follow, Molecule& molecule) {
  constexpr const char* expected = "the symbol of an element and three coordinates in Angstrom";
  if (words.size() < 4 || (words.size() > 4 && !more_may_follow)) stop_at(expected, words);
  const int number = analysis::element_number(words[0]);
  if (number == 0) stop_at(expected, words);
  Eigen::Vector3d place;
  for (int k = 0; k < 3; ++k) {
    const bool is_number = io::parse_real(words[static_cast<std::size_t>(k) + 1], place(k));
    if (!is_number || !(std::abs(place(k)) < largest_place)) stop_at(expected, words);
  }
  molecule.numbers.push_back(number);
  molecule.symbols.push_back(spelt(words[0]));
  const Eigen::Index natom = molecule.x.cols();
  molecule.x.conservativeResize(3, natom + 1);
  molecule.x.col(natom) = place;
}

void check_count(long long natom) {
  if (natom >= 2 && natom <= most_atoms) return;
  io::fatal_stop(io::place(zandor::input_unit), "expected a molecule of 2 to " +
                                                    std::to_string(most_atoms) + " atoms, found " +
                                                    std::to_string(natom));
}

void read_xyz(Molecule& molecule) {
  std::vector<std::string> words;
  int natom = 0;
  if (!next_line(words) || words.size() != 1 || !io::parse_integer(words[0], natom)) {
    stop_at("the number of atoms alone in the first line", words);
  }
  check_count(natom);
  if (!next_line(words)) stop_at("a line of comment", {});
  // Extended comments may say that other columns come first.
  const std::string comment = joined(words);
  const std::size_t columns = comment.find("Properties=");
  if (columns != comment.npos &&
      !std::string_view(comment).substr(columns).starts_with("Properties=species:S:1:pos:R:3")) {
    stop_at("species and pos as the first columns", words);
  }
  for (int a = 1; a <= natom; ++a) {
    if (!next_line(words)) {
      io::fatal_stop(io::next_place(zandor::input_unit),
                     "expected " + std::to_string(natom) +
                         " atoms, found the end of the file after " + std::to_string(a - 1));
    }
    add_atom(words, true, molecule);
  }
}

void read_input(Molecule& molecule) {
  std::vector<std::string> words;
  do {
    if (!next_line(words)) {
      io::fatal_stop(io::next_place(zandor::input_unit),
                     "expected a line of charge and multiplicity, found the end of the file");
    }
  } while (words.size() != 2 || !io::parse_integer(words[0], molecule.charge) ||
           !io::parse_integer(words[1], molecule.multiplicity));
  while (next_line(words) && !words.empty()) add_atom(words, false, molecule);
  check_count(molecule.x.cols());
}

void check_distances(const std::string& name, const Molecule& molecule) {
  for (Eigen::Index a = 0; a < molecule.x.cols(); ++a) {
    for (Eigen::Index b = 0; b < a; ++b) {
      const double distance = (molecule.x.col(a) - molecule.x.col(b)).norm();
      if (distance >= nearest_atoms) continue;
      io::fatal_stop({name}, "expected atoms at places of their own, found atoms " +
                                 std::to_string(b + 1) + " and " + std::to_string(a + 1) + " " +
                                 io::shown(distance) + " Angstrom apart");
    }
  }
}

}  // namespace

Molecule read_geometry(const std::string& name) {
  const std::string ending = std::filesystem::path(name).extension();
  if (ending != ".xyz" && ending != ".com" && ending != ".gjf") {
    io::fatal_stop({name}, "expected a geometry in a file .xyz, .com or .gjf");
  }
  Molecule molecule;
  io::open_existing(zandor::input_unit, name);
  ending == ".xyz" ? read_xyz(molecule) : read_input(molecule);
  io::close(zandor::input_unit);
  check_distances(name, molecule);
  return molecule;
}

}  // namespace displace
