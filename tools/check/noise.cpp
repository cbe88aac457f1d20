// Frequencies that are no more than the noise of the eigenvalues. The analysis adds 100000.0 to the
// diagonal, so that eigenvalues come in quanta of 2**-36 = 1.46e-11; the solver's own error is some
// 30 of them.
#include "analysis/rigid_motions.hpp"
#include "check/checks.hpp"

namespace check {

void check_noise(const JobData& jobs, const Thresholds& limits, Findings& findings) {
  const ProjectedModes& modes = jobs.context.modes;
  if (!modes.missing.empty()) {
    findings.note({jobs.run.com_name.content()}, "not looked at: ", modes.missing);
    return;
  }
  const auto below = (modes.eigenvalues.array().abs() < limits.noise).count();
  const int rigid = analysis::rigid_motions(jobs.run).rank;
  const double floor = wavenumber(limits.noise);
  findings.figure("noise floor (cm-1)", floor);
  findings.figure("projected frequencies below it", static_cast<double>(below));
  if (below <= rigid) return;
  findings.note(whole_list, below, " projected frequencies below ", rounded(floor),
                " cm-1, the noise of the eigenvalues, where ", rigid,
                " rigid motions are expected: the others mean nothing");
}

}  // namespace check
