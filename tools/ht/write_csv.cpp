#include <cstdio>

#include "analysis/herzberg_teller.hpp"
#include "ht/output.hpp"

namespace ht {

namespace {

std::string cell(const std::optional<double>& value) {
  return "," + (value ? io::shown(*value) : std::string());
}

std::string comma_row(const Request& request, const Line& line) {
  std::string text = shown_modes(line) + cell(line.frequency);
  for (const double component : line.dmu_dQ) text += cell(component);
  for (const double component : line.dmu_dQ) {
    text += cell(component * analysis::debye_per_angstrom_root_amu);
  }
  text += cell(line.dmu_dq) + cell(line.strength) + cell(line.share);
  if (request.kelvin) text += cell(line.thermal);
  if (request.energy) text += cell(line.oscillator);
  return text + cell(line.overlap) + "\n";
}

std::string spectrum_rows(const Spectrum& spectrum, const std::vector<double>& values) {
  std::string text = "wavenumber_cm-1,strength_au_per_cm-1\n";
  for (std::size_t i = 0; i < values.size(); ++i) {
    char row[80];
    std::snprintf(row, sizeof row, "%.12g,%.9e\n", place_of(spectrum, i), values[i]);
    text += row;
  }
  return text;
}

}  // namespace

std::string csv(const Report& report) {
  const auto& [request, run, dipoles, results] = report;
  std::string text;
  for (const std::string& line : head_lines(report)) text += "# " + line + "\n";
  if (request.spectrum) return text + spectrum_rows(*request.spectrum, results.spectrum);
  // Sums are no rows: whoever adds up a column must not count them twice.
  for (const Line& sum : results.degenerate) {
    text += "# degenerate modes " + shown_modes(sum) + " together: |dmu/dq| " +
            io::shown(*sum.dmu_dq) + ", 0-1 " + io::shown(*sum.strength) + "\n";
  }
  text +=
      "mode,frequency_cm-1,dmu_dQ_x_au,dmu_dQ_y_au,dmu_dQ_z_au,dmu_dQ_x,dmu_dQ_y,dmu_dQ_z,"
      "dmu_dq_au,strength_au,share";
  if (request.kelvin) text += ",thermal_au";
  if (request.energy) text += ",oscillator_strength";
  text += ",overlap\n";
  for (const Line& line : results.lines) text += comma_row(request, line);
  return text;
}

}  // namespace ht
