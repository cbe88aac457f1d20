// Whether the state stands apart from all others. Where it is degenerate, or crosses another one
// near the reference, the jobs hold now the one state and now the other.
#include <cmath>

#include "check/checks.hpp"

namespace check {

void check_state(const JobData& jobs, const Thresholds&, Findings& findings) {
  const CommonCause& cause = jobs.context.common_cause;
  findings.figure("even over odd part of the forces in the median coordinate (1)", cause.even);
  findings.figure("share of the transition dipoles along one line (1)", cause.along_line);
  if (!cause.is(CommonCause::Kind::degenerate)) return;
  std::string why;
  if (!std::isnan(cause.even)) {
    why = io::joined(": the even part of the forces is ", rounded(cause.even),
                     " of the odd one in the median coordinate");
  }
  if (!std::isnan(cause.along_line)) {
    why += io::joined(why.empty() ? ": " : ", ", rounded(cause.along_line),
                      " of the transition dipoles lie along one line");
  }
  findings.warn(
      whole_list, {}, "the state is degenerate or crosses another one at the reference", why,
      "; force constants, frequencies and dipole derivatives mean nothing, and running jobs "
      "again cannot help");
}

}  // namespace check
