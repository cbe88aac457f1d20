// JSON, and the same values of the modes, or a spectrum, as CSV.
#include <charconv>
#include <nlohmann/json.hpp>

#include "analysis/herzberg_teller.hpp"
#include "flib/units_of_measure.hpp"
#include "ht/output.hpp"

namespace ht {

namespace {

using Json = nlohmann::ordered_json;

// null where there is no value.
Json value_or_null(const std::optional<double>& value) { return value ? Json(*value) : Json(); }

Json units() {
  return {{"frequency", "cm-1, imaginary ones negative"},
          {"dmu_dQ", "e/sqrt(m_e), Q mass-weighted with orthonormal eigenvectors"},
          {"dmu_dQ_debye", "Debye/(Angstrom sqrt(amu))"},
          {"dmu_dq", "e Bohr, length of the derivative along q = sqrt(omega) Q"},
          {"strength", "e**2 Bohr**2, |mu|**2 of the transition 0 -> 1: 1/2 |dmu/dq|**2"},
          {"thermal", "e**2 Bohr**2, strength times coth(omega / 2kT)"},
          {"share", "of the sum of the strengths, 0 to 1"},
          {"overlap", "with the modes of that number in the report's projected list, 0 to 1"},
          {"masses", "amu"},
          {"modes_of", "distances Angstrom, the first root mean square; mass_difference amu"},
          {"spectrum",
           "width (full, at half maximum), origin, wavenumber: cm-1; strength: e**2 "
           "Bohr**2 per cm-1"},
          {"reference_dipole", "e Bohr"},
          {"energy", "eV"},
          {"temperature", "K"}};
}

Json molecule(const Request& request, const zandor::RunData& run) {
  const Eigen::Map<const Eigen::VectorXd> mass(run.mass.data(), run.natom);
  Json symbols = Json::array(), changed = Json::array();
  for (const auto& symbol : run.symbol) symbols.push_back(symbol.content());
  for (const analysis::MassChange& change : request.masses) {
    changed.push_back({{change.atom > 0 ? "atom" : "element",
                        change.atom > 0 ? Json(change.atom) : Json(change.element)},
                       {"mass", change.amu}});
  }
  return {{"formula", formula(run)},
          {"symbols", symbols},
          {"masses", Eigen::VectorXd(mass / flib::electron_masses_per_amu)},
          {"masses_changed", changed}};
}

Json sum_rules(const analysis::SumRuleResidual& residual) {
  return {{"residual", residual.absolute},
          {"relative", residual.relative},
          {"rounding_bound", residual.bound},
          {"worst_ratio_to_bound", residual.worst_ratio}};
}

Json derived_jobs(const Request& request, const zandor::RunData& run,
                  const analysis::PreparedDipoles& dipoles) {
  if (!dipoles.characters) return nullptr;
  const bool by_hand = request.dipoles.characters.has_value();
  const auto& next_best = dipoles.characters->next_best;
  return {{"characters", dipoles.characters->characters},
          {"shown", analysis::shown(run, dipoles.characters->characters)},
          {"given_by_hand", by_hand},
          {"residual", dipoles.characters->residual.absolute},
          {"next_best_residual", next_best ? Json(next_best->absolute) : Json()}};
}

Json signs(const zandor::RunData& run, const analysis::PreparedDipoles& dipoles) {
  Json suspected = Json::array();
  for (const int job : dipoles.signs.jobs) {
    suspected.push_back(run.jobs[static_cast<std::size_t>(job)].sgn_name.content());
  }
  return {{"as_read_meet_sum_rules", dipoles.signs.fits_as_read},
          {"turned_files", suspected},
          {"turned_back", dipoles.signs_turned}};
}

Json mode(const Request& request, const Line& line) {
  const bool single = line.modes.size() == 1;
  Json json = {{single ? "mode" : "modes", single ? Json(line.modes.front()) : Json(line.modes)},
               {"frequency", line.frequency}};
  if (single) {
    json["dmu_dQ"] = line.dmu_dQ;
    json["dmu_dQ_debye"] = Eigen::Vector3d(line.dmu_dQ * analysis::debye_per_angstrom_root_amu);
  }
  json["dmu_dq"] = value_or_null(line.dmu_dq);
  json["strength"] = value_or_null(line.strength);
  json["share"] = value_or_null(line.share);
  if (request.kelvin) json["thermal"] = value_or_null(line.thermal);
  if (request.energy) json["oscillator_strength"] = value_or_null(line.oscillator);
  json["overlap"] = line.overlap;
  return json;
}

Json modes(const Request& request, const std::vector<Line>& lines) {
  Json json = Json::array();
  for (const Line& line : lines) json.push_back(mode(request, line));
  return json;
}

// The values of a mode in the order of its JSON.
std::string comma_row(const Json& mode) {
  std::string text;
  for (const Json& value : mode.flatten()) {
    if (!text.empty()) text += ",";
    if (!value.is_null()) text += io::shown(value.get<double>());
  }
  return text + "\n";
}

std::string spectrum_rows(const Results& results) {
  std::string text = "wavenumber_cm-1,strength_au_per_cm-1\n";
  for (std::size_t i = 0; i < results.spectrum.size(); ++i) {
    text += io::rounded(results.places[i], std::chars_format::general, 12) + "," +
            io::rounded(results.spectrum[i], std::chars_format::scientific, 9) + "\n";
  }
  return text;
}

Json totals(const Totals& totals) {
  Json json = {{"reference_square", totals.reference_square},
               {"strength", totals.strength},
               {"modes_left_out", totals.imaginary}};
  if (totals.thermal) json["thermal"] = *totals.thermal;
  if (totals.reference_oscillator) {
    json["reference_oscillator_strength"] = *totals.reference_oscillator;
    json["oscillator_strength"] = value_or_null(totals.oscillator);
    json["modes_without_oscillator_strength"] = totals.without_oscillator;
  }
  if (totals.thermal_oscillator) json["thermal_oscillator_strength"] = *totals.thermal_oscillator;
  return json;
}

Json modes_of(const Request& request, const Results& results) {
  if (!results.fit) return nullptr;
  return {{"file", *request.modes_of},
          {"distance", results.fit->distance},
          {"farthest_atom", results.fit->atom},
          {"farthest_distance", results.fit->farthest},
          {"mass_difference", results.fit->mass_difference}};
}

Json spectrum(const Request& request, const Results& results) {
  const Spectrum& asked = *request.spectrum;
  return {{"shape", asked.lorentz ? "lorentz" : "gauss"},
          {"width", asked.width},
          {"origin", asked.origin},
          {"process", request.emission ? "emission" : "absorption"},
          {"wavenumber", results.places},
          {"strength", results.spectrum}};
}

}  // namespace

std::string json(const Report& report) {
  const auto& [request, run, dipoles, results] = report;
  Json json = {{"program", io::program_name},
               {"control_file", request.control_file},
               {"units", units()},
               {"molecule", molecule(request, run)},
               {"modes_of", modes_of(request, results)},
               {"rigid_motions", results.rigid_motions},
               {"disp_sign", run.disp_sign},
               {"derivatives_take_true_steps", true},
               {"derived_jobs", derived_jobs(request, run, dipoles)},
               {"sum_rules", sum_rules(dipoles.residual())},
               {"signs", signs(run, dipoles)}};
  if (request.kelvin) json["temperature"] = *request.kelvin;
  if (request.energy) {
    json["energy"] = *request.energy;
    json["energy_kind"] = request.vertical ? "vertical" : "0-0";
    json["process"] = request.emission ? "emission" : "absorption";
  }
  json["reference_dipole"] = Eigen::Vector3d(dipoles.dipoles.col(0));
  json["modes"] = modes(request, results.lines);
  json["degenerate"] = modes(request, results.degenerate);
  json["totals"] = totals(results.totals);
  if (request.spectrum) json["spectrum"] = spectrum(request, results);
  return json.dump(1, ' ', false, Json::error_handler_t::replace) + "\n";
}

std::string csv(const Report& report) {
  const auto& [request, run, dipoles, results] = report;
  std::string text;
  for (const std::string& line : head_lines(report)) text += "# " + line + "\n";
  if (request.spectrum) return text + spectrum_rows(results);
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
  for (const Line& line : results.lines) text += comma_row(mode(request, line));
  return text;
}

}  // namespace ht
