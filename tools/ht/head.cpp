#include <algorithm>
#include <charconv>

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
  lines.push_back(
      io::joined(derived, " of ", run.n6,
                 " jobs are derived; characters of the operations other than the identity: ",
                 analysis::shown(run, choice.characters)));
  lines.push_back(origin_of(choice, by_hand));
}

std::string energy_line(const Request& request) {
  const char* const kind = request.emission ? "emission" : "absorption";
  const char* const of_mode = request.emission ? "(E - omega)" : "(E + omega)";
  return io::joined("f: oscillator strength (", kind, ") 2/3 ", request.vertical ? "E" : of_mode,
                    " |mu|**2 with the ", request.vertical ? "vertical" : "0-0",
                    " energy E = ", *request.energy, " eV");
}

std::string fit_line(const std::string& file, const Fit& fit) {
  const auto shown = [](double value) { return io::rounded(value, std::chars_format::fixed, 4); };
  return io::joined("modes of ", io::printable(file), ": geometry ", shown(fit.distance),
                    " Angstrom (root mean square; atom ", fit.atom, " ", shown(fit.farthest),
                    ") and masses at most ", shown(fit.mass_difference),
                    " amu from those of the jobs");
}

void add_columns(const Request& request, const Results& results, std::vector<std::string>& lines) {
  lines.emplace_back(
      "dmu/dQ: Debye/(Angstrom sqrt(amu)), Q mass-weighted, eigenvectors orthonormal; 1 au = "
      "205.06");
  lines.emplace_back(
      "|dmu/dq|: e Bohr, q = sqrt(omega) Q; 0-1: |mu|**2 of 0 -> 1, 1/2 |dmu/dq|**2, e**2 Bohr**2");
  if (request.kelvin) {
    lines.push_back(
        io::joined("thermal: 1/2 |dmu/dq|**2 coth(omega/2kT) at ", *request.kelvin, " K"));
  }
  if (request.energy) lines.push_back(energy_line(request));
  lines.push_back(io::joined("overlap: with the mode of this number",
                             results.fit ? ", the most alike one," : "",
                             " in the projected list of zandor-es.out"));
}

void add_spectrum(const Request& request, const Results& results, std::vector<std::string>& lines) {
  const Spectrum& spectrum = *request.spectrum;
  const Totals& totals = results.totals;
  lines.emplace_back(
      "spectrum: Herzberg-Teller strengths 1/2 |dmu/dq|**2 alone, without |mu0|**2 and without a "
      "Franck-Condon progression");
  lines.push_back(io::joined("each 0-1 transition at ", spectrum.origin, " cm-1 ",
                             request.emission ? "- omega" : "+ omega", ", a ",
                             spectrum.lorentz ? "Lorentzian" : "Gaussian", " of ", spectrum.width,
                             " cm-1 full width at half maximum"));
  const std::string area =
      request.kelvin ? io::joined("with hot bands 1-0 on the other side at ", *request.kelvin,
                                  " K; area of all: the thermal strengths, ",
                                  io::rounded(*totals.thermal - totals.reference_square))
                     : "area of all: the sum of the strengths, " + io::rounded(totals.strength);
  lines.push_back(area + " e**2 Bohr**2");
  if (totals.imaginary > 0) {
    lines.push_back(io::joined(totals.imaginary, " imaginary (or zero) left out"));
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
  lines.push_back(io::joined("Herzberg-Teller terms of ", formula(run), ", ", run.natom,
                             run.natom == 1 ? " atom (" : " atoms (",
                             io::printable(request.control_file), "), ", results.rigid_motions,
                             " rigid motions taken out"));
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
