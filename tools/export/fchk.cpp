#include <algorithm>
#include <numbers>
#include <numeric>
#include <string_view>

#include "export/formats.hpp"
#include "export/text_columns.hpp"

namespace exporting {

namespace {

// Begins a record: a name and a letter for the type of its number or array.
io::OutputFile& begin(io::OutputFile& out, std::string_view name, const char* type) {
  return out.text(name).text(std::string(43 - name.size(), ' ')).text(type);
}

void write(io::OutputFile& out, std::string_view name, int value) {
  begin(out, name, "I").integer(value, 17).end_line();
}

void write(io::OutputFile& out, std::string_view name, double value) {
  write_sci(begin(out, name, "R"), value, 27, 15).end_line();
}

void write(io::OutputFile& out, std::string_view name, const std::vector<int>& values) {
  begin(out, name, "I   N=").integer(std::ssize(values), 12);
  for (std::size_t i = 0; i < values.size(); ++i) {
    (i % 6 == 0 ? out.end_line() : out).integer(values[i], 12);
  }
  out.end_line();
}

void write(io::OutputFile& out, std::string_view name, const std::vector<double>& values) {
  begin(out, name, "R   N=").integer(std::ssize(values), 12);
  for (std::size_t i = 0; i < values.size(); ++i) {
    write_sci(i % 5 == 0 ? out.end_line() : out, values[i], 16, 8);
  }
  out.end_line();
}

void write_molecule(const Content& content, io::OutputFile& out) {
  const std::vector<int>& numbers = content.atomic_numbers;
  const int electrons = std::accumulate(numbers.begin(), numbers.end(), 0);
  write(out, "Number of atoms", static_cast<int>(numbers.size()));
  write(out, "Info1-9", std::vector<int>(9, 0));
  write(out, "Charge", 0);
  write(out, "Multiplicity", 1 + electrons % 2);
  write(out, "Number of electrons", electrons);
  write(out, "Number of alpha electrons", electrons - electrons / 2);
  write(out, "Number of beta electrons", electrons / 2);
  write(out, "Number of point charges in /Mol/", 0);  // by it Jmol knows the format
  write(out, "Atomic numbers", numbers);
  write(out, "Nuclear charges", std::vector<double>(numbers.begin(), numbers.end()));
  write(out, "Current cartesian coordinates", content.geometry);
  write(out, "Real atomic weights", content.masses);
  write(out, "SCF Energy", content.ground_energy.value_or(0.0));
  write(out, "Total Energy", content.energy.value_or(0.0));
}

void write_forces(const Content& content, io::OutputFile& out) {
  std::vector<double> triangle;
  for (std::size_t i = 1; i <= content.geometry.size(); ++i) {
    const double* const column = content.hessian.column(i);
    triangle.insert(triangle.end(), column, column + i);
  }
  if (!content.gradient.empty()) write(out, "Cartesian Gradient", content.gradient);
  write(out, "Cartesian Force Constants", triangle);
}

// One state, which is the one that was followed: sixteen values, of which energy and dipole are
// known; 48 zeros; then the derivatives of the sixteen along every coordinate.
void write_transition(const Content& content, io::OutputFile& out) {
  std::vector<int> scalars(20, 0);
  scalars[0] = scalars[4] = 1;
  scalars[1] = 16;
  const std::size_t derivatives = content.dipole_gradient.size() / 3;
  std::vector<double> values(16 + 48 + 16 * derivatives, 0.0);
  values[0] = content.energy.value_or(0.0);
  std::copy_n(content.dipole.begin(), 3, &values[1]);
  for (std::size_t i = 0; i < derivatives; ++i) {
    double* const state = &values[64 + 16 * i];
    if (!content.gradient.empty()) state[0] = content.gradient[i];
    std::copy_n(&content.dipole_gradient[3 * i], 3, state + 1);
  }
  write(out, "ETran scalars", scalars);
  write(out, "ETran spin", std::vector<int>{0});
  write(out, "ETran state values", values);
}

void write_vibrations(const Content& content, io::OutputFile& out) {
  const ModeList list = vibrations(content.projected);
  const std::size_t count = list.frequencies.size();
  // Wavenumbers (cm-1), reduced masses (u), force constants (mDyne/Angstrom) without their sign, as
  // in the program that the format comes from, and eleven kinds of values that are not known.
  std::vector<double> facts = list.frequencies;
  facts.insert(facts.end(), list.reduced_masses.begin(), list.reduced_masses.end());
  facts.resize(14 * count);
  for (std::size_t i = 0; i < count; ++i) {
    // From the atomic mass constant (CODATA 2018, kg) and c in cm/s; 1 N/m is 0.01 mDyne/Angstrom.
    const double circular = 2.0 * std::numbers::pi * 29979245800.0 * facts[i];
    facts[2 * count + i] = circular * circular * facts[count + i] * 1.66053906660e-27 / 100.0;
  }
  write(out, "Number of Normal Modes", static_cast<int>(count));
  write(out, "Vib-LE2Fix", 14);
  write(out, "Vib-NDim", static_cast<int>(count));
  write(out, "Vib-AtMass", content.masses);
  write(out, "Vib-E2", facts);
  const double* const moves = list.displacements.data();
  write(out, "Vib-Modes", std::vector(moves, moves + list.displacements.size()));
}

}  // namespace

void write_fchk(const Content& content, io::OutputFile& out) {
  // Kind of job, method and basis in columns of 10, 30 and 30, on which Jmol insists.
  out.text(title(content)).text("\nFreq      unknown                       ");
  out.text("unknown                       \n");
  write_molecule(content, out);
  write_forces(content, out);
  write_transition(content, out);
  write_vibrations(content, out);
}

}  // namespace exporting
