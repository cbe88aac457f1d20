// A molecule that floats freely feels no net force and no net torque, at any geometry: the sums
// over the atoms of each job vanish, and so do their differences.
#include "check/support/net_force.hpp"

#include <Eigen/Dense>
#include <algorithm>
#include <cmath>
#include <map>
#include <set>

#include "analysis/dipoles.hpp"
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
    if (values.empty()) continue;
    const auto middle = values.begin() + static_cast<long>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    usual(k) = *middle;
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
         coordinate_text(jobs, excess.ih) + ": " + rounded(excess.sum) +
         " Hartree/Bohr**2, at most " + rounded(excess.allowed) + " expected";
}

// What print rounding may make of the sums: the worst case, all errors in one direction. A torque
// sums over two components, with lever arms of about the size.
double rounding_of_sums(const JobData& jobs, const analysis::StepJobs& pair) {
  const zandor::RunData& run = jobs.run;
  const double digits = jobs.rounding(pair.plus) + jobs.rounding(pair.minus);
  return 2.0 * run.natom * digits / std::fabs(2.0 * run.dx);
}

// The columns whose sums are above what is allowed there.
struct Excesses {
  std::map<std::vector<int>, Excess> by_jobs;  // the largest of those that blame the same jobs
  Excess worst;
  int columns = 0;
  std::set<int> looked_at;  // the sources of the jobs of all columns

  // A fault of most jobs is none of single ones.
  bool general() const {
    std::set<int> blamed;
    for (const auto& [jobs, excess] : by_jobs) blamed.insert(jobs.begin(), jobs.end());
    return by_jobs.size() > 1 && 2 * blamed.size() >= looked_at.size();
  }
};

void add_excess(const JobData& jobs, const AllSums& all, const analysis::StepJobs& pair,
                const Excess& excess, Excesses& excesses) {
  if (excess.sum <= excess.allowed) return;
  ++excesses.columns;
  if (excess.sum > excesses.worst.sum) excesses.worst = excess;
  const double plus = largest(all.of_job.at(pair.plus) - all.usual);
  const double minus = largest(all.of_job.at(pair.minus) - all.usual);
  Excess& known = excesses.by_jobs[suspects(jobs, pair, plus, minus)];
  if (excess.sum > known.sum) known = excess;
}

void report_excesses(const JobData& jobs, const std::map<std::vector<int>, Excess>& by_jobs,
                     Report& report) {
  const Severity severity = jobs.layered ? Severity::note : Severity::warning;
  for (const auto& [blamed, excess] : by_jobs) {
    std::string text = describe(jobs, excess);
    if (blamed.size() > 1) {
      text += "; this job or " + std::string(jobs.job(blamed[1]).sgn_name.content());
    }
    report.add(severity, forces_place(jobs, blamed.front()), std::move(text), blamed.front(),
               blamed);
  }
}

void report_general_excess(const JobData& jobs, const Excesses& excesses, Report& report) {
  report.add(jobs.layered ? Severity::note : Severity::warning, {zandor::job_list_name},
             counted(excesses.columns, "coordinate") + " with a " + describe(jobs, excesses.worst) +
                 "; the molecule does not float freely, or the forces belong to other axes or to "
                 "another step");
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

std::vector<int> jobs_with_net_force(const JobData& jobs, const Thresholds& limits) {
  std::vector<int> found;
  if (jobs.layered) return found;
  const AllSums& all = jobs.context.sums;
  for (const auto& [job, sums] : all.of_job) {
    const double excess = largest(sums - all.usual) / std::fabs(2.0 * jobs.run.dx);
    const double allowed = limits.net_force + rounding_of_sums(jobs, {job, job});
    if (jobs.job(job).is_calc && excess > allowed) found.push_back(job);
  }
  return found;
}

void check_net_force(const JobData& jobs, const Thresholds& limits, Report& report) {
  const zandor::RunData& run = jobs.run;
  const AllSums& all = jobs.context.sums;
  std::vector<double> forces(static_cast<std::size_t>(run.n3), not_known);
  std::vector<double> torques = forces;
  Excesses excesses;
  int missing = 0;
  for (int ih = 1; ih <= run.n3; ++ih) {
    if (!jobs.usable_column(ih)) {
      ++missing;
      continue;
    }
    const analysis::StepJobs pair = analysis::step_jobs(run, ih);
    const Sums column = (all.of_job.at(pair.plus) - all.of_job.at(pair.minus)) / (2.0 * run.dx);
    const auto place = static_cast<std::size_t>(ih - 1);
    const double force = forces[place] = largest(column.head<3>());
    const double torque = largest(column.tail<3>());
    if (jobs.has_geometry()) torques[place] = torque;
    excesses.looked_at.insert({jobs.source(pair.plus), jobs.source(pair.minus)});
    add_excess(jobs, all, pair,
               {std::max(force, torque), limits.net_force + rounding_of_sums(jobs, pair), ih,
                torque > force},
               excesses);
  }
  if (missing > 0) report.note({zandor::job_list_name}, missing_columns(missing));
  if (!jobs.has_geometry()) {
    report.note(place_of(jobs, 0), "net torque not looked at: the reference's geometry is missing");
  }
  add_figures(std::move(forces), std::move(torques), report);
  if (excesses.general()) {
    report_general_excess(jobs, excesses, report);
  } else {
    report_excesses(jobs, excesses.by_jobs, report);
  }
}

}  // namespace check
