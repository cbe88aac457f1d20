#include <algorithm>
#include <cmath>

#include "analysis/formula.hpp"
#include "ht/output.hpp"

namespace ht {

namespace {

std::string origin_of(const analysis::CharacterChoice& choice, bool by_hand) {
  if (by_hand) return "characters given by hand";
  if (!choice.next_best) {
    return choice.others_fall_out    ? "characters: no other pattern suits the dipoles of the jobs"
           : choice.same_derivatives ? "characters: every pattern gives the same derivatives"
                                     : "characters: every pattern gives the same |dmu/dQ|**2";
  }
  return "characters found by the sum rules: residual " + io::rounded(choice.residual.absolute) +
         ", next best " + io::rounded(choice.next_best->absolute);
}

void add_characters(const zandor::RunData& run, const analysis::PreparedDipoles& dipoles,
                    bool by_hand, std::vector<std::string>& lines) {
  const auto derived = std::count_if(run.jobs.begin() + 1, run.jobs.end(),
                                     [](const zandor::Job& job) { return !job.is_calc; });
  const analysis::CharacterChoice& choice = *dipoles.characters;
  lines.push_back(std::to_string(derived) + " of " + std::to_string(run.n6) +
                  " jobs are derived; characters of the operations other than the identity: " +
                  analysis::shown(run, choice.characters));
  lines.push_back(origin_of(choice, by_hand));
}

std::string energy_line(const Request& request) {
  const char* const kind = request.emission ? "emission" : "absorption";
  const std::string energy = io::shown(*request.energy) + " eV";
  if (request.vertical) {
    return std::string("f: oscillator strength (") + kind +
           ") 2/3 E |mu|**2 with the vertical energy E = " + energy;
  }
  return std::string("f: oscillator strength (") + kind + ") 2/3 (E " +
         (request.emission ? "-" : "+") + " omega) |mu|**2 with the 0-0 energy E = " + energy;
}

// With four decimals, enough to compare geometries.
std::string rounded(double value) { return io::shown(std::round(value * 1e4) / 1e4); }

std::string fit_line(const std::string& file, const Fit& fit) {
  return "modes of " + io::printable(file) + ": geometry " + rounded(fit.distance) +
         " Angstrom (root mean square; atom " + std::to_string(fit.atom) + " " +
         rounded(fit.farthest) + ") and masses at most " + rounded(fit.mass_difference) +
         " amu from those of the jobs";
}

void add_columns(const Request& request, const Results& results, std::vector<std::string>& lines) {
  lines.emplace_back(
      "dmu/dQ: Debye/(Angstrom sqrt(amu)), Q mass-weighted, eigenvectors orthonormal; 1 au = "
      "205.06");
  lines.emplace_back(
      "|dmu/dq|: e Bohr, q = sqrt(omega) Q; 0-1: |mu|**2 of 0 -> 1, 1/2 |dmu/dq|**2, e**2 Bohr**2");
  if (request.kelvin) {
    lines.push_back("thermal: 1/2 |dmu/dq|**2 coth(omega/2kT) at " + io::shown(*request.kelvin) +
                    " K");
  }
  if (request.energy) lines.push_back(energy_line(request));
  lines.push_back(std::string("overlap: with the mode of this number") +
                  (results.fit ? ", the most alike one," : "") +
                  " in the projected list of zandor-es.out");
}

std::string area(double strength) { return io::rounded(strength) + " e**2 Bohr**2"; }

void add_spectrum(const Request& request, const Results& results, std::vector<std::string>& lines) {
  const Spectrum& spectrum = *request.spectrum;
  lines.emplace_back(
      "spectrum: Herzberg-Teller strengths 1/2 |dmu/dq|**2 alone, without |mu0|**2 and without a "
      "Franck-Condon progression");
  lines.push_back("each 0-1 transition at " + io::shown(spectrum.origin) + " cm-1 " +
                  (request.emission ? "- omega" : "+ omega") + ", a " +
                  (spectrum.lorentz ? "Lorentzian" : "Gaussian") + " of " +
                  io::shown(spectrum.width) + " cm-1 full width at half maximum");
  const double thermal = results.totals.thermal.value_or(0.0) - results.totals.reference_square;
  lines.push_back(request.kelvin
                      ? "with hot bands 1-0 on the other side at " + io::shown(*request.kelvin) +
                            " K; area of all: the thermal strengths, " + area(thermal)
                      : "area of all: the sum of the strengths, " + area(results.totals.strength));
  if (results.totals.imaginary > 0) {
    lines.push_back(std::to_string(results.totals.imaginary) + " imaginary (or zero) left out");
  }
}

}  // namespace

std::string formula(const zandor::RunData& run) {
  std::string text;
  for (const std::string& part : analysis::formula_parts(analysis::symbols(run))) text += part;
  return text;
}

std::string shown_modes(const Line& line) {
  std::string text;
  for (const int mode : line.modes) text += (text.empty() ? "" : "+") + std::to_string(mode);
  return text;
}

std::vector<std::string> head_lines(const Report& report) {
  const auto& [request, run, dipoles, results] = report;
  std::vector<std::string> lines;
  lines.push_back("Herzberg-Teller terms of " + formula(run) + ", " + std::to_string(run.natom) +
                  (run.natom == 1 ? " atom (" : " atoms (") + io::printable(request.control_file) +
                  "), " + std::to_string(results.rigid_motions) + " rigid motions taken out");
  if (results.fit) lines.push_back(fit_line(*request.modes_of, *results.fit));
  if (!request.masses.empty()) lines.push_back(analysis::describe(request.masses, run));
  if (run.disp_sign != 1) {
    lines.emplace_back(
        "disp_sign is not 1: derivatives take the true steps, those of zandor-es.out the labels");
  }
  if (dipoles.characters) {
    add_characters(run, dipoles, request.dipoles.characters.has_value(), lines);
  }
  if (dipoles.signs_turned) {
    lines.push_back("signs turned back: " + analysis::job_names(run, dipoles.signs.jobs));
  }
  lines.push_back("sum rules of the transition dipole: " +
                  analysis::residual_text(dipoles.residual()));
  if (results.totals.strength == 0.0) {
    lines.emplace_back(
        "no strength in first order: no dmu/dQ is more than the rounding of the printed dipoles");
  }
  (request.spectrum ? add_spectrum : add_columns)(request, results, lines);
  return lines;
}

}  // namespace ht
