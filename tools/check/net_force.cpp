// A molecule that floats freely feels no net force and no net torque, at any geometry: the sums
// over the atoms of each job vanish, and so do their differences.
#include "check/support/net_force.hpp"

#include <Eigen/Dense>
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

// Positions from the centre of the atoms, Bohr, and their root mean square length.
struct Frame {
  Eigen::Matrix3Xd x;
  double size = 0.0;
};

Frame frame_of(const zandor::RunData& run) {
  Frame frame;
  frame.x =
      Eigen::Map<const Eigen::Matrix3Xd>(run.xa.data(), 3, run.natom) / flib::angstrom_per_bohr;
  frame.x.colwise() -= frame.x.rowwise().mean().eval();
  frame.size = std::sqrt(frame.x.squaredNorm() / run.natom);
  return frame;
}

// At the displaced geometry, where the torque vanishes exactly.
Sums sums_of(const zandor::RunData& run, const Frame& frame, int job) {
  const Eigen::Map<const Eigen::Matrix3Xd> forces(run.force.column(1, job), 3, run.natom);
  Sums sums = Sums::Zero();
  Eigen::Vector3d torque = Eigen::Vector3d::Zero();
  for (int a = 0; a < run.natom; ++a) {
    const Eigen::Vector3d x = frame.x.col(a);
    const Eigen::Vector3d force = forces.col(a);
    torque += x.cross(force);
    sums.head<3>() += force;
  }
  const int ih = (job + 1) / 2;
  const Eigen::Vector3d moved = step_sign(run, job) * run.dx * Eigen::Vector3d::Unit((ih - 1) % 3);
  const Eigen::Vector3d force = forces.col((ih - 1) / 3);
  torque += moved.cross(force);
  if (frame.size > 0.0) sums.tail<3>() = torque / frame.size;
  return sums;
}

template <class Derived>
double largest(const Eigen::MatrixBase<Derived>& sums) {
  return sums.cwiseAbs().maxCoeff();
}

// The median of each sum over the jobs: what the sums are when nothing is wrong.
Sums usual_sums(const std::map<int, Sums>& all) {
  Sums usual = Sums::Zero();
  for (int k = 0; k < 6; ++k) {
    std::vector<double> values;
    for (const auto& [job, sums] : all) {
      if (std::isfinite(sums(k))) values.push_back(sums(k));
    }
    usual(k) = analysis::median(std::move(values));
  }
  return usual;
}

// Net force and torque of a column above what is allowed there.
struct Excess {
  double sum = 0.0;
  double allowed = 0.0;
  int ih = 0;
  bool torque = false;
};

// Of the two jobs of a column the one that is further from the usual, or both; by their sources.
std::vector<int> suspects(const JobData& jobs, const analysis::StepJobs& pair, double plus,
                          double minus) {
  const int a = jobs.source(pair.plus);
  const int b = jobs.source(pair.minus);
  if (a == b || plus >= 2.0 * minus) return {a};
  if (minus >= 2.0 * plus) return {b};
  return {std::min(a, b), std::max(a, b)};
}

std::string describe(const JobData& jobs, const Excess& excess) {
  return std::string("net ") + (excess.torque ? "torque" : "force") + " in the column of " +
         coordinate_text(jobs, excess.ih) + ": " + rounded(excess.sum) + " Hartree/Bohr**2, ";
}

// What print rounding may make of the sums: the worst case, all errors in one direction. A torque
// sums over two components, with lever arms of about the size.
double rounding_of_sums(const JobData& jobs, const analysis::StepJobs& pair) {
  const zandor::RunData& run = jobs.run;
  const double digits = jobs.rounding(pair.plus) + jobs.rounding(pair.minus);
  return 2.0 * run.natom * digits / std::fabs(2.0 * run.dx);
}

