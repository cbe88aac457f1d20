// Rigid motions, vibrations and Herzberg-Teller terms of exact models. Tolerances: the models are
// good to rounding (1e-16 of the largest number), divided by the step (0.01).
#include "vibrations.hpp"

#include <gtest/gtest.h>

#include <cmath>

#include "analysis/model.hpp"
#include "dipoles.hpp"
#include "flib/units_of_measure.hpp"
#include "herzberg_teller.hpp"

namespace {

struct Found {
  Eigen::VectorXd frequency, dmu_dq;
};

Found analyse(const model::Molecule& molecule, int disp_sign = 1) {
  const zandor::RunData run = model::run_of(molecule, disp_sign);
  const analysis::Vibrations vibrations =
      analysis::exact_vibrations(run, analysis::rigid_motions(run));
  const auto terms = analysis::herzberg_teller(
      run, analysis::dipole_gradient(run, analysis::job_dipoles(run)), vibrations);
  return {vibrations.frequency, terms.dmu_dq.colwise().norm().transpose()};
}

Eigen::Matrix3d about(double angle, const Eigen::Vector3d& axis) {
  return Eigen::AngleAxisd(angle, axis).toRotationMatrix();
}

Eigen::Matrix3d turn() { return about(0.7, Eigen::Vector3d(1, -2, 0.5).normalized()); }

TEST(vibrations, of_a_turned_shifted_permuted_molecule_are_the_same) {
  const model::Molecule molecule = model::general();
  const Found expected = analyse(molecule);
  ASSERT_EQ(expected.frequency.size(), 9);
  EXPECT_GT(expected.frequency(0) * flib::wavenumbers_per_au, 100.0);
  EXPECT_GT(expected.dmu_dq.minCoeff(), 1e-4);
  std::vector<std::pair<const char*, model::Molecule>> same(3, {"", molecule});
  same[0].first = "turned";
  same[0].second.x = turn() * molecule.x;
  same[1].first = "shifted";
  same[1].second.x.colwise() += Eigen::Vector3d(3, -20, 7);
  same[2].first = "permuted";
  Eigen::PermutationMatrix<5> swap;
  swap.indices() << 3, 0, 4, 2, 1;
  same[2].second = {molecule.x * swap, swap.transpose() * molecule.mass,
                    swap.transpose() * molecule.charge};
  for (const auto& [what, changed] : same) {
    const Found found = analyse(changed);
    EXPECT_LT((found.frequency - expected.frequency).cwiseAbs().maxCoeff(), 1e-11) << what;
    EXPECT_LT((found.dmu_dq - expected.dmu_dq).cwiseAbs().maxCoeff(), 1e-10) << what;
  }
  const Found relabelled = analyse(molecule, -1);
  EXPECT_LT((relabelled.dmu_dq - expected.dmu_dq).cwiseAbs().maxCoeff(), 1e-10);
}

TEST(vibrations, halve_when_all_masses_are_four_times_as_large) {
  model::Molecule heavy = model::general();
  const Found light = analyse(heavy);
  heavy.mass *= 4.0;
  EXPECT_LT((analyse(heavy).frequency - light.frequency / 2.0).cwiseAbs().maxCoeff(), 1e-13);
  // |dmu/dq| = |dmu/dQ| / sqrt(omega): 1/2 over the root of 1/2.
  EXPECT_LT((analyse(heavy).dmu_dq - light.dmu_dq * std::sqrt(0.5)).cwiseAbs().maxCoeff(), 1e-12);
}

TEST(vibrations, are_what_the_rigid_motions_leave) {
  model::Molecule atom = model::general();
  atom.x = atom.x.leftCols(1).eval();
  const std::pair<model::Molecule, int> cases[] = {
      {model::general(), 6}, {model::dark_square(), 6}, {model::line(), 5}, {atom, 3}};
  for (auto [molecule, rank] : cases) {
    molecule.x = turn() * molecule.x;
    const zandor::RunData run = model::run_of(molecule);
    const analysis::RigidMotions rigid = analysis::rigid_motions(run);
    EXPECT_EQ(rigid.rank, rank);
    const Eigen::MatrixXd product = rigid.basis.transpose() * rigid.basis;
    EXPECT_TRUE(product.isIdentity(1e-13));
    const analysis::Vibrations vibrations = analysis::exact_vibrations(run, rigid);
    ASSERT_EQ(vibrations.frequency.size(), run.n3 - rank);
    if (run.natom == 1) continue;
    EXPECT_LT(analysis::rigid_weights(rigid, vibrations.modes).maxCoeff(), 1e-25);
    const Eigen::VectorXd turning = rigid.basis.col(rank - 1);
    EXPECT_NEAR(analysis::rigid_weight(rigid, turning), 1.0, 1e-13);
  }
}

TEST(vibrations, are_paired_with_the_modes_of_the_report) {
  const zandor::RunData run = model::run_of(model::triangle());
  const analysis::Vibrations vibrations =
      analysis::exact_vibrations(run, analysis::rigid_motions(run));
  EXPECT_EQ(vibrations.report_mode, (std::vector<int>{7, 8, 9}));
  // The report's eigenvalues are good to 1.5e-11, those here are about 3e-4: mixed by 1e-7 at most.
  EXPECT_GT(vibrations.overlap.minCoeff(), 1.0 - 1e-12);
  const Eigen::Map<const Eigen::VectorXd> breathing(run.cp.column(9), 9);
  EXPECT_GT(breathing.dot(vibrations.modes.col(2)), 0.0);
  const auto groups = analysis::degenerate_groups(vibrations);
  ASSERT_EQ(groups.size(), 1U);
  EXPECT_EQ(groups[0], (std::vector<Eigen::Index>{0, 1}));
  // Springs k = 0.3: omega**2 = 3k/m of the breathing mode, 3k/2m of the pair.
  EXPECT_NEAR(vibrations.frequency(2), std::sqrt(0.9 / 2000), 1e-14);
  EXPECT_NEAR(vibrations.frequency(0), std::sqrt(0.45 / 2000), 1e-14);
}

TEST(principal_axes, are_compared_with_the_given_ones) {
  model::Molecule square = model::dark_square();
  square.mass.setConstant(2000);
  // Turned about its own axis, along which the moments of inertia are equal: nothing to see.
  square.x = about(0.4, Eigen::Vector3d::UnitZ()) * square.x;
  EXPECT_LT(analysis::principal_axes(model::run_of(square)).largest_angle, 1e-4);
  square.x = about(0.2, Eigen::Vector3d::UnitX()) * square.x;
  const analysis::PrincipalAxes turned = analysis::principal_axes(model::run_of(square));
  EXPECT_NEAR(turned.largest_angle, 0.2 * 180 / 3.14159265358979, 1e-6);
  // Moments I, I, 2I: the tensor's element yz is I sin cos, its largest diagonal one I (1 +
  // cos**2).
  EXPECT_NEAR(turned.off_diagonal, std::sin(0.4) / 2 / (1 + std::pow(std::cos(0.2), 2)), 1e-12);
  EXPECT_NEAR(turned.moments(2), 4 * 2000 * 2 * 1.44, 1e-8);
}

TEST(geometry_mismatch, sees_turns_but_no_shifts) {
  zandor::RunData run = model::run_of(model::general());
  Eigen::Map<Eigen::Matrix3Xd> sign_file(run.xa.data(), 3, run.natom);
  sign_file.colwise() += Eigen::Vector3d(1, 2, 3);
  EXPECT_LT(analysis::geometry_mismatch(run), 1e-14);
  sign_file = about(0.01, Eigen::Vector3d::UnitX()) * sign_file;
  EXPECT_GT(analysis::geometry_mismatch(run), 5e-3);
}

TEST(herzberg_teller, knows_limits_of_temperature) {
  EXPECT_EQ(analysis::thermal_factor(0.01, 0.0), 1.0);
  EXPECT_NEAR(analysis::thermal_factor(0.01, 1.0), 1.0, 1e-15);
  // Hot: coth(x) is 1/x + x/3.
  const double x = 0.001 / (2 * 3.1668115634556e-6 * 3000);
  EXPECT_NEAR(analysis::thermal_factor(0.001, 3000.0), 1 / x + x / 3, 1e-5);
  EXPECT_NEAR(analysis::debye_per_angstrom_root_amu, 205.06, 0.005);
}

}  // namespace
