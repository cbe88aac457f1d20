#include "export/fchk.hpp"

#include <numbers>
#include <numeric>
#include <span>
#include <string_view>

#include "export/text_columns.hpp"

namespace exporting {

namespace {

// Records, each a name, a letter for its type, and one number or an array.
class Records {
 public:
  explicit Records(io::OutputFile& out) : out_(out) {}

  void integer(std::string_view name, long long value) {
    begin(name, "I").integer(value, 17).end_line();
  }
  void real(std::string_view name, double value) { begin(name, "R").sci(value, 27, 15).end_line(); }
  void integers(std::string_view name, std::span<const int> values) {
    begin_array(name, "I", values.size());
    for (const int value : values) next(6).integer(value, 12);
    end_array();
  }
  void reals(std::string_view name, std::span<const double> values) {
    begin_reals(name, values.size());
    add(values);
    end_array();
  }
  // An array in pieces.
  void begin_reals(std::string_view name, std::size_t count) { begin_array(name, "R", count); }
  void add(std::span<const double> values) {
    for (const double value : values) next(5).sci(with_short_exponent(value), 16, 8);
  }
  void add_zeros(std::size_t count) {
    for (; count > 0; --count) next(5).sci(0.0, 16, 8);
  }
  void end_array() { out_.end_line(); }

 private:
  io::OutputFile& begin(std::string_view name, const char* type) {
    return out_.text(name).text(std::string(43 - name.size(), ' ')).text(type);
  }
  void begin_array(std::string_view name, const char* type, std::size_t count) {
    begin(name, type).text("   N=").integer(static_cast<long long>(count), 12);
    column_ = 0;
  }
  io::OutputFile& next(int per_line) {
    if (column_++ % per_line == 0) out_.end_line();
    return out_;
  }

  io::OutputFile& out_;
  int column_ = 0;
};

void write_molecule(const Content& content, Records& records) {
  const std::vector<int>& numbers = content.atomic_numbers;
  const int electrons = std::accumulate(numbers.begin(), numbers.end(), 0);
  records.integer("Number of atoms", static_cast<long long>(numbers.size()));
  records.integers("Info1-9", std::vector<int>(9, 0));
  records.integer("Charge", 0);
  records.integer("Multiplicity", 1 + electrons % 2);
  records.integer("Number of electrons", electrons);
  records.integer("Number of alpha electrons", electrons - electrons / 2);
  records.integer("Number of beta electrons", electrons / 2);
  records.integer("Number of point charges in /Mol/", 0);  // by it Jmol knows the format
  records.integers("Atomic numbers", numbers);
  records.reals("Nuclear charges", std::vector<double>(numbers.begin(), numbers.end()));
  records.reals("Current cartesian coordinates", content.geometry);
  records.reals("Real atomic weights", content.masses);
  records.real("SCF Energy", content.ground_energy.value_or(0.0));
  records.real("Total Energy", content.energy.value_or(0.0));
}

void write_forces(const Content& content, Records& records) {
  const std::size_t n3 = content.geometry.size();
  if (!content.gradient.empty()) records.reals("Cartesian Gradient", content.gradient);
  records.begin_reals("Cartesian Force Constants", n3 * (n3 + 1) / 2);
  for (std::size_t i = 1; i <= n3; ++i) records.add({content.hessian.column(i), i});
  records.end_array();
}

// Sixteen values a state: energy, dipole, dipole in the velocity form, magnetic dipole, and more
// that are not known; 48 zeros; then the derivatives of the sixteen along every coordinate.
void write_transition(const Content& content, Records& records) {
  const auto add_state = [&](double energy, std::span<const double> dipole) {
    records.add({&energy, 1});
    records.add(dipole);
    records.add_zeros(12);
  };
  std::vector<int> scalars(20, 0);
  scalars[0] = scalars[4] = 1;  // the number of states, and the one that was followed
  scalars[1] = 16;
  records.integers("ETran scalars", scalars);
  records.integers("ETran spin", std::vector<int>{0});
  const std::size_t derivatives = content.dipole_gradient.size() / 3;
  records.begin_reals("ETran state values", 16 + 48 + 16 * derivatives);
  add_state(content.energy.value_or(0.0), content.dipole);
  records.add_zeros(48);
  for (std::size_t i = 0; i < derivatives; ++i) {
    add_state(content.gradient.empty() ? 0.0 : content.gradient[i],
              {&content.dipole_gradient[3 * i], 3});
  }
  records.end_array();
}

// Force constants of modes have no sign, as in the program that the format comes from.
void write_vibrations(const Content& content, Records& records) {
  const ModeList& list = content.projected;
  const std::vector<std::size_t> modes = vibrations(list);
  const std::size_t n3 = list.frequencies.size();
  std::vector<double> facts(14 * modes.size());
  for (std::size_t i = 0; i < modes.size(); ++i) {
    const double frequency = list.frequencies[modes[i] - 1];
    const double mass = list.reduced_masses[modes[i] - 1];
    // (2 pi c nu)**2 m: the atomic mass constant (CODATA 2018) in kg, c in cm/s; 1 N/m is 0.01
    // mDyne/Angstrom.
    const double circular = 2.0 * std::numbers::pi * 29979245800.0 * frequency;
    facts[i] = frequency;
    facts[modes.size() + i] = mass;
    facts[2 * modes.size() + i] = circular * circular * mass * 1.66053906660e-27 / 100.0;
  }
  const auto count = static_cast<long long>(modes.size());
  records.integer("Number of Normal Modes", count);
  records.integer("Vib-LE2Fix", 14);
  records.integer("Vib-NDim", count);
  records.reals("Vib-AtMass", content.masses);
  records.reals("Vib-E2", facts);
  records.begin_reals("Vib-Modes", n3 * modes.size());
  for (const std::size_t k : modes) records.add({list.displacements.column(1, k), n3});
  records.end_array();
}

}  // namespace

void write_fchk(const Content& content, io::OutputFile& out) {
  // Kind of job, method and basis in columns of 10, 30 and 30, on which Jmol insists.
  out.text(title(content)).text("\nFreq      unknown                       unknown                       \n");
  Records records(out);
  write_molecule(content, records);
  write_forces(content, records);
  write_transition(content, records);
  write_vibrations(content, records);
}

}  // namespace exporting
