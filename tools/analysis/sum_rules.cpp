#include "analysis/sum_rules.hpp"

#include <algorithm>
#include <cmath>

#include "analysis/dipoles.hpp"
#include "flib/units_of_measure.hpp"

namespace analysis {

namespace {

using Weights = Eigen::Matrix<double, 6, Eigen::Dynamic>;

// 6 x n3: the displacement of each coordinate in a shift along and a turn about x, y, z.
Weights rigid_displacements(const zandor::RunData& run) {
  const Eigen::Matrix3Xd x =
      Eigen::Map<const Eigen::Matrix3Xd>(run.xa.data(), 3, run.natom) / flib::angstrom_per_bohr;
  const Eigen::Vector3d centre = x.rowwise().mean();
  Weights weights(6, run.n3);
  for (Eigen::Index a = 0; a < run.natom; ++a) {
    for (Eigen::Index k = 0; k < 3; ++k) {
      const Eigen::Vector3d axis = Eigen::Vector3d::Unit(k);
      weights.row(k).segment<3>(3 * a) = axis;
      weights.row(3 + k).segment<3>(3 * a) = axis.cross(x.col(a) - centre);
    }
  }
  return weights;
}

// Per condition the sum over the jobs of |weight| times the rounding of the job.
Eigen::Matrix<double, sum_rule_count, 1> rounding_bounds(const zandor::RunData& run,
                                                         const Weights& weights) {
  const Eigen::VectorXd rounding = print_rounding(run);
  Eigen::Matrix<double, 6, 1> per_motion = Eigen::Matrix<double, 6, 1>::Zero();
  for (Eigen::Index ih = 1; ih <= run.n3; ++ih) {
    const double error = (rounding(2 * ih - 1) + rounding(2 * ih)) / std::abs(2.0 * run.dx);
    per_motion += weights.col(ih - 1).cwiseAbs() * error;
  }
  Eigen::Matrix<double, sum_rule_count, 1> bounds;
  for (Eigen::Index k = 0; k < 6; ++k) bounds.segment<3>(3 * k).setConstant(per_motion(k));
  bounds.tail<9>().array() += rounding(0);
  return bounds;
}

}  // namespace

SumRuleVectors sum_rule_terms(const zandor::RunData& run, const Eigen::Matrix3Xd& dipoles) {
  const Weights weights = rigid_displacements(run);
  SumRuleVectors terms = SumRuleVectors::Zero(sum_rule_count, run.n6 + 1);
  for (Eigen::Index k = 0; k < 3; ++k) {
    terms.col(0).segment<3>(9 + 3 * k) = -Eigen::Vector3d::Unit(k).cross(dipoles.col(0));
  }
  for (int ih = 1; ih <= run.n3; ++ih) {
    const StepJobs jobs = step_jobs(run, ih);
    for (Eigen::Index k = 0; k < 6; ++k) {
      const double weight = weights(k, ih - 1) / (2.0 * run.dx);
      terms.col(jobs.plus).segment<3>(3 * k) = weight * dipoles.col(jobs.plus);
      terms.col(jobs.minus).segment<3>(3 * k) = -weight * dipoles.col(jobs.minus);
    }
  }
  return terms;
}

Eigen::Matrix<double, sum_rule_count, 1> sum_rule_errors(const zandor::RunData& run) {
  const Weights weights = rigid_displacements(run);
  // The jobs derived from one have its error.
  Eigen::MatrixXd of_job = Eigen::MatrixXd::Zero(6, run.n6 + 1);
  of_job.col(0).tail<3>().setOnes();
  for (int i = 1; i <= run.n6; ++i) {
    of_job.col(computed_source(run, i)) +=
        weights.col((i - 1) / 2).cwiseAbs() / std::abs(2.0 * run.dx);
  }
  Eigen::Matrix<double, sum_rule_count, 1> errors;
  for (Eigen::Index k = 0; k < 6; ++k) errors.segment<3>(3 * k).setConstant(of_job.row(k).norm());
  return errors;
}

SumRuleResidual sum_rule_residual(const zandor::RunData& run, const Eigen::Matrix3Xd& dipoles) {
  const SumRuleVectors terms = sum_rule_terms(run, dipoles);
  // The two jobs of a coordinate count as one term: with a large dipole they nearly cancel.
  SumRuleVectors differences(sum_rule_count, run.n3 + 1);
  differences.col(0) = terms.col(0);
  for (Eigen::Index ih = 1; ih <= run.n3; ++ih) {
    differences.col(ih) = terms.col(2 * ih - 1) + terms.col(2 * ih);
  }
  const Eigen::Matrix<double, sum_rule_count, 1> sum = differences.rowwise().sum();
  SumRuleResidual residual;
  residual.absolute = sum.norm();
  residual.translation = sum.head<9>().norm();
  const SignFreeSteps steps = sign_free_steps(run, dipoles);
  for (Eigen::Index ih = 1; ih <= run.n3; ++ih) {
    const double change = (dipoles.col(2 * ih) - dipoles.col(2 * ih - 1)).norm();
    if (steps.change(ih - 1) < change) differences.col(ih) *= steps.change(ih - 1) / change;
  }
  const double all_terms = differences.norm();
  if (all_terms > 0.0) residual.relative = residual.absolute / all_terms;
  const double shift_terms = differences.topRows<9>().norm();
  if (shift_terms > 0.0) residual.translation_relative = residual.translation / shift_terms;
  const auto bounds = rounding_bounds(run, rigid_displacements(run));
  residual.bound = bounds.norm();
  for (int i = 0; i < sum_rule_count; ++i) {
    if (sum(i) == 0.0) continue;
    residual.worst_ratio = std::max(residual.worst_ratio, std::abs(sum(i)) / bounds(i));
    if (i < 9) residual.translation_ratio = residual.worst_ratio;
  }
  if (const double noise = dipole_noise(steps); noise > 0.0) {
    residual.noise_ratio = (sum.array() / sum_rule_errors(run).array()).abs().maxCoeff() / noise;
  }
  return residual;
}

}  // namespace analysis
