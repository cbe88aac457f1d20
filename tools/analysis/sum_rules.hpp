// Exact sum rules of the transition dipole, and by how much the jobs miss them.
//
// A transition dipole does not change when the molecule is shifted, and turns with it when it is
// turned. So, with R_a counted from the centre of the atoms and k, c = x, y, z (18 conditions):
//   T(c,k): sum over atoms of dmu_c/dR_ak = 0                                              [e]
//   R(c,k): sum over atoms of ((e_k x R_a) . grad_a) mu_c - (e_k x mu0)_c = 0              [e Bohr]
// They hold for every molecule that floats freely, at any geometry. The dipoles are linear in them:
// each job adds a column of 18 numbers, and a turned sign shows as twice that column.
#pragma once

#include <Eigen/Dense>
#include <limits>

#include "zandor/run_data.hpp"

namespace analysis {

// 18 rows: T(x,x), T(y,x), T(z,x), T(x,y), ..., T(z,z), then R in the same order, atomic units.
inline constexpr int sum_rule_count = 18;
using SumRuleVectors = Eigen::Matrix<double, sum_rule_count, Eigen::Dynamic>;

// A residual that is no larger part of its terms always passes. Print rounding is not the only
// error: where jobs print many digits, the thresholds to which they have converged and the third
// derivatives that a step of finite length takes in stand above it in sound jobs. And what adds no
// more than this, a turned sign included, changes the gradient as a whole by no more than about it.
inline constexpr double residual_allowed = 1e-2;

// Noise of 1e-4 in every dipole comes to 4.4 at most where all jobs are computed (7600
// directories), and to 6.5 where many are derived.
inline constexpr double noise_allowed = 8.0;

struct SumRuleResidual {
  double absolute = 0.0;     // root of the sum of the squares of the 18 conditions, atomic units
  double translation = 0.0;  // the same of T alone, e
  // `relative` and `worst_ratio` of T alone, which holds for layered jobs, too.
  double translation_relative = 0.0;
  double translation_ratio = 0.0;
  // absolute over the root of the sum of the squares of all terms that the 18 sums are made of:
  // about 1 for unrelated numbers. 0 where all are zero. A turned sign makes no term larger
  // (sign_free_steps).
  double relative = 0.0;
  // What print rounding alone may make of `absolute`: per condition the sum of its weights times
  // half a last digit / dx (print_rounding), of these the root of the sum of the squares. It is the
  // worst case, all errors in one direction.
  double bound = 0.0;
  // The largest of the 18 ratios of a condition to its own bound. Print rounding gives 1 at most.
  double worst_ratio = 0.0;

  // The largest ratio of a condition to what the noise of the dipoles (dipole_noise) makes of it in
  // the root mean square; infinite where they have none.
  double noise_ratio = std::numeric_limits<double>::infinity();
};

// What counts as explained by print rounding and the other errors of the jobs: no condition stands
// above `bounds` times its bound, none above `noise` times its noise, or the residual is `relative`
// of its terms at most.
struct ResidualLimits {
  double bounds = 3.0;
  double relative = residual_allowed;
  double noise = noise_allowed;
  bool explain(const SumRuleResidual& residual) const {
    return residual.worst_ratio <= bounds || residual.relative <= relative ||
           residual.noise_ratio <= noise;
  }
};

// 18 x (n6 + 1): what the dipole of each job (column; 0 is the reference) adds to the conditions.
// dipoles as in dipoles.hpp. The sum of the columns is the residual.
SumRuleVectors sum_rule_terms(const zandor::RunData& run, const Eigen::Matrix3Xd& dipoles);

// What independent errors of 1 au in all components of the dipoles of computed jobs make of each
// condition in the root mean square, at most.
Eigen::Matrix<double, sum_rule_count, 1> sum_rule_errors(const zandor::RunData& run);

// The residual of the dipoles of all jobs (derived ones filled in); takes natom, xa, dx, disp_sign
// and, for the bound, jobs, tdip and dipole0 of the run.
SumRuleResidual sum_rule_residual(const zandor::RunData& run, const Eigen::Matrix3Xd& dipoles);

}  // namespace analysis
