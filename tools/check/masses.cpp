// Masses against those of the isotopes.
#include <cmath>
#include <set>

#include "analysis/isotopes.hpp"
#include "check/checks.hpp"

namespace check {

void check_masses(const JobData& jobs, const Thresholds& limits, Findings& findings) {
  const auto& geometry = jobs.sign_file(0).geometry;
  if (!geometry) {
    findings.note(place_of(jobs, 0), "not looked at: the reference's masses are missing");
    return;
  }
  double furthest = not_known;
  std::set<int> unknown;
  for (int a = 0; a < jobs.run.natom; ++a) {
    const int number = at(jobs.run.nat, a);
    const double mass = at(geometry->masses, a);
    const double nearest = analysis::nearest_isotope(number, mass);
    if (nearest == 0.0) {
      unknown.insert(number);
      continue;
    }
    furthest = std::fmax(furthest, std::fabs(mass - nearest));
    if (std::fabs(mass - nearest) <= limits.mass) continue;
    const bool average = analysis::is_average_mass(number, mass);
    findings.add(average ? Severity::note : Severity::warning,
                 sign_line(jobs, 0, at(geometry->lines, a)), {0}, "atom ", a + 1, " has the mass ",
                 mass, " amu", average ? ", the average of its element" : "",
                 "; the nearest isotope of atomic number ", number, " has ", nearest);
  }
  findings.figure("largest distance from an isotope (amu)", furthest);
  std::string numbers;
  for (const int number : unknown)
    numbers += (numbers.empty() ? "" : ", ") + std::to_string(number);
  if (!numbers.empty()) {
    findings.note(place_of(jobs, 0), "not looked at: no isotopes are known here of atomic number ",
                  numbers);
  }
}

}  // namespace check
