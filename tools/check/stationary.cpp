// Whether the reference is a stationary point of the state.
#include "check/checks.hpp"

namespace check {

void check_stationary(const JobData& jobs, const Thresholds& limits, Findings& findings) {
  const auto forces = jobs.forces(0);
  if (forces.size() == 0) {
    findings.note(place_of(jobs, 0),
                  "not looked at: no forces could be read from the reference's sign file");
    return;
  }
  Eigen::Index largest = 0;
  const double force = forces.cwiseAbs().maxCoeff(&largest);
  findings.figure("largest reference force (Hartree/Bohr)", force);
  if (force <= limits.stationary_note) return;
  const int ih = static_cast<int>(largest) + 1;
  findings.add(force > limits.stationary ? Severity::warning : Severity::note,
               sign_line(jobs, 0, at(jobs.sign_file(0).force_lines, (ih - 1) / 3)), {0},
               "the reference is not a stationary point: the force on ", coordinate_text(jobs, ih),
               " is ", rounded(forces(largest)), " Hartree/Bohr");
}

}  // namespace check
