// Force constants and frequencies that no molecule has: gradients in place of forces, other units.
#include <algorithm>
#include <cmath>

#include "check/checks.hpp"
#include "check/support/projected_modes.hpp"

namespace check {

namespace {

constexpr const char* other_units =
    ", which no molecule has: forces in eV/Angstrom or other units than Hartree/Bohr, a wrong "
    "step, "
    "or too light masses";

// Of an atom's own 3 x 3 block: its trace, and how far it pushes rather than pulls, the
// largest eigenvalue but with the sign turned over the largest.
struct Block {
  double trace = 0.0;
  bool pushes = false;
};

// An atom moved alone is pulled back: the trace of its own block was 0.037 to 1.4 in sound
// directories but one, far off any minimum, of which no eigenvalue of a block is below -1.5 times
// the largest. Turned round, those of the others are below -2.0 times it.
Block block_of(const RawForceConstants& raw, int atom) {
  constexpr double much_more = 1.8;
  Eigen::Matrix3d block;
  for (int k = 1; k <= 3; ++k) {
    for (int l = 1; l <= 3; ++l)
      block(l - 1, k - 1) = raw.h(3 * (atom - 1) + l, 3 * (atom - 1) + k);
  }
  const Eigen::SelfAdjointEigenSolver<Eigen::Matrix3d> solver((block + block.transpose()) / 2.0,
                                                              Eigen::EigenvaluesOnly);
  const Eigen::Vector3d& values = solver.eigenvalues();
  return {block.trace(), block.trace() < 0.0 && -values(0) > much_more * values(2)};
}

void check_blocks(const JobData& jobs, Report& report) {
  const RawForceConstants& raw = jobs.context.raw;
  int looked_at = 0;
  double least = std::numeric_limits<double>::infinity();
  std::vector<int> pushing;
  for (int atom = 1; atom <= jobs.run.natom; ++atom) {
    const auto has = [&](int ih) {
      return std::binary_search(raw.columns.begin(), raw.columns.end(), ih);
    };
    if (!has(3 * atom - 2) || !has(3 * atom - 1) || !has(3 * atom)) continue;
    const Block block = block_of(raw, atom);
    ++looked_at;
    least = std::min(least, block.trace);
    if (block.pushes) pushing.push_back(atom);
  }
  report.figure("smallest trace of an atom's own force constants (Hartree/Bohr**2)",
                looked_at > 0 ? least : not_known);
  if (pushing.empty()) return;
  const bool most = 2 * pushing.size() > static_cast<std::size_t>(looked_at);
  report.add(Severity::warning, {zandor::job_list_name},
             "the own force constants of " +
                 counted(static_cast<long long>(pushing.size()), "atom") + " of " +
                 std::to_string(looked_at) + " push it away when it moves, first those of atom " +
                 std::to_string(pushing.front()) + " (the sum of the three, at the least, is " +
                 rounded(least) + " Hartree/Bohr**2)" +
                 (most ? ": gradients for forces, or job order turned?" : ""));
}

}  // namespace

void check_force_constants(const JobData& jobs, const Thresholds& limits, Report& report) {
  const CommonCause& cause = jobs.context.common_cause;
  if (!cause.is(CommonCause::Kind::other_axes)) check_blocks(jobs, report);
  const ProjectedModes& modes = jobs.context.modes;
  const io::Place place{zandor::job_list_name};
  if (!modes.missing.empty()) {
    report.note(place, "frequencies not looked at: " + modes.missing);
    if (cause.is(CommonCause::Kind::other_units)) {
      report.add(Severity::warning, place,
                 "the own force constants of every atom sum up to " + rounded(cause.own_trace) +
                     " Hartree/Bohr**2 and more" + other_units);
    }
    return;
  }
  const double highest = wavenumber(modes.eigenvalues.cwiseAbs().maxCoeff());
  report.figure("highest frequency (cm-1)", highest);
  if (highest <= limits.frequency) return;
  report.add(
      Severity::warning, place,
      "the highest frequency, real or imaginary, is " + rounded(highest) + " cm-1" + other_units);
}

}  // namespace check
