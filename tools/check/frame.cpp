// The axes of the projection's geometry, and what the projector leaves of the rigid motions.
#include <Eigen/Dense>
#include <cmath>

#include "analysis/rigid_motions.hpp"
#include "check/checks.hpp"

namespace check {

namespace {

// The largest |frequency| (cm-1), with its sign, of the rigid motions by themselves: of the block
// of the projected force constants among them.
double largest_rigid_frequency(const JobData& jobs, const analysis::RigidMotions& rigid) {
  const Eigen::MatrixXd image = jobs.context.modes.force_constants * rigid.basis;
  const Eigen::MatrixXd block = rigid.basis.transpose() * image;
  const Eigen::SelfAdjointEigenSolver<Eigen::MatrixXd> solver(block, Eigen::EigenvaluesOnly);
  const Eigen::VectorXd& eigenvalues = solver.eigenvalues();
  const bool low = std::abs(eigenvalues(0)) > std::abs(eigenvalues(rigid.rank - 1));
  return wavenumber(eigenvalues(low ? 0 : rigid.rank - 1));
}

}  // namespace

void check_frame(const JobData& jobs, const Thresholds& limits, Findings& findings) {
  const io::Place place{jobs.run.com_name.content()};
  if (const std::string& missing = jobs.context.modes.missing; !missing.empty()) {
    findings.note(place, "not looked at: ", missing);
    return;
  }
  const double angle = analysis::principal_axes(jobs.run).largest_angle;
  const analysis::RigidMotions rigid = analysis::rigid_motions(jobs.run);
  const double left = largest_rigid_frequency(jobs, rigid);
  findings.figure("largest angle to the principal axes (degree)", angle);
  findings.figure("largest projected rigid motion (cm-1)", left);
  const bool spurious = std::abs(left) > limits.frame;
  if (!spurious && angle <= limits.frame_angle) return;
  if (spurious && angle <= limits.frame_angle && rigid.rank == 5) {
    findings.warn(
        place, {0},
        "the molecule is linear but for a hair: the projection of the report takes a bend "
        "for a rotation, and leaves a rotation with ",
        rounded(left), " cm-1; put the atoms on the line");
    return;
  }
  findings.add(spurious && !jobs.layered ? Severity::warning : Severity::note, place, {0},
               "the axes are ", rounded(angle),
               " degrees off the principal axes of inertia, where the projection is exact: rigid "
               "motions stay in the projected set with up to ",
               rounded(left), " cm-1");
}

}  // namespace check
