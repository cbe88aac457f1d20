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

}  // namespace

std::string csv(const Request& request, const zandor::RunData& run,
                const analysis::PreparedDipoles& dipoles, const Results& results) {
  std::string text;
  for (const std::string& line : head_lines(request, run, dipoles, results)) {
    text += "# " + line + "\n";
  }
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
