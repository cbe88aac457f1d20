// Frequencies that are no more than the noise of the eigenvalues. The analysis adds 100000.0 to the
// diagonal, so that eigenvalues come in quanta of 2**-36 = 1.46e-11; the solver's own error is some
// 30 of them.
#include <cmath>

#include "analysis/rigid_motions.hpp"
#include "check/checks.hpp"
#include "check/support/projected_modes.hpp"

namespace check {

void check_noise(const JobData& jobs, const Thresholds& limits, Report& report) {
  if (!jobs.no_modes.empty()) {
    report.note({jobs.run.com_name.content()}, "not looked at: " + jobs.no_modes);
    return;
  }
  int below = 0;
  for (int i = 1; i <= jobs.run.n3; ++i) {
    below += std::fabs(jobs.run.evalp(i)) < limits.noise ? 1 : 0;
  }
  const int rigid = analysis::rigid_motions(projection_frame(jobs)).rank;
  const double floor = wavenumber(limits.noise);
  report.figure("noise floor (cm-1)", floor);
  report.figure("projected frequencies below it", below);
  if (below <= rigid) return;
  report.note({zandor::job_list_name},
              std::to_string(below) + " projected frequencies below " + rounded(floor) +
                  " cm-1, the noise of the eigenvalues, where " + std::to_string(rigid) +
                  " rigid motions are expected: the others mean nothing");
}

}  // namespace check
