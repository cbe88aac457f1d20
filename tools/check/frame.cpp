// The axes of the projection's geometry, and what the projector leaves of the rigid motions.
#include <Eigen/Dense>
#include <array>
#include <cmath>

#include "analysis/rigid_motions.hpp"
#include "check/checks.hpp"
#include "check/support/projected_modes.hpp"

namespace check {

namespace {

// The largest |frequency| (cm-1), with its sign, of the rigid motions by themselves: of the block
// of the projected force constants among them.
double largest_rigid_frequency(const JobData& jobs, const analysis::RigidMotions& rigid) {
  const int n3 = jobs.run.n3;
  const Eigen::Map<const Eigen::MatrixXd> projected(jobs.run.mhessp.data(), n3, n3);
  const Eigen::MatrixXd image = projected * rigid.basis;
  const Eigen::MatrixXd block = rigid.basis.transpose() * image;
  std::array<double, 6> eigenvalues{};
  if (!find_eigenvalues(rigid.rank, block.data(), eigenvalues.data())) return 0.0;
  double largest = 0.0;
  for (const double eigenvalue : eigenvalues) {
    if (std::abs(eigenvalue) > std::abs(largest)) largest = eigenvalue;
  }
  return wavenumber(largest);
}

}  // namespace

void check_frame(const JobData& jobs, const Thresholds& limits, Report& report) {
  const io::Place place{jobs.run.com_name.content()};
  if (!jobs.no_modes.empty()) {
    report.note(place, "not looked at: " + jobs.no_modes);
    return;
  }
  const zandor::RunData frame = projection_frame(jobs);
  const double angle = analysis::principal_axes(frame).largest_angle;
  const double left = largest_rigid_frequency(jobs, analysis::rigid_motions(frame));
  report.figure("largest angle to the principal axes (degree)", angle);
  report.figure("largest projected rigid motion (cm-1)", left);
  const bool spurious = std::abs(left) > limits.frame;
  if (!spurious && angle <= limits.frame_angle) return;
  report.add(spurious && !jobs.layered ? Severity::warning : Severity::note, place,
             "the axes are " + rounded(angle) +
                 " degrees off the principal axes of inertia, where the projection is exact: "
                 "rigid motions stay in the projected set with up to " +
                 rounded(left) + " cm-1",
             0);
}

}  // namespace check
