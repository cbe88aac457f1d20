#include "check/support/context.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

#include "analysis/dipoles.hpp"
#include "analysis/median.hpp"
#include "check/support/findings.hpp"
#include "check/support/job_data.hpp"
#include "flib/com.hpp"
#include "flib/formtrm1.hpp"
#include "flib/units_of_measure.hpp"
#include "io/process.hpp"

namespace check {

namespace {

RawForceConstants difference_forces(const JobData& jobs) {
  const zandor::RunData& run = jobs.run;
  RawForceConstants raw{{}, Eigen::VectorXd::Zero(run.n3), {}};
  for (int k = 0; k < run.n3; ++k) {
    if (!jobs.usable_column(k + 1)) continue;
    if (raw.columns.empty()) raw.h.setZero(run.n3, run.n3);  // a list without files needs no memory
    const analysis::StepJobs pair = analysis::step_jobs(run, k + 1);
    raw.h.col(k) = (jobs.forces(pair.minus) - jobs.forces(pair.plus)) / (2.0 * run.dx);
    raw.rounding(k) =
        (jobs.rounding(pair.plus) + jobs.rounding(pair.minus)) / std::fabs(2.0 * run.dx);
    raw.columns.push_back(k);
  }
  return raw;
}

// At the displaced geometry, where the torque vanishes exactly. x: places from the centre of the
// atoms, Bohr; size: their root mean square length.
Sums sums_of(const JobData& jobs, int job, const Eigen::Matrix3Xd& x, double size) {
  const Eigen::Map<const Eigen::Matrix3Xd> forces(jobs.forces(job).data(), 3, x.cols());
  Eigen::Vector3d force = Eigen::Vector3d::Zero(), torque = force;
  for (Eigen::Index a = 0; a < x.cols(); ++a) {
    force += forces.col(a);
    torque += x.col(a).cross(forces.col(a));
  }
  const Eigen::Vector3d moved = jobs.step(job) * Eigen::Vector3d::Unit((job - 1) / 2 % 3);
  torque += moved.cross(forces.col((job - 1) / 6));
  if (size > 0.0) torque /= size;
  return (Sums() << force, torque).finished();
}

// The median of each sum over the jobs that are known.
Sums usual_sums(const NetForces& sums) {
  Sums usual;
  for (int k = 0; k < usual.size(); ++k) {
    const auto row = sums.of_job.row(k);
    std::vector<double> values(row.begin(), row.end());
    std::erase_if(values, [](double value) { return !std::isfinite(value); });
    usual(k) = analysis::median(std::move(values));
  }
  return usual;
}

// Takes the raw force constants of the context.
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
  sums.torque = sums.force;
  for (const int k : jobs.context.raw.columns) {
    const Sums column = (sums.of_job.col(2 * k + 1) - sums.of_job.col(2 * k + 2)).cwiseAbs() /
                        std::fabs(2.0 * run.dx);
    sums.force(k) = column.head<3>().maxCoeff();
    sums.torque(k) = column.tail<3>().maxCoeff();
  }
  sums.largest = sums.force.cwiseMax(sums.torque);
  sums.rounding = rounding_of_sums(run.natom, 1.0) * jobs.context.raw.rounding;
  return sums;
}

// Takes the raw force constants of the context and the masses and input of the run.
ProjectedModes project_modes(const JobData& jobs) {
  const zandor::RunData& run = jobs.run;
  const RawForceConstants& raw = jobs.context.raw;
  const Eigen::Map<const Eigen::VectorXd> mass(run.mass.data(), run.natom);
  if (!(mass.array() > 0.0).all()) return {"the projection needs the masses", {}, {}};
  if (!jobs.input) return {"the projection needs the input", {}, {}};
  if (std::ssize(raw.columns) < run.n3) return {"the projection needs all jobs", {}, {}};
  const Eigen::VectorXd root =
      mass.cwiseInverse().cwiseSqrt().replicate(1, 3).reshaped<Eigen::RowMajor>();
  ProjectedModes modes;
  Eigen::MatrixXd& projected = modes.force_constants;
  projected = root.asDiagonal() * (raw.h + raw.h.transpose()) * (root / 2.0).asDiagonal();
  Eigen::MatrixXd x = Eigen::Map<const Eigen::MatrixXd>(run.x.data(), 3, run.natom);
  Eigen::MatrixXd rigid(run.n3, 6);
  int info = 0;
  flib::com(run.natom, run.mass.data(), x.data(), info);
  flib::formtrm1(run.natom, run.mass.data(), x.data(), rigid.data());
  projected -= rigid * (rigid.transpose() * projected);
  projected -= (projected * rigid) * rigid.transpose();
  const Eigen::SelfAdjointEigenSolver<Eigen::MatrixXd> solver(projected, Eigen::EigenvaluesOnly);
  if (solver.info() != Eigen::Success) {
    return {"an eigenvalue of the projected force constants does not converge", {}, {}};
  }
  modes.eigenvalues = solver.eigenvalues();
  modes.missing.clear();
  return modes;
}

// The root mean square of (F(c) - F0(c)) / step + h(ih, c) over the columns, with F0 the forces of
// the reference. It holds the error of a one-sided difference, which is the same for both jobs of a
// coordinate.
double one_sided_deviation(const JobData& jobs, int job, const std::vector<int>& columns) {
  const Eigen::VectorXd change = (jobs.forces(job) - jobs.forces(0)) / jobs.step(job);
  const Eigen::VectorXd deviation =
      change(columns) + jobs.context.raw.h((job - 1) / 2, columns).transpose();
  return deviation.norm() / std::sqrt(static_cast<double>(columns.size()));
}

}  // namespace

