#include <algorithm>
#include <numbers>
#include <numeric>
#include <string_view>

#include "export/formats.hpp"
#include "export/text_columns.hpp"

namespace exporting {

namespace {

// Records: a name, a letter for the type, and one number or an array.
class Records {
 public:
  explicit Records(io::OutputFile& out) : out_(out) {}

  void integer(std::string_view name, long long value) {
    begin(name, "I").integer(value, 17).end_line();
  }
  void real(std::string_view name, double value) {
    write_sci(begin(name, "R"), value, 27, 15).end_line();
  }
  void integers(std::string_view name, const std::vector<int>& values) {
    begin(name, "I   N=").integer(std::ssize(values), 12);
    for (std::size_t i = 0; i < values.size(); ++i) at(i, 6).integer(values[i], 12);
    out_.end_line();
  }
  void reals(std::string_view name, const std::vector<double>& values) {
    begin(name, "R   N=").integer(std::ssize(values), 12);
    for (std::size_t i = 0; i < values.size(); ++i) write_sci(at(i, 5), values[i], 16, 8);
    out_.end_line();
  }

 private:
  io::OutputFile& begin(std::string_view name, const char* type) {
    return out_.text(name).text(std::string(43 - name.size(), ' ')).text(type);
  }
  io::OutputFile& at(std::size_t i, std::size_t per_line) {
    return i % per_line == 0 ? out_.end_line() : out_;
  }

  io::OutputFile& out_;
};

void write_molecule(const Content& content, Records& records) {
  const std::vector<int>& numbers = content.atomic_numbers;
  const int electrons = std::accumulate(numbers.begin(), numbers.end(), 0);
  records.integer("Number of atoms", std::ssize(numbers));
  records.integers("Info1-9", std::vector<int>(9, 0));
  records.integer("Charge", 0);
  records.integer("Multiplicity", 1 + electrons % 2);
  records.integer("Number of electrons", electrons);
  records.integer("Number of alpha electrons", electrons - electrons / 2);
  records.integer("Number of beta electrons", electrons / 2);
  records.integer("Number of point charges in /Mol/", 0);  // by it Jmol knows the format
  records.integers("Atomic numbers", numbers);
  records.reals("Nuclear charges", {numbers.begin(), numbers.end()});
  records.reals("Current cartesian coordinates", content.geometry);
  records.reals("Real atomic weights", content.masses);
  records.real("SCF Energy", content.ground_energy.value_or(0.0));
  records.real("Total Energy", content.energy.value_or(0.0));
}

void write_forces(const Content& content, Records& records) {
  std::vector<double> triangle;
  for (std::size_t i = 1; i <= content.geometry.size(); ++i) {
    const double* const column = content.hessian.column(i);
    triangle.insert(triangle.end(), column, column + i);
  }
  if (!content.gradient.empty()) records.reals("Cartesian Gradient", content.gradient);
  records.reals("Cartesian Force Constants", triangle);
}

// One state, which is the one that was followed: sixteen values, of which energy and dipole are
// known; 48 zeros; then the derivatives of the sixteen along every coordinate.
void write_transition(const Content& content, Records& records) {
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
  records.integers("ETran scalars", scalars);
  records.integers("ETran spin", {0});
  records.reals("ETran state values", values);
}

void write_vibrations(const Content& content, Records& records) {
  const ModeList& list = content.projected;
  const std::vector<std::size_t> modes = vibrations(list);
  const std::size_t n3 = list.frequencies.size(), count = modes.size();
  // Wavenumbers (cm-1), reduced masses (u), force constants (mDyne/Angstrom) without their sign, as
  // in the program that the format comes from, and eleven kinds of values that are not known.
  std::vector<double> facts(14 * count), displacements;
  for (std::size_t i = 0; i < count; ++i) {
    facts[i] = list.frequencies[modes[i] - 1];
    facts[count + i] = list.reduced_masses[modes[i] - 1];
    // From the atomic mass constant (CODATA 2018, kg) and c in cm/s; 1 N/m is 0.01 mDyne/Angstrom.
    const double circular = 2.0 * std::numbers::pi * 29979245800.0 * facts[i];
    facts[2 * count + i] = circular * circular * facts[count + i] * 1.66053906660e-27 / 100.0;
    const double* const moves = list.displacements.column(1, modes[i]);
    displacements.insert(displacements.end(), moves, moves + n3);
  }
  records.integer("Number of Normal Modes", std::ssize(modes));
  records.integer("Vib-LE2Fix", 14);
  records.integer("Vib-NDim", std::ssize(modes));
  records.reals("Vib-AtMass", content.masses);
  records.reals("Vib-E2", facts);
  records.reals("Vib-Modes", displacements);
}

}  // namespace

void write_fchk(const Content& content, io::OutputFile& out) {
  // Kind of job, method and basis in columns of 10, 30 and 30, on which Jmol insists.
  out.text(title(content)).text("\nFreq      unknown                       ");
  out.text("unknown                       \n");
  Records records(out);
  write_molecule(content, records);
  write_forces(content, records);
  write_transition(content, records);
  write_vibrations(content, records);
}

}  // namespace exporting
