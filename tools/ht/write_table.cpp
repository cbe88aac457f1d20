#include <charconv>

#include "analysis/herzberg_teller.hpp"
#include "ht/output.hpp"

namespace ht {

namespace {

std::string right(const std::string& text, std::size_t width) {
  return text.size() < width ? std::string(width - text.size(), ' ') + text : text;
}

// What rounds to zero is printed without a sign.
std::string fixed(double value, std::size_t width, int decimals) {
  const std::string text = io::rounded(value, std::chars_format::fixed, decimals);
  const bool zero = text.find_first_of("123456789in") == text.npos;  // nor inf or nan
  return right(zero && text.starts_with('-') ? text.substr(1) : text, width);
}

std::string sci_or_dash(const std::optional<double>& value) {
  return right(value ? io::rounded(*value, std::chars_format::scientific, 4) : "-", 12);
}

std::string caption(const Request& request) {
  std::string text = right("mode", 8) + right("cm-1", 11) + right("dmu/dQ x", 11) + right("y", 11) +
                     right("z", 11) + right("|dmu/dq|", 12) + right("0-1", 12) + right("share", 9);
  if (request.kelvin) text += right("thermal", 12);
  if (request.energy) text += right("f", 12);
  return text + right("overlap", 9) + "\n";
}

std::string table_row(const Request& request, const Line& line) {
  std::string text = right(shown_modes(line), 8) + fixed(line.frequency, 11, 3);
  const bool single = line.modes.size() == 1;
  for (const double component : line.dmu_dQ) {
    text +=
        single ? fixed(component * analysis::debye_per_angstrom_root_amu, 11, 5) : right("", 11);
  }
  text += line.dmu_dq ? fixed(*line.dmu_dq, 12, 7) : right("-", 12);
  text += sci_or_dash(line.strength);
  text += line.share ? fixed(100.0 * *line.share, 8, 2) + "%" : right("-", 9);
  if (request.kelvin) text += sci_or_dash(line.thermal);
  if (request.energy) text += sci_or_dash(line.oscillator);
  return text + fixed(line.overlap, 9, 4) + "\n";
}

std::string total(std::string what, const std::optional<double>& value) {
  what.resize(46, ' ');
  return " " + what + sci_or_dash(value) + "\n";
}

std::string totals_text(const Totals& totals) {
  std::string text = total("|mu0|**2 of the reference", totals.reference_square) +
                     total("sum of the 0-1 |mu|**2", totals.strength);
  if (totals.thermal) text += total("thermal <|mu|**2>, |mu0|**2 included", totals.thermal);
  if (totals.reference_oscillator) {
    text += total("f of the dipole of the reference", totals.reference_oscillator) +
            total("f of all modes together", totals.oscillator);
  }
  if (totals.thermal_oscillator) text += total("f of <|mu|**2>", totals.thermal_oscillator);
  if (totals.imaginary > 0) {
    text += " " + std::to_string(totals.imaginary) +
            " imaginary (or zero): dmu/dQ only, left out of every sum\n";
  }
  if (totals.without_oscillator > 0) {
    text += " " + std::to_string(totals.without_oscillator) +
            " with E - omega not above zero: no f, left out of the sum of f\n";
  }
  return text;
}

}  // namespace

std::string table(const Report& report) {
  const auto& [request, run, dipoles, results] = report;
  std::string text;
  for (const std::string& line : head_lines(report)) text += line + "\n";
  text += "\n" + caption(request);
  for (const Line& line : results.lines) text += table_row(request, line);
  if (!results.degenerate.empty()) text += "\n degenerate modes together\n";
  for (const Line& line : results.degenerate) text += table_row(request, line);
  return text + "\n" + totals_text(results.totals);
}

}  // namespace ht