void report_excesses(const JobData& jobs, const std::map<std::vector<int>, Excess>& by_jobs,
                     Report& report) {
  const Severity severity = jobs.layered ? Severity::note : Severity::warning;
  for (const auto& [blamed, excess] : by_jobs) {
    std::string text = describe(jobs, excess) + "at most " + rounded(excess.allowed) + " expected";
    if (blamed.size() > 1) {
      text += "; this job or " + std::string(jobs.job(blamed[1]).sgn_name.content());
    }
    report.add(severity, forces_place(jobs, blamed.front()), std::move(text), blamed.front(),
               blamed, excess.sum);
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

void report_common_cause(const JobData& jobs, const Excess& worst, Report& report) {
  const CommonCause& cause = jobs.context.common_cause;
  const char* const meaning = meaning_of(cause.kind);
  if (meaning == nullptr) return;
  report.add(
      jobs.layered ? Severity::note : Severity::warning, {zandor::job_list_name},
      describe(jobs, worst) + rounded(cause.net_force) + " in the median column: " + meaning);
}

void add_figures(std::vector<double> forces, std::vector<double> torques, Report& report) {
  report.figure("largest net force (Hartree/Bohr**2)", largest_known(forces));
  report.figure("largest net torque over the size of the molecule (Hartree/Bohr**2)",
                largest_known(torques));
  report.figure("net force of each coordinate (Hartree/Bohr**2)", std::move(forces));
  report.figure("net torque of each coordinate (Hartree/Bohr**2)", std::move(torques));
}

}  // namespace

AllSums sum_forces(const JobData& jobs) {
  const Frame frame = frame_of(jobs.run);
  AllSums all;
  for (int i = 1; i <= jobs.run.n6; ++i) {
    if (jobs.usable(i)) all.of_job[i] = sums_of(jobs.run, frame, i);
  }
  all.usual = usual_sums(all.of_job);
  return all;
}

std::map<int, NetForce> net_forces(const JobData& jobs) {
  const AllSums& all = jobs.context.sums;
  std::map<int, NetForce> columns;
  for (int ih = 1; ih <= jobs.run.n3; ++ih) {
    if (!jobs.usable_column(ih)) continue;
    const analysis::StepJobs pair = analysis::step_jobs(jobs.run, ih);
    const Sums sums = (all.of_job.at(pair.plus) - all.of_job.at(pair.minus)) / (2.0 * jobs.run.dx);
    columns[ih] = {largest(sums.head<3>()), largest(sums.tail<3>()), rounding_of_sums(jobs, pair)};
  }
  return columns;
}

double median_over_jobs(const JobData& jobs, const std::map<int, double>& of_column) {
  std::map<std::pair<int, int>, double> of_jobs;
  for (const auto& [ih, value] : of_column) {
    const auto sources = std::minmax({jobs.source(2 * ih - 1), jobs.source(2 * ih)});
    const auto [known, is_new] = of_jobs.emplace(sources, value);
    if (!is_new) known->second = std::max(known->second, value);
  }
  std::vector<double> values;
  values.reserve(of_jobs.size());
  for (const auto& [sources, value] : of_jobs) values.push_back(value);
  if (values.size() < 2) return 0.0;
  std::sort(values.begin(), values.end());
  return values[values.size() < 4 ? (values.size() - 1) / 2 : values.size() / 2];
}

double net_force_allowed(const JobData& jobs, double rounding, const Thresholds& limits) {
  constexpr double stands_out = 10.0;  // times the median column
  return std::max(limits.net_force + rounding, stands_out * jobs.context.common_cause.net_force);
}

std::vector<int> jobs_with_net_force(const JobData& jobs, const Thresholds& limits) {
  std::vector<int> found;
  if (jobs.layered) return found;
  const AllSums& all = jobs.context.sums;
  for (const auto& [job, sums] : all.of_job) {
    const double excess = largest(sums - all.usual) / std::fabs(2.0 * jobs.run.dx);
    const double allowed = net_force_allowed(jobs, rounding_of_sums(jobs, {job, job}), limits);
    if (jobs.job(job).is_calc && excess > allowed) found.push_back(job);
  }
  return found;
}

void check_net_force(const JobData& jobs, const Thresholds& limits, Report& report) {
  const AllSums& all = jobs.context.sums;
  std::vector<double> forces(static_cast<std::size_t>(jobs.run.n3), not_known);
  std::vector<double> torques = forces;
  const std::map<int, NetForce> columns = net_forces(jobs);
  std::map<std::vector<int>, Excess> by_jobs;  // the largest of those that blame the same jobs
  Excess worst;
  for (const auto& [ih, column] : columns) {
    const auto place = static_cast<std::size_t>(ih - 1);
    forces[place] = column.force;
    if (jobs.has_geometry()) torques[place] = column.torque;
    const Excess excess{column.largest(), net_force_allowed(jobs, column.rounding, limits), ih,
                        column.torque > column.force};
    if (excess.sum > worst.sum) worst = excess;
    if (excess.sum <= excess.allowed) continue;
    const analysis::StepJobs pair = analysis::step_jobs(jobs.run, ih);
    Excess& known = by_jobs[suspects(jobs, pair, largest(all.of_job.at(pair.plus) - all.usual),
                                     largest(all.of_job.at(pair.minus) - all.usual))];
    if (excess.sum > known.sum) known = excess;
  }
  const int missing = jobs.run.n3 - static_cast<int>(columns.size());
  if (missing > 0) report.note({zandor::job_list_name}, missing_columns(missing));
  if (!jobs.has_geometry()) {
    report.note(place_of(jobs, 0), "net torque not looked at: the reference's geometry is missing");
  }
  add_figures(std::move(forces), std::move(torques), report);
  report_common_cause(jobs, worst, report);
  const CommonCause& cause = jobs.context.common_cause;
  if (cause.is(CommonCause::Kind::none) || cause.is(CommonCause::Kind::loose)) {
    report_excesses(jobs, by_jobs, report);
  }
}

}  // namespace check
