// A molecule that floats freely feels no net force and no net torque, at any geometry: the sums
// over the atoms of each job vanish, and so do their differences.
#include <Eigen/Dense>
#include <algorithm>
#include <cmath>
#include <map>

#include "checks.hpp"
#include "dipoles.hpp"

namespace check {

namespace {

using Sums = Eigen::Matrix<double, 6, 1>;  // net force, net torque over the size of the molecule

// Positions from the centre of the atoms, Bohr, and their root mean square length.
struct Frame {
  Eigen::Matrix3Xd x;
  double size = 0.0;
};

Frame frame_of(const zandor::RunData& run) {
  Frame frame;
  frame.x = Eigen::Map<const Eigen::Matrix3Xd>(run.x.data(), 3, run.natom);
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

void report_excesses(const JobData& jobs, const std::map<std::vector<int>, Excess>& by_jobs,
                     Report& report) {
  const Severity severity = jobs.layered ? Severity::note : Severity::warning;
  for (const auto& [blamed, excess] : by_jobs) {
    std::string text = describe(jobs, excess);
    if (blamed.size() > 1) {
      text += "; this job or " + std::string(jobs.job(blamed[1]).sgn_name.content());
    }
    report.add(severity, place_of(jobs, blamed.front()), std::move(text), blamed.front(), blamed);
  }
}

// A fault of most columns is none of single jobs.
void report_general_excess(const JobData& jobs, const Excess& worst, int count, Report& report) {
  report.add(jobs.layered ? Severity::note : Severity::warning, {zandor::job_list_name},
             counted(count, "coordinate") + " with a " + describe(jobs, worst) +
                 "; the molecule does not float freely, or the forces belong to other axes or to "
                 "another step");
}

}  // namespace

void check_net_force(const JobData& jobs, const Thresholds& limits, Report& report) {
  const zandor::RunData& run = jobs.run;
  const Frame frame = frame_of(run);
  std::map<int, Sums> all;
  for (int i = 1; i <= run.n6; ++i) {
    if (jobs.usable(i)) all[i] = sums_of(run, frame, i);
  }
  if (all.empty()) return;
  const Sums usual = usual_sums(all);
  std::vector<double> forces(static_cast<std::size_t>(run.n3), 0.0);
  std::vector<double> torques = forces;
  std::map<std::vector<int>, Excess> by_jobs;
  Excess worst;
  int looked_at = 0;
  int count = 0;
  for (int ih = 1; ih <= run.n3; ++ih) {
    if (!jobs.usable_column(ih)) continue;
    ++looked_at;
    const analysis::StepJobs pair = analysis::step_jobs(run, ih);
    const Sums column = (all[pair.plus] - all[pair.minus]) / (2.0 * run.dx);
    const auto place = static_cast<std::size_t>(ih - 1);
    forces[place] = largest(column.head<3>());
    torques[place] = largest(column.tail<3>());
    const Excess excess{largest(column), limits.net_force + rounding_of_sums(jobs, pair), ih,
                        torques[place] > forces[place]};
    if (excess.sum <= excess.allowed) continue;
    ++count;
    if (excess.sum > worst.sum) worst = excess;
    Excess& known = by_jobs[suspects(jobs, pair, largest(all[pair.plus] - usual),
                                     largest(all[pair.minus] - usual))];
    if (excess.sum > known.sum) known = excess;
  }
  report.figure("largest net force (Hartree/Bohr**2)",
                *std::max_element(forces.begin(), forces.end()));
  report.figure("largest net torque over the size of the molecule (Hartree/Bohr**2)",
                *std::max_element(torques.begin(), torques.end()));
  report.figure("net force of each coordinate (Hartree/Bohr**2)", std::move(forces));
  report.figure("net torque of each coordinate (Hartree/Bohr**2)", std::move(torques));
  if (2 * count >= looked_at) {
    report_general_excess(jobs, worst, count, report);
  } else {
    report_excesses(jobs, by_jobs, report);
  }
}

}  // namespace check
