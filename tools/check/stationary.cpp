// Whether the reference is a stationary point of the state.
#include <cmath>

#include "check/checks.hpp"

namespace check {

void check_stationary(const JobData& jobs, const Thresholds& limits, Report& report) {
  const std::vector<double>& forces = jobs.reference_forces;
  if (forces.empty()) {
    report.note(place_of(jobs, 0),
                "not looked at: no forces could be read from the reference's sign file");
    return;
  }
  std::size_t largest = 0;
  for (std::size_t k = 0; k < forces.size(); ++k) {
    if (std::fabs(forces[k]) > std::fabs(forces[largest])) largest = k;
  }
  const double force = std::fabs(forces[largest]);
  report.figure("largest reference force (Hartree/Bohr)", force);
  if (force <= limits.stationary_note) return;
  report.add(force > limits.stationary ? Severity::warning : Severity::note,
             {jobs.job(0).sgn_name.content(), jobs.sign_file(0).force_lines[largest / 3]},
             "the reference is not a stationary point: the force on " +
                 coordinate_text(jobs, static_cast<int>(largest) + 1) + " is " +
                 rounded(forces[largest]) + " Hartree/Bohr",
             0);
}

}  // namespace check
