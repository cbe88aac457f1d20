// A molecule that floats freely feels no net force and no net torque, at any geometry: the sums
// over the atoms of each job vanish, and so do their differences.
#include <algorithm>
#include <cmath>
#include <map>

#include "check/checks.hpp"

namespace check {

namespace {

double distance_from_usual(const NetForces& sums, int job) {
  return (sums.of_job.col(job) - sums.usual).cwiseAbs().maxCoeff();
}

// The job of a column that is further from the usual by a factor, or both; by their sources.
std::vector<int> suspects(const JobData& jobs, int column) {
  constexpr double further = 2.0;  // where the other comes nearer, both are named
  const int a = jobs.source(2 * column + 1), b = jobs.source(2 * column + 2);
  const double of_a = distance_from_usual(jobs.context.sums, 2 * column + 1);
  const double of_b = distance_from_usual(jobs.context.sums, 2 * column + 2);
  if (a == b || of_a >= further * of_b) return {a};
  if (of_b >= further * of_a) return {b};
  return {std::min(a, b), std::max(a, b)};
}

std::string describe(const JobData& jobs, int column) {
  const NetForces& sums = jobs.context.sums;
  return io::joined("net ", sums.torque(column) > sums.force(column) ? "torque" : "force",
                    " in the column of ", coordinate_text(jobs, column + 1), ": ",
                    rounded(sums.largest(column)), " Hartree/Bohr**2, ");
}

// What a net force or torque must exceed to stand out.
double allowed(const JobData& jobs, double rounding, const Thresholds& limits) {
  constexpr double stands_out = 10.0;  // times the median column
  return std::max(limits.net_force + rounding, stands_out * jobs.context.common_cause.net_force);
}

void report_columns(const JobData& jobs, const std::map<std::vector<int>, int>& columns,
                    const Thresholds& limits, Findings& findings) {
  const NetForces& sums = jobs.context.sums;
  for (const auto& [blamed, k] : columns) {
    findings.add(jobs.layered ? Severity::note : Severity::warning,
                 forces_place(jobs, blamed.front()), {blamed.front(), blamed, sums.largest(k)},
                 describe(jobs, k), "at most ", rounded(allowed(jobs, sums.rounding(k), limits)),
                 " expected", blamed.size() > 1 ? "; this job or " : "",
                 blamed.size() > 1 ? jobs.sign_name(blamed[1]) : "");
  }
}

// What is said of a cause that most jobs have in common.
const char* meaning_of(CommonCause::Kind kind) {
  switch (kind) {
    case CommonCause::Kind::other_axes:
      return "the forces belong to another frame than the geometry, or to atoms in another order";
    case CommonCause::Kind::held:
      return "the molecule does not float freely, or the forces belong to other axes or to another "
             "step";
    case CommonCause::Kind::loose:
      return "the jobs are not converged well enough for this step: converge tighter, all of them";
    default:
      return nullptr;
  }
}

void add_figures(const JobData& jobs, Findings& findings) {
  const NetForces& sums = jobs.context.sums;
  Eigen::VectorXd torque = sums.torque;
  if (!jobs.has_geometry()) torque.setConstant(not_known);
  findings.figure("largest net force (Hartree/Bohr**2)", largest_known(sums.force));
  findings.figure("largest net torque over the size of the molecule (Hartree/Bohr**2)",
                  largest_known(torque));
  findings.figure("net force of each coordinate (Hartree/Bohr**2)", sums.force);
  findings.figure("net torque of each coordinate (Hartree/Bohr**2)", torque);
}

}  // namespace

std::vector<int> jobs_with_net_force(const JobData& jobs, const Thresholds& limits) {
  std::vector<int> found;
  if (jobs.layered) return found;
  for (const int i : jobs.read) {
    const double excess = distance_from_usual(jobs.context.sums, i) / std::fabs(2.0 * jobs.run.dx);
    const double rounding = jobs.rounding(i) / std::fabs(jobs.run.dx);
    if (excess > allowed(jobs, rounding_of_sums(jobs.run.natom, rounding), limits)) {
      found.push_back(i);
    }
  }
  return found;
}

void check_net_force(const JobData& jobs, const Thresholds& limits, Findings& findings) {
  const NetForces& sums = jobs.context.sums;
  const std::vector<int>& columns = jobs.context.raw.columns;
  const auto smaller = [&](int k, int l) { return sums.largest(k) < sums.largest(l); };
  std::map<std::vector<int>, int> standing_out;  // the worst of those that blame the same jobs
  for (const int k : columns) {
    if (!(sums.largest(k) > allowed(jobs, sums.rounding(k), limits))) continue;
    int& worst = standing_out.emplace(suspects(jobs, k), k).first->second;
    worst = std::max(worst, k, smaller);
  }
  if (static_cast<int>(columns.size()) < jobs.run.n3)
    findings.note(whole_list, missing_columns(jobs));
  if (!jobs.has_geometry()) {
    findings.note(place_of(jobs, 0),
                  "net torque not looked at: the reference's geometry is missing");
  }
  add_figures(jobs, findings);
  const CommonCause& cause = jobs.context.common_cause;
  if (const char* const meaning = meaning_of(cause.kind); meaning != nullptr) {
    findings.add(jobs.layered ? Severity::note : Severity::warning, whole_list, {},
                 describe(jobs, *std::ranges::max_element(columns, smaller)),
                 rounded(cause.net_force), " in the median column: ", meaning);
  }
  if (cause.is(CommonCause::Kind::none) || cause.is(CommonCause::Kind::loose)) {
    report_columns(jobs, standing_out, limits, findings);
  }
}

}  // namespace check