// The order counts: each figure looks at those before it.
void form_context(JobData& jobs, const Thresholds& limits, bool with_modes) {
  jobs.context.raw = difference_forces(jobs);
  jobs.context.sums = sum_forces(jobs);
  jobs.context.common_cause = find_common_cause(jobs, limits);
  if (!with_modes) return;
  const auto stop = io::collect([&] { jobs.context.modes = project_modes(jobs); });
  if (stop) jobs.context.modes.missing = stop->message;
}

Eigen::MatrixXd RawForceConstants::asymmetry() const {
  Eigen::MatrixXd among = Eigen::MatrixXd::Zero(h.rows(), h.cols());
  among(columns, columns) = (h - h.transpose())(columns, columns).cwiseAbs();
  return among;
}

std::map<int, Eigen::Matrix3d> own_force_constants(const JobData& jobs) {
  std::map<int, Eigen::Matrix3d> blocks;
  for (int a = 0; a < jobs.run.natom; ++a) {
    if (jobs.usable_column(3 * a + 1) && jobs.usable_column(3 * a + 2) &&
        jobs.usable_column(3 * a + 3)) {
      blocks[a + 1] = jobs.context.raw.h.block<3, 3>(3 * a, 3 * a);
    }
  }
  return blocks;
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

std::vector<int> single_out(const JobData& jobs, const std::vector<int>& suspects,
                            const std::vector<int>& columns) {
  constexpr double stands_out = 2.0;
  if (suspects.size() < 2 || jobs.reference_forces.empty() || columns.empty()) return suspects;
  std::vector<std::pair<double, int>> deviations;
  for (const int job : suspects)
    deviations.emplace_back(one_sided_deviation(jobs, job, columns), job);
  std::stable_sort(deviations.rbegin(), deviations.rend());
  if (deviations[0].first < stands_out * deviations[1].first) return suspects;
  return {deviations[0].second};
}

double wavenumber(double eigenvalue) {
  return std::copysign(std::sqrt(std::fabs(eigenvalue)), eigenvalue) * flib::wavenumbers_per_au;
}

}  // namespace check
