#include "analysis/job_directory.hpp"

#include <cmath>

#include "flib/units_of_measure.hpp"
#include "io/values.hpp"
#include "zandor/phases.hpp"

namespace analysis {

namespace {

[[noreturn]] void stop_at_option(const char* option, const char* expected, std::string_view text) {
  io::fatal_stop({}, "expected ", option, " ", expected, ", found ", io::quoted(text));
}

// Splits "KEY=MASS".
std::string split(const char* option, const char* expected, std::string_view text, double& amu) {
  const std::size_t equals = text.find('=');
  if (equals == 0 || equals == text.npos || !io::parse_real(text.substr(equals + 1), amu) ||
      !std::isfinite(amu) || !(amu > 0.0)) {
    stop_at_option(option, expected, text);
  }
  return std::string(text.substr(0, equals));
}

std::string_view symbol_of(const zandor::RunData& run, int atom) {
  return run.symbol[static_cast<std::size_t>(atom - 1)].content();
}

bool concerns(const MassChange& change, const zandor::RunData& run, int atom) {
  return change.atom == 0 ? io::equal_in_any_case(change.element, symbol_of(run, atom))
                          : change.atom == atom;
}

}  // namespace

MassChange parse_mass(const std::string& text) {
  constexpr const char* expected = "ATOM=MASS with an atom number and a mass (amu) above 0";
  MassChange change;
  const std::string atom = split("--mass", expected, text, change.amu);
  if (!io::parse_integer(atom, change.atom) || change.atom < 1)
    stop_at_option("--mass", expected, text);
  return change;
}

MassChange parse_isotope(const std::string& text) {
  MassChange change;
  change.element =
      split("--isotope", "SYMBOL=MASS with an element and a mass (amu) above 0", text, change.amu);
  return change;
}

std::vector<MassChange> parse_mass_changes(const std::vector<std::string>& isotopes,
                                           const std::vector<std::string>& masses) {
  std::vector<MassChange> changes;
  changes.reserve(isotopes.size() + masses.size());
  for (const std::string& text : isotopes) changes.push_back(parse_isotope(text));
  for (const std::string& text : masses) changes.push_back(parse_mass(text));
  return changes;
}

void change_masses(const std::vector<MassChange>& changes, zandor::RunData& run) {
  for (const MassChange& change : changes) {
    bool found = false;
    for (int a = 1; a <= run.natom; ++a) {
      if (!concerns(change, run, a)) continue;
      found = true;
      run.mass(a) = change.amu * flib::electron_masses_per_amu;
      for (int k = 1; k <= 3; ++k) run.sqtmass(3 * (a - 1) + k) = std::sqrt(run.mass(a));
    }
    if (found) continue;
    if (change.atom > 0) {
      io::fatal_stop({}, "expected an atom within 1..", run.natom, " behind --mass, found ",
                     change.atom);
    }
    io::fatal_stop("expected an element of the molecule behind --isotope, found " +
                   io::quoted(change.element));
  }
}

std::string describe(const std::vector<MassChange>& changes, const zandor::RunData& run) {
  std::string text;
  for (const MassChange& change : changes) {
    text += text.empty() ? "masses changed: " : ", ";
    text += change.atom == 0 ? "all " + io::printable(change.element)
                             : "atom " + std::to_string(change.atom) + " (" +
                                   io::printable(symbol_of(run, change.atom)) + ")";
    text += " " + io::shown(change.amu);
  }
  return text;
}

zandor::RunData load_job_directory(const std::string& control_file,
                                   const std::vector<MassChange>& changes) {
  zandor::RunData run;
  // Standard output belongs to the document that comes of it. A log of an unknown kind is in order.
  const io::SinkScope sink({.print_line = [](std::string_view line) { io::report({}, line); }});
  const bool writes_results = false;
  zandor::read_phases(io::Line(control_file), run, writes_results);
  change_masses(changes, run);
  zandor::analyse_phases(run);
  return run;
}

}  // namespace analysis
