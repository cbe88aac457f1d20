// What the digits in which forces are printed leave of force constants and frequencies.
#include <Eigen/Dense>
#include <algorithm>
#include <charconv>
#include <cmath>
#include <set>

#include "analysis/rigid_motions.hpp"
#include "check/checks.hpp"

namespace check {

namespace {

// The digits of the longest number among the forces of a job.
std::ptrdiff_t longest_number(const JobData& jobs, int i) {
  std::ptrdiff_t longest = 0;
  for (const double force : jobs.forces(i)) {
    char text[32];
    char* const end =
        std::to_chars(text, text + sizeof text, std::fabs(force), std::chars_format::scientific)
            .ptr;
    longest = std::max(longest, std::find(text, end, 'e') - text);
  }
  return longest;
}

int decimals_of(double rounding) {
  return static_cast<int>(std::lround(-std::log10(2.0 * rounding)));
}

// Whether the missing digits are no accident: that each of n different forces ends in d zeros has a
// chance of 10**(-n d). Numbers with exponents differ in decimals, not in length.
bool is_coarser(const JobData& jobs, int i, int usual) {
  constexpr std::size_t no_accident = 5;
  const int missing = decimals_of(jobs.rounding(usual)) - decimals_of(jobs.rounding(i));
  if (missing < 1) return false;
  std::set<double> different;
  for (const double force : jobs.forces(i)) different.insert(std::fabs(force));
  different.erase(0.0);
  return different.size() * static_cast<std::size_t>(missing) >= no_accident &&
         longest_number(jobs, i) < longest_number(jobs, usual);
}

void check_jobs(const JobData& jobs, const Thresholds& limits, Findings& findings) {
  if (jobs.read.empty()) return;
  std::vector<int> ranked = jobs.read;
  const auto middle = ranked.begin() + std::ssize(ranked) / 2;
  std::nth_element(ranked.begin(), middle, ranked.end(),
                   [&](int a, int b) { return jobs.rounding(a) < jobs.rounding(b); });
  for (const int i : jobs.read) {
    if (!is_coarser(jobs, i, *middle)) continue;
    const double effect = jobs.rounding(i) / std::fabs(2.0 * jobs.run.dx);
    const bool matters = effect > limits.net_force;
    findings.add(matters ? Severity::warning : Severity::note, forces_place(jobs, i),
                 {i, matters ? std::vector{i} : std::vector<int>{}, effect},
                 "the forces are printed with ", counted(decimals_of(jobs.rounding(i)), "decimal"),
                 ", those of the other jobs with ", decimals_of(jobs.rounding(*middle)),
                 ": force constants of this job are uncertain by ", rounded(effect),
                 " Hartree/Bohr**2");
  }
}

// Three standard deviations of an eigenvalue. The forces of the two jobs of a column, and those of
// atoms that symmetry makes alike, have the same rounding errors, not independent ones: an element
// has 1/sqrt(3) of the worst case.
constexpr double deviations = 3.0 / 1.7320508;

double frequency_shift(double eigenvalue, double change) {
  const double size = std::fabs(eigenvalue);
  return wavenumber(std::pow(std::sqrt(size + change) - std::sqrt(size), 2));
}

void report_shifts(const JobData& jobs, const Thresholds& limits, Findings& findings) {
  const ProjectedModes& modes = jobs.context.modes;
  const int n3 = jobs.run.n3;
  const Eigen::SelfAdjointEigenSolver<Eigen::MatrixXd> solver(modes.force_constants);
  const Eigen::VectorXd rigid =
      analysis::rigid_weights(analysis::rigid_motions(jobs.run), solver.eigenvectors());
  const Eigen::VectorXd& rounding = jobs.context.raw.rounding;
  Eigen::MatrixXd u = solver.eigenvectors();
  for (int i = 0; i < n3; ++i) u.row(i) /= std::sqrt(jobs.run.mass(i / 3 + 1));
  double largest = 0.0;
  int mode = 0, above = 0;
  for (int k = 0; k < n3; ++k) {
    if (rigid(k) > 0.5) continue;  // more rigid motion than vibration
    const double change = deviations * u.col(k).norm() * u.col(k).cwiseProduct(rounding).norm();
    const double shift = frequency_shift(modes.eigenvalues(k), change);
    above += shift > limits.rounding_note ? 1 : 0;
    if (shift <= largest) continue;
    largest = shift;
    mode = k + 1;
  }
  findings.figure("largest shift of a frequency by print rounding (cm-1)", largest);
  if (above == 0) return;
  findings.add(largest > limits.rounding ? Severity::warning : Severity::note, whole_list, {},
               "the digits of the forces leave the frequency of mode ", mode, " (",
               rounded(wavenumber(modes.eigenvalues(mode - 1))), " cm-1) uncertain by ",
               rounded(largest), " cm-1, and ", counted(above, "mode"), " by more than ",
               rounded(limits.rounding_note), ": print more decimals");
}

}  // namespace

void check_precision(const JobData& jobs, const Thresholds& limits, Findings& findings) {
  check_jobs(jobs, limits, findings);
  if (!jobs.context.modes.missing.empty()) return;  // force-constants says so
  // No mode is moved by more than one of zero frequency of the lightest atom alone would be.
  const double lightest =
      *std::min_element(jobs.run.mass.data(), jobs.run.mass.data() + jobs.run.natom);
  const double change = deviations * jobs.context.raw.rounding.maxCoeff() / lightest;
  if (frequency_shift(0.0, change) <= limits.rounding_note) return;
  report_shifts(jobs, limits, findings);
}

}  // namespace check
