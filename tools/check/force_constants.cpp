// Force constants and frequencies that no molecule has: gradients in place of forces, other units.

#include <algorithm>
#include <cmath>

#include "check/checks.hpp"

namespace check {

namespace {

constexpr const char* other_units =
    ", which no molecule has: forces in eV/Angstrom or other units than Hartree/Bohr, a wrong "
    "step, or too light masses";

// An atom moved alone is pulled back: the trace of its own block was 0.037 to 1.4 in sound
// directories but one, far off any minimum, of which no eigenvalue of a block is below -1.5 times
// the largest. Turned round, those of the others are below -2.0 times it.
bool pushes(const Eigen::Matrix3d& block) {
  constexpr double much_more = 1.8;
  const Eigen::SelfAdjointEigenSolver<Eigen::Matrix3d> solver((block + block.transpose()) / 2.0,
                                                              Eigen::EigenvaluesOnly);
  const Eigen::Vector3d& values = solver.eigenvalues();
  return block.trace() < 0.0 && -values(0) > much_more * values(2);
}

void check_blocks(const JobData& jobs, Findings& findings) {
  const std::map<int, Eigen::Matrix3d> blocks = own_force_constants(jobs);
  double least = not_known;
  std::vector<int> pushing;
  for (const auto& [atom, block] : blocks) {
    least = std::fmin(least, block.trace());
    if (pushes(block)) pushing.push_back(atom);
  }
  findings.figure("smallest trace of an atom's own force constants (Hartree/Bohr**2)", least);
  if (pushing.empty()) return;
  const bool most = 2 * pushing.size() > blocks.size();
  findings.warn(whole_list, {}, "the own force constants of ", counted(std::ssize(pushing), "atom"),
                " of ", blocks.size(), " push it away when it moves, first those of atom ",
                pushing.front(), " (the sum of the three, at the least, is ", rounded(least),
                " Hartree/Bohr**2)", most ? ": gradients for forces, or job order turned?" : "");
}

}  // namespace

void check_force_constants(const JobData& jobs, const Thresholds& limits, Findings& findings) {
  const CommonCause& cause = jobs.context.common_cause;
  if (!cause.is(CommonCause::Kind::other_axes)) check_blocks(jobs, findings);
  const ProjectedModes& modes = jobs.context.modes;
  if (!modes.missing.empty()) {
    findings.note(whole_list, "frequencies not looked at: ", modes.missing);
    if (cause.is(CommonCause::Kind::other_units)) {
      findings.warn(whole_list, {}, "the own force constants of every atom sum up to ",
                    rounded(cause.own_trace), " Hartree/Bohr**2 and more", other_units);
    }
    return;
  }
  const double highest = wavenumber(modes.eigenvalues.cwiseAbs().maxCoeff());
  findings.figure("highest frequency (cm-1)", highest);
  if (highest <= limits.frequency) return;
  findings.warn(whole_list, {}, "the highest frequency, real or imaginary, is ", rounded(highest),
                " cm-1", other_units);
}

}  // namespace check
