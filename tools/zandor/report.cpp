#include "zandor/report.hpp"

#include <string>

#include "flib/units_of_measure.hpp"
#include "flib/write_xyz_vib.hpp"
#include "io/units.hpp"
#include "zandor/result_names.hpp"

namespace zandor {

namespace {

using flib::angstrom_per_bohr;
using flib::debye_per_au;
using io::OutputFile;

constexpr int values_per_line = 10;
constexpr const char* step_labels[] = {"-dx", "+dx", "-dy", "+dy", "-dz", "+dz"};
constexpr const char* axis_labels[] = {"dx", "dy", "dz"};

void write_unit_conversion(OutputFile& out) {
  out.text(" Unit conversion:\n");
  out.text(" 1 au        = ").fixed(debye_per_au, 15, 7).text(" Debye\n");
  out.text(" 1 au (Bohr) = ").fixed(angstrom_per_bohr, 15, 7).text(" Angstrom\n");
  out.text(" 1 au        = ").fixed(flib::debye_per_angstrom_per_au, 15, 7);
  out.text(" Debye / Angstrom\n");
}

void write_geometry(OutputFile& out, const RunData& run) {
  out.text(" Coordinate:\n");
  out.text(" ").text("n", 8).text("nat", 8).text("  ").text("mass", 13).text("  ");
  out.text("x(A)", 13).text("y(A)", 13).text("z(A)", 13).end_line();
  for (int i = 1; i <= run.natom; ++i) {
    out.text(" ").integer(i, 8).integer(run.nat[static_cast<std::size_t>(i - 1)], 8).text("  ");
    out.fixed(run.mass(i) / flib::electron_masses_per_amu, 13, 8).text("  ");
    for (int k = 1; k <= 3; ++k) out.fixed(run.xa(k, i), 13, 8);
    out.end_line();
  }
}

void write_frequencies(OutputFile& out, const flib::ArrayView<const double, 1>& freq, int n3) {
  for (int i = 1; i <= n3; ++i) {
    out.integer(i, 10).fixed(freq(i) * flib::wavenumbers_per_au, 15, 8).end_line();
  }
}

std::string lines_of(const flib::ArrayView<const double, 2>& matrix, int n3) {
  std::string lines;
  lines.reserve(16 * matrix.size() + 16 * static_cast<std::size_t>(n3));
  char field[io::widest_field];
  for (int i = 1; i <= n3; ++i) {
    lines.append(" line").append(field, io::int_field(field, i, 6)).append("\n");
    const double* const column = matrix.column(i);
    for (int j = 0; j < n3; ++j) {
      lines.append(field, io::sci_field(field, column[j], 15, 6));
      if ((j + 1) % values_per_line == 0 || j + 1 == n3) lines += '\n';
    }
  }
  return lines;
}

void write_dipoles(OutputFile& out, const RunData& run) {
  out.text(" Transition dipole moment from zandor calculation (Debye)\n");
  for (int l = 1; l <= run.n6; ++l) {
    const int i = (l - 1) / 6 + 1;
    out.text(" Atom ").integer(i, 6);
    out.text(run.symbol[static_cast<std::size_t>(i - 1)].padded(), 4).text(" ");
    out.text(step_labels[(l - 1) % 6]).text("    ");
    for (int k = 1; k <= 3; ++k) out.sci(run.tdip(k, l) * debye_per_au, 15, 7);
    out.end_line();
  }
}

// The value in the unit of its section.
using Conversion = double (*)(double au);

double debye_per_angstrom(double au) { return au / angstrom_per_bohr * debye_per_au; }
double atomic_unit(double au) { return au; }

// The reference dipole on the origin line takes the factor of the derivatives, deliberately.
void write_dipole_derivatives(OutputFile& out, const RunData& run, Conversion converted) {
  out.text(" Origin ").integer(0, 6).text("0 ", 4).text(" 00    ");
  for (const double component : run.dipole0) out.sci(converted(component), 15, 7);
  out.end_line();
  for (int i = 1; i <= run.natom; ++i) {
    for (int j = 1; j <= 3; ++j) {
      out.text(" Atom   ").integer(i, 6);
      out.text(run.symbol[static_cast<std::size_t>(i - 1)].padded(), 4).text(" ");
      out.text(axis_labels[j - 1]).text("    ");
      for (int k = 1; k <= 3; ++k) out.sci(converted(run.tddip(k, j, i)), 15, 7);
      out.end_line();
    }
  }
}

void write_transition_dipoles(OutputFile& out, const RunData& run) {
  write_dipoles(out, run);
  out.text("\n Transition dipole moment derivative (Debye / Angstrom)\n");
  write_dipole_derivatives(out, run, debye_per_angstrom);
  out.text("\n Transition dipole moment derivative (Atomic unit)\n");
  write_dipole_derivatives(out, run, atomic_unit);
}

}  // namespace

void write_report(const RunData& run) {
  io::open_replaced(output_unit, report_name);
  OutputFile& out = io::output(output_unit);
  out.text(" NUMERICAL FREQUENCY\n VERSION 1.0\n");
  out.text(" NAtoms:").integer(run.natom, 10).end_line();
  // Later tools know this title as it stands, misspelt and without the closing parenthesis.
  out.text(" Diplacement (dx in Angstrom:").fixed(run.dx * angstrom_per_bohr, 11, 6).end_line();
  if (!run.symm) write_unit_conversion(out);
  write_geometry(out, run);
  out.text(" Unprojected Frequency (cm-1)\n");
  write_frequencies(out, run.freq, run.n3);
  // The same matrix stands under both titles, deliberately.
  const std::string force_constants = lines_of(run.hess, run.n3);
  out.text(" Unprojected Force Constant Matrix\n").text(force_constants);
  out.text(" Projected Frequency (cm-1)\n");
  write_frequencies(out, run.freqp, run.n3);
  out.text(" Projected Force Constant Matrix\n").text(force_constants);
  out.end_line();
  if (!run.symm) write_transition_dipoles(out, run);
  io::close(output_unit);
}

void write_animations(const RunData& run) {
  flib::write_xyz_vib(animation_name, run.natom, run.symbol.data(), run.x.data(), run.disp.data(),
                      run.freq.data());
  flib::write_xyz_vib(projected_animation_name, run.natom, run.symbol.data(), run.x.data(),
                      run.dispp.data(), run.freqp.data());
}

void write_results(const RunData& run) {
  io::begin_results();
  write_animations(run);
  write_report(run);
  if (const long long count = io::overfull_fields(); count > 0) {
    io::warn({}, io::joined(count, " numbers are too wide for the columns of the results, where ",
                            "asterisks stand for them"));
  }
  io::put_results_in_place();
}

}  // namespace zandor
