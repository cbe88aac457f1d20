#include <algorithm>

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
  return "characters found by the sum rules: residual " +
         analysis::figure(choice.residual.absolute) + ", next best " +
         analysis::figure(choice.next_best->absolute);
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

std::vector<std::string> head_lines(const Request& request, const zandor::RunData& run,
                                    const analysis::PreparedDipoles& dipoles,
                                    const Results& results) {
  std::vector<std::string> lines;
  lines.push_back("Herzberg-Teller terms of " + formula(run) + ", " + std::to_string(run.natom) +
                  (run.natom == 1 ? " atom (" : " atoms (") + io::printable(request.control_file) +
                  "), " + std::to_string(results.rigid_motions) + " rigid motions taken out");
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
  if (results.totals.strength == 0.0) {
    lines.emplace_back(
        "no strength in first order: no dmu/dQ is more than the rounding of the printed dipoles");
  }
  lines.emplace_back(
      "overlap: with the mode of this number in the projected list of zandor-es.out");
  return lines;
}

}  // namespace ht
