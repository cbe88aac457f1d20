// Rigid motions, vibrations and Herzberg-Teller terms of exact models. Tolerances: the models are
// good to rounding (1e-16 of the largest number), divided by the step (0.01).
#include "analysis/vibrations.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>
#include <span>

#include "analysis/dipoles.hpp"
#include "analysis/herzberg_teller.hpp"
#include "analysis/model.hpp"
#include "analysis/prepared_dipoles.hpp"
#include "flib/units_of_measure.hpp"

namespace {

struct Found {
  Eigen::VectorXd frequency, dmu_dq;
};

Eigen::VectorXd lengths(const Eigen::Matrix3Xd& of) { return of.colwise().norm().transpose(); }

Found analyse(const model::Molecule& molecule, int disp_sign = 1) {
  const zandor::RunData run = model::run_of(molecule, disp_sign);
  const analysis::Vibrations vibrations =
      analysis::exact_vibrations(run, analysis::rigid_motions(run));
  const Eigen::Matrix3Xd gradient = analysis::dipole_gradient(run, analysis::job_dipoles(run));
  const auto terms =
      analysis::herzberg_teller(run, gradient, {vibrations.frequency, vibrations.modes});
  Eigen::VectorXd along = lengths(gradient * analysis::vibration_directions(run));
  if (disp_sign != 1) along.reverseInPlace();  // from the highest to the lowest
  EXPECT_TRUE(along.isApprox(lengths(terms.dmu_dQ), 1e-9));
  return {vibrations.frequency, lengths(terms.dmu_dq)};
}

Eigen::Matrix3d turn() {
  return Eigen::AngleAxisd(0.7, Eigen::Vector3d(1, -2, 0.5).normalized()).toRotationMatrix();
}

TEST(vibrations, follow_the_molecule_through_turns_shifts_permutations_and_masses) {
  const model::Molecule molecule = model::general();
  const Found expected = analyse(molecule);
  EXPECT_GT(expected.frequency(0) * flib::wavenumbers_per_au, 100.0);
  EXPECT_GT(expected.dmu_dq.minCoeff(), 1e-4);
  model::Molecule changed = molecule;
  Eigen::PermutationMatrix<5> swap;
  swap.indices() << 3, 0, 4, 2, 1;
  changed.x = ((turn() * molecule.x).colwise() + Eigen::Vector3d(3, -20, 7)) * swap;
  changed.mass = swap.transpose() * molecule.mass;
  changed.charge = swap.transpose() * molecule.charge;
  const Found found = analyse(changed);
  EXPECT_LT((found.frequency - expected.frequency).cwiseAbs().maxCoeff(), 1e-11);
  EXPECT_LT((found.dmu_dq - expected.dmu_dq).cwiseAbs().maxCoeff(), 1e-10);
  const Found relabelled = analyse(molecule, -1);
  EXPECT_EQ(relabelled.frequency, expected.frequency);
  EXPECT_EQ(relabelled.dmu_dq, expected.dmu_dq);
  model::Molecule heavy = molecule;
  heavy.mass *= 4.0;
  EXPECT_LT((analyse(heavy).frequency - expected.frequency / 2.0).cwiseAbs().maxCoeff(), 1e-13);
}

TEST(vibrations, are_what_the_rigid_motions_leave) {
  model::Molecule atom = model::general();
  atom.x = atom.x.leftCols(1).eval();
  atom.mass = atom.mass.head(1).eval();
  atom.charge = atom.charge.head(1).eval();
  const std::pair<model::Molecule, int> cases[] = {
      {model::general(), 6}, {model::dark_square(), 6}, {model::line(), 5}, {atom, 3}};
  for (auto [molecule, rank] : cases) {
    molecule.x = turn() * molecule.x;
    const zandor::RunData run = model::run_of(molecule);
    const analysis::RigidMotions rigid = analysis::rigid_motions(run);
    EXPECT_EQ(rigid.rank, rank);
    // Places as they are printed, in Angstrom with 5 decimals, are a hair off the line.
    zandor::RunData coarse = model::run_of(molecule);
    for (double& x : std::span(coarse.x.data(), coarse.x.size())) {
      x = std::round(x * flib::angstrom_per_bohr * 1e5) / 1e5 / flib::angstrom_per_bohr;
    }
    EXPECT_EQ(analysis::rigid_motions(coarse).rank, rank);
    EXPECT_TRUE((rigid.basis.transpose() * rigid.basis).isIdentity(1e-13));
    const analysis::Vibrations vibrations = analysis::exact_vibrations(run, rigid);
    ASSERT_EQ(vibrations.frequency.size(), run.n3 - rank);
    EXPECT_EQ(analyse(molecule).dmu_dq.size(), run.n3 - rank);
    if (run.natom == 1) continue;
    EXPECT_LT(analysis::rigid_weights(rigid, vibrations.modes).maxCoeff(), 1e-25);
    EXPECT_NEAR(analysis::rigid_weights(rigid, rigid.basis).minCoeff(), 1.0, 1e-13);
  }
}

// Each limit from either side, 1.4 times of it. A line whose places are rounded is 5, see above.
TEST(rigid_motions, are_judged_by_limits_that_hold) {
  model::Molecule bent = model::line();
  bent.x(2, 1) += 0.01;  // 0.3 degrees
  EXPECT_EQ(analysis::rigid_motions(model::run_of(bent)).rank, 6);
  for (const double limit : {1.0 / 1.4, 1.4}) {
    zandor::RunData apart = model::run_of(model::general());
    apart.xa(1, 2) += limit * 1e-3 / 0.8;  // a fifth goes into the shift of all
    EXPECT_EQ(analysis::turned_geometry(apart).empty(), limit < 1.0);
    model::Molecule top = model::triangle();
    top.mass(0) *= 1.0 + 3.0 * limit * 1e-4;
    top.x = Eigen::AngleAxisd(0.4, Eigen::Vector3d::UnitZ()) * top.x;
    const double angle = analysis::principal_axes(model::run_of(top)).largest_angle;
    EXPECT_NEAR(angle, limit < 1.0 ? 0.0 : 0.4 * 180.0 / std::numbers::pi, 1e-3);
    zandor::RunData noisy = model::run_of(model::general());
    std::mt19937 random(1);
    std::normal_distribution<double> error(0.0, limit * 2e-3);
    for (double& d : std::span(noisy.tdip.data(), noisy.tdip.size())) d += error(random);
    const double noise =
        analysis::dipole_noise(analysis::sign_free_steps(noisy, analysis::job_dipoles(noisy)));
    EXPECT_NEAR(noise, limit < 1.0 ? limit * 2e-3 : 0.0, 3e-4);
  }
}

// Dipoles of five decimals that change by `scale` times those of the model, about a value between
// two printed ones.
TEST(vibrations, have_strength_where_it_is_more_than_rounding) {
  const zandor::RunData exact = model::run_of(model::general());
  const analysis::Vibrations vibrations =
      analysis::exact_vibrations(exact, analysis::rigid_motions(exact));
  const analysis::Eigenmodes modes{vibrations.frequency, vibrations.modes};
  const auto strengths = [&](double scale) -> Eigen::VectorXd {
    zandor::RunData run = model::run_of(model::general());
    for (double& value : run.dipole0) value = std::round(1e5 * value) / 1e5;
    for (int i = 1; i <= run.n6; ++i) {
      for (int k = 1; k <= 3; ++k) {
        const double change =
            scale * (exact.tdip(k, i) - exact.dipole0[static_cast<std::size_t>(k - 1)]);
        run.tdip(k, i) = std::round(1e5 * (change + 0.2000049)) / 1e5;
      }
    }
    return analysis::herzberg_teller(
               run, analysis::dipole_gradient(run, analysis::job_dipoles(run)), modes)
        .strength;
  };
  // With half or twice the floor the second or the third number is another.
  for (const auto& [scale, without] : {std::pair(0.1, 0), {0.01, 0}, {0.003, 7}, {0.001, 9}}) {
    EXPECT_EQ((strengths(scale).array() == 0.0).count(), without) << scale;
  }
  EXPECT_TRUE(strengths(0.1).isApprox(0.01 * strengths(1.0), 0.05));
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
  // A little heavier on one side their frequencies part.
  for (const double apart : {0.07, 0.14}) {
    model::Molecule split = model::triangle();
    split.charge << std::sqrt(apart * 5.5e-4), std::sqrt(apart * 5.5e-4), 0.0;
    const zandor::RunData of = model::run_of(split);
    const auto parted = analysis::exact_vibrations(of, analysis::rigid_motions(of));
    EXPECT_EQ(analysis::degenerate_groups(parted).empty(), apart > 0.1);
  }
  // Springs k = 0.3: omega**2 = 3k/m of the breathing mode, 3k/2m of the pair.
  EXPECT_NEAR(vibrations.frequency(2), std::sqrt(0.9 / 2000), 1e-14);
  EXPECT_NEAR(vibrations.frequency(0), std::sqrt(0.45 / 2000), 1e-14);
}

}  // namespace
