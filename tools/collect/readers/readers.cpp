#include "collect/readers/readers.hpp"

#include <algorithm>

#include "analysis/isotopes.hpp"
#include "flib/qm_file_type.hpp"
#include "io/process.hpp"
#include "io/text.hpp"
#include "io/values.hpp"

namespace collect {

namespace {

// Those with a mark are tried first, since the library's keywords may stand in them, too.
constexpr Reader readers[] = {
    {"OpenMolcas", nullptr, "This run of MOLCAS is using the pymolcas driver", read_openmolcas},
    {"JSON", nullptr, "\"zandor-job\"", read_neutral_json},
    {"formatted checkpoint", nullptr, "Number of atoms                            I", read_fchk},
    {"NWChem", "NWCHEM", nullptr, read_nwchem},
    {"Gaussian log", "GAUSSIAN LOG", nullptr, read_gaussian_log},
};

// How many lines of a file are looked at for a mark, as many as the library looks at.
constexpr int head_lines = 1000;

const Reader* find_by_mark(const std::string& file) {
  OutputLines lines(file);
  for (int i = 0; i < head_lines && lines.next(); ++i) {
    for (const Reader& reader : readers) {
      if (reader.mark != nullptr && lines.holds(reader.mark)) return &reader;
    }
  }
  return nullptr;
}

const Reader* find_by_label(const std::string& file) {
  // That a file is of no known kind is said by who asks.
  const io::SinkScope quiet({.print_line = [](std::string_view) {}});
  io::Line label, version;
  int info = 0;
  const io::Line name(file);
  flib::qm_file_type(name.padded(), label, version, info);
  for (const Reader& reader : readers) {
    if (reader.label != nullptr && label.content() == reader.label) return &reader;
  }
  return nullptr;
}

}  // namespace

const Reader* find_reader(const std::string& file) {
  const Reader* const reader = find_by_mark(file);
  return reader != nullptr ? reader : find_by_label(file);
}

void need_atoms(const std::string& file, const Request& request, std::size_t found,
                const std::string& what) {
  if (found == static_cast<std::size_t>(request.natom)) return;
  io::fatal_stop({file}, "expected " + what + " for " + std::to_string(request.natom) +
                             " atoms, found " + std::to_string(found));
}

void need(bool found, const std::string& file, const std::string& heading) {
  if (!found) io::fatal_stop({file}, "no line holds " + heading);
}

void need_root(const std::string& file, const Request& request, int found) {
  if (request.root == 0 || request.root == found) return;
  io::fatal_stop({file}, "expected the gradient of state " + std::to_string(request.root) +
                             ", found that of state " + std::to_string(found));
}

void fill_transition(const Transition& transition, JobOutput& output) {
  output.ground_energy = transition.ground_energy;
  output.energy = transition.energy;
  output.oscillator_strength = transition.oscillator_strength;
  output.dipole = Eigen::Map<const Eigen::Vector3d>(transition.dipole.data());
  const auto mark = [&](const char* name, SignMark::Kind kind, const std::vector<double>& values) {
    if (!values.empty()) output.marks.push_back({name, kind, values});
  };
  mark("transition density", SignMark::Kind::density, transition.density);
  mark("quadrupole", SignMark::Kind::tensor, transition.quadrupole);
  mark("velocity dipole", SignMark::Kind::vector, transition.velocity);
  mark("magnetic dipole", SignMark::Kind::vector, transition.magnetic);
  if (transition.leading.row == 0) return;
  output.leading = transition.leading;
  mark("leading coefficient", SignMark::Kind::coefficient, {transition.leading.value});
}

void note_failure(const OutputLines& lines, Failure& failure) {
  if (failure) return;
  failure = io::collect([&] {
    lines.stop("expected a calculation that converged, found " +
               io::quoted(io::without_leading_blanks(lines.text())));
  });
}

void stop_at(const Failure& failure) {
  if (failure) io::fatal_stop({failure->file, failure->line}, failure->message);
}

int element_of_label(std::string_view label) {
  const auto letter = [](char c) { return io::lowered(c) >= 'a' && io::lowered(c) <= 'z'; };
  const auto end = std::find_if_not(label.begin(), label.end(), letter);
  return analysis::element_number(label.substr(0, static_cast<std::size_t>(end - label.begin())));
}

}  // namespace collect
