#include <algorithm>
#include <cstdio>
#include <map>

#include "output.hpp"

namespace ht {

namespace {

std::string figure(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.3g", value);
  return text;
}

void add_characters(const zandor::RunData& run, const analysis::PreparedDipoles& dipoles,
                    bool by_hand, std::vector<std::string>& lines) {
  const auto derived = std::count_if(run.jobs.begin() + 1, run.jobs.end(),
                                     [](const zandor::Job& job) { return !job.is_calc; });
  const analysis::CharacterChoice& choice = *dipoles.characters;
  lines.push_back(std::to_string(derived) + " of " + std::to_string(run.n6) +
                  " jobs are derived; characters of the operations other than the identity: " +
                  analysis::shown(run, choice.characters));
  lines.push_back(by_hand ? "characters given by hand"
                          : "characters found by the sum rules: residual " +
                                figure(choice.residual.absolute) + ", next best " +
                                figure(choice.next_best));
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
  std::map<std::string, int> counts;
  for (const auto& symbol : run.symbol) ++counts[io::printable(symbol.content())];
  std::string text;
  const auto take = [&](const std::string& symbol) {
    const auto found = counts.find(symbol);
    if (found == counts.end()) return;
    text += symbol + (found->second > 1 ? std::to_string(found->second) : "");
    counts.erase(found);
  };
  if (counts.contains("C")) {
    take("C");
    take("H");
  }
  while (!counts.empty()) take(std::string(counts.begin()->first));
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
    add_characters(run, dipoles, !request.dipoles.characters.empty(), lines);
  }
  if (dipoles.signs_turned) {
    lines.push_back("signs turned back: " + analysis::job_names(run, dipoles.signs.jobs));
  }
  const analysis::SumRuleResidual& residual = dipoles.residual();
  lines.push_back("sum rules of the transition dipole: residual " + figure(residual.absolute) +
                  ", relative " + figure(residual.relative) + "; print rounding allows " +
                  figure(residual.bound));
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
  lines.emplace_back(
      "overlap: with the mode of this number in the projected list of zandor-es.out");
  return lines;
}

}  // namespace ht
