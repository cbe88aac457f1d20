// A molecule that floats freely feels no net force and no net torque, at any geometry: the sums
// over the atoms of each job vanish, and so do their differences.
#include "check/support/net_force.hpp"

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

#include "analysis/dipoles.hpp"
#include "analysis/median.hpp"
#include "check/checks.hpp"
#include "flib/units_of_measure.hpp"

namespace check {

namespace {

// At the displaced geometry, where the torque vanishes exactly. x: places from the centre of the
// atoms, Bohr; size: their root mean square length.
Sums sums_of(const JobData& jobs, int job, const Eigen::Matrix3Xd& x, double size) {
  const Eigen::Map<const Eigen::Matrix3Xd> forces(jobs.forces(job).data(), 3, x.cols());
  Eigen::Vector3d force = Eigen::Vector3d::Zero(), torque = Eigen::Vector3d::Zero();
  for (Eigen::Index a = 0; a < x.cols(); ++a) {
    force += forces.col(a);
    torque += x.col(a).cross(forces.col(a));
  }
  const Eigen::Vector3d moved = jobs.step(job) * Eigen::Vector3d::Unit((job - 1) / 2 % 3);
  torque += moved.cross(forces.col((job - 1) / 6));
  if (size > 0.0) torque /= size;
  return (Sums() << force, torque).finished();
}

// The median of each sum over the jobs: what the sums are when nothing is wrong.
Sums usual_sums(const NetForces& sums) {
  Sums usual;
  for (int k = 0; k < usual.size(); ++k) {
    std::vector<double> values;
    std::copy_if(sums.of_job.row(k).begin(), sums.of_job.row(k).end(), std::back_inserter(values),
                 [](double value) { return std::isfinite(value); });
    usual(k) = analysis::median(std::move(values));
  }
  return usual;
}

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
  return std::string("net ") + (sums.torque(column) > sums.force(column) ? "torque" : "force") +
         " in the column of " + coordinate_text(jobs, column + 1) + ": " +
         rounded(sums.largest(column)) + " Hartree/Bohr**2, ";
}

// What print rounding may make of the sums: the worst case, all errors in one direction. A torque
// sums over two components, with lever arms of about the size.
double rounding_of_sums(const JobData& jobs, int job, int other) {
  const double digits = jobs.rounding(job) + jobs.rounding(other);
  return 2.0 * jobs.run.natom * digits / std::fabs(2.0 * jobs.run.dx);
}

void report_columns(const JobData& jobs, const std::map<std::vector<int>, int>& columns,
                    const Thresholds& limits, Report& report) {
  const NetForces& sums = jobs.context.sums;
  for (const auto& [blamed, k] : columns) {
    std::string text = describe(jobs, k) + "at most " +
                       rounded(net_force_allowed(jobs, sums.rounding(k), limits)) + " expected";
    if (blamed.size() > 1) text += "; this job or " + std::string(jobs.sign_name(blamed[1]));
    report.add(jobs.layered ? Severity::note : Severity::warning,
               forces_place(jobs, blamed.front()), std::move(text), blamed.front(), blamed,
               sums.largest(k));
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

void add_figures(const JobData& jobs, Report& report) {
  const NetForces& sums = jobs.context.sums;
  Eigen::VectorXd torque = sums.torque;
  if (!jobs.has_geometry()) torque.setConstant(not_known);
  report.figure("largest net force (Hartree/Bohr**2)",
                largest_known({sums.force.begin(), sums.force.end()}));
  report.figure("largest net torque over the size of the molecule (Hartree/Bohr**2)",
                largest_known({torque.begin(), torque.end()}));
  report.figure("net force of each coordinate (Hartree/Bohr**2)", sums.force);
  report.figure("net torque of each coordinate (Hartree/Bohr**2)", torque);
}

}  // namespace

NetForces sum_forces(const JobData& jobs) {
  const zandor::RunData& run = jobs.run;
  Eigen::Matrix3Xd x =
      Eigen::Map<const Eigen::Matrix3Xd>(run.xa.data(), 3, run.natom) / flib::angstrom_per_bohr;
  x.colwise() -= x.rowwise().mean().eval();
  const double size = std::sqrt(x.squaredNorm() / run.natom);
  NetForces sums;
  sums.of_job.setConstant(6, run.n6 + 1, not_known);
  for (int i = 1; i <= run.n6; ++i) {
    if (jobs.usable(i)) sums.of_job.col(i) = sums_of(jobs, i, x, size);
  }
  sums.usual = usual_sums(sums);
  sums.force.setConstant(run.n3, not_known);
  sums.torque = sums.largest = sums.rounding = sums.force;
  for (int k = 0; k < run.n3; ++k) {
    if (!jobs.usable_column(k + 1)) continue;
    const int a = 2 * k + 1, b = 2 * k + 2;
    const Sums column =
        (sums.of_job.col(a) - sums.of_job.col(b)).cwiseAbs() / std::fabs(2.0 * run.dx);
    sums.force(k) = column.head<3>().maxCoeff();
    sums.torque(k) = column.tail<3>().maxCoeff();
    sums.largest(k) = std::max(sums.force(k), sums.torque(k));
    sums.rounding(k) = rounding_of_sums(jobs, a, b);
  }
  return sums;
}

double median_over_jobs(const JobData& jobs, const Eigen::VectorXd& of_column) {
  std::map<std::pair<int, int>, double> of_jobs;
  for (int k = 0; k < of_column.size(); ++k) {
    if (std::isnan(of_column(k))) continue;
    const auto sources = std::minmax({jobs.source(2 * k + 1), jobs.source(2 * k + 2)});
    double& largest = of_jobs.emplace(sources, of_column(k)).first->second;
    largest = std::max(largest, of_column(k));
  }
  std::vector<double> values;
  for (const auto& [sources, value] : of_jobs) values.push_back(value);
  if (values.size() < 2) return 0.0;
  if (values.size() == 2) return std::min(values[0], values[1]);
  return analysis::median(std::move(values));
}

double net_force_allowed(const JobData& jobs, double rounding, const Thresholds& limits) {
  constexpr double stands_out = 10.0;  // times the median column
  return std::max(limits.net_force + rounding, stands_out * jobs.context.common_cause.net_force);
}

std::vector<int> jobs_with_net_force(const JobData& jobs, const Thresholds& limits) {
  std::vector<int> found;
  if (jobs.layered) return found;
  for (const int i : jobs.read) {
    const double excess = distance_from_usual(jobs.context.sums, i) / std::fabs(2.0 * jobs.run.dx);
    if (excess > net_force_allowed(jobs, rounding_of_sums(jobs, i, i), limits)) found.push_back(i);
  }
  return found;
}

void check_net_force(const JobData& jobs, const Thresholds& limits, Report& report) {
  const NetForces& sums = jobs.context.sums;
  const std::vector<int>& columns = jobs.context.raw.columns;
  const auto smaller = [&](int k, int l) { return sums.largest(k) < sums.largest(l); };
  std::map<std::vector<int>, int> standing_out;  // the worst of those that blame the same jobs
  for (const int k : columns) {
    if (!(sums.largest(k) > net_force_allowed(jobs, sums.rounding(k), limits))) continue;
    int& worst = standing_out.emplace(suspects(jobs, k), k).first->second;
    worst = std::max(worst, k, smaller);
  }
  if (static_cast<int>(columns.size()) < jobs.run.n3)
    report.note(whole_list, missing_columns(jobs));
  if (!jobs.has_geometry()) {
    report.note(place_of(jobs, 0), "net torque not looked at: the reference's geometry is missing");
  }
  add_figures(jobs, report);
  const CommonCause& cause = jobs.context.common_cause;
  if (const char* const meaning = meaning_of(cause.kind); meaning != nullptr) {
    report.add(jobs.layered ? Severity::note : Severity::warning, whole_list,
               describe(jobs, *std::max_element(columns.begin(), columns.end(), smaller)) +
                   rounded(cause.net_force) + " in the median column: " + meaning);
  }
  if (cause.is(CommonCause::Kind::none) || cause.is(CommonCause::Kind::loose)) {
    report_columns(jobs, standing_out, limits, report);
  }
}

}  // namespace check
