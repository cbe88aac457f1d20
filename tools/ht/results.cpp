#include "ht/results.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "analysis/herzberg_teller.hpp"
#include "analysis/rigid_motions.hpp"
#include "analysis/vibrations.hpp"
#include "flib/units_of_measure.hpp"

namespace ht {

namespace {

// Energy of the transition that takes up or leaves a quantum, Hartree. A vertical energy is the
// mean of the band already and stays as it is.
double transition_energy(const Request& request, double omega) {
  const double energy = *request.energy / flib::electronvolts_per_hartree;
  if (request.vertical) return energy;
  return request.emission ? energy - omega : energy + omega;
}

Line line_of(const Request& request, const analysis::Vibrations& vibrations,
             const analysis::HerzbergTeller& terms, Eigen::Index k) {
  const double omega = vibrations.frequency(k);
  Line line;
  line.modes = {vibrations.report_mode[static_cast<std::size_t>(k)]};
  line.frequency = omega * flib::wavenumbers_per_au;
  line.overlap = vibrations.overlap(k);
  line.dmu_dQ = terms.dmu_dQ.col(k);
  if (!(omega > 0.0)) return line;
  line.dmu_dq = terms.dmu_dq.col(k).norm();
  line.strength = terms.strength(k);
  if (request.kelvin) {
    line.thermal = *line.strength * analysis::thermal_factor(omega, *request.kelvin);
  }
  if (request.energy) {
    const double energy = transition_energy(request, omega);
    if (energy > 0.0) line.oscillator = analysis::oscillator_strength(energy, *line.strength);
  }
  return line;
}

void add(const std::optional<double>& term, std::optional<double>& sum) {
  if (term) sum = sum.value_or(0.0) + *term;
}

Line sum_of(const std::vector<Line>& lines, const std::vector<Eigen::Index>& group) {
  Line sum;
  sum.overlap = 1.0;
  for (const Eigen::Index k : group) {
    const Line& line = lines[static_cast<std::size_t>(k)];
    sum.modes.push_back(line.modes.front());
    sum.frequency += line.frequency / static_cast<double>(group.size());
    sum.overlap = std::min(sum.overlap, line.overlap);
    add(line.strength, sum.strength);
    add(line.share, sum.share);
    add(line.thermal, sum.thermal);
    add(line.oscillator, sum.oscillator);
  }
  sum.dmu_dq = std::sqrt(2.0 * *sum.strength);
  return sum;
}

Totals totals_of(const Request& request, const Eigen::Vector3d& reference,
                 const std::vector<Line>& lines) {
  Totals totals;
  totals.reference_square = reference.squaredNorm();
  if (request.kelvin) totals.thermal = totals.reference_square;
  for (const Line& line : lines) {
    totals.strength += line.strength.value_or(0.0);
    if (!line.strength) ++totals.imaginary;
    add(line.thermal, totals.thermal);
    add(line.oscillator, totals.oscillator);
    if (request.energy && line.strength && !line.oscillator) ++totals.without_oscillator;
  }
  if (!request.energy) return totals;
  const double energy = *request.energy / flib::electronvolts_per_hartree;
  totals.reference_oscillator = analysis::oscillator_strength(energy, totals.reference_square);
  if (totals.thermal && request.vertical) {
    totals.thermal_oscillator = analysis::oscillator_strength(energy, *totals.thermal);
  }
  return totals;
}

// Of unit area, `away` from its middle, with a full width of 1 at half maximum.
double line_shape(double away, bool lorentz) {
  if (lorentz) return 2.0 / std::numbers::pi / (1.0 + 4.0 * away * away);
  const double exponent = 4.0 * std::numbers::ln2;
  return std::sqrt(exponent / std::numbers::pi) * std::exp(-exponent * away * away);
}

std::vector<double> places_of(const Spectrum& spectrum) {
  constexpr double rounding = 1e-6;  // of a step, so that high is reached
  const double steps = (spectrum.high - spectrum.low) / spectrum.step + rounding;
  std::vector<double> places;
  for (int i = 0; i <= static_cast<int>(steps); ++i) {
    places.push_back(spectrum.low + i * spectrum.step);
  }
  return places;
}

std::vector<double> broadened(const Request& request, const Results& results) {
  const Spectrum& spectrum = *request.spectrum;
  std::vector<double> values(results.places.size(), 0.0);
  const auto add_line = [&](double place, double strength) {
    for (std::size_t i = 0; i < values.size() && strength > 0.0; ++i) {
      const double away = (results.places[i] - place) / spectrum.width;
      values[i] += strength * (line_shape(away, spectrum.lorentz) / spectrum.width);
    }
  };
  for (const Line& line : results.lines) {
    if (!line.strength) continue;
    const double hot = (line.thermal.value_or(*line.strength) - *line.strength) / 2.0;
    const double quantum = request.emission ? -line.frequency : line.frequency;
    add_line(spectrum.origin + quantum, *line.strength + hot);
    add_line(spectrum.origin - quantum, hot);
  }
  return values;
}

}  // namespace

Results form_results(const Request& request, const zandor::RunData& run,
                     const analysis::PreparedDipoles& dipoles) {
  const analysis::RigidMotions rigid = analysis::rigid_motions(run);
  const analysis::Vibrations vibrations = analysis::exact_vibrations(run, rigid);
  const analysis::HerzbergTeller terms =
      analysis::herzberg_teller(run, dipoles.gradient, {vibrations.frequency, vibrations.modes});
  Results results;
  results.rigid_motions = rigid.rank;
  for (Eigen::Index k = 0; k < vibrations.frequency.size(); ++k) {
    results.lines.push_back(line_of(request, vibrations, terms, k));
  }
  results.totals = totals_of(request, dipoles.dipoles.col(0), results.lines);
  for (Line& line : results.lines) {
    if (line.strength && *line.strength > 0.0) {
      line.share = *line.strength / results.totals.strength;
    }
  }
  for (const auto& group : analysis::degenerate_groups(vibrations)) {
    results.degenerate.push_back(sum_of(results.lines, group));
  }
  if (request.spectrum) {
    results.places = places_of(*request.spectrum);
    results.spectrum = broadened(request, results);
  }
  return results;
}

}  // namespace ht
