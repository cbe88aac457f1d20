// The phases between reading and report, on run data made up here.
#include "zandor/vibrational_analysis.hpp"

#include <gtest/gtest.h>

#include <cmath>

#include "support/support.hpp"
#include "zandor/job_results.hpp"
#include "zandor/run_control.hpp"

namespace {

// Two atoms, step 0.01 Bohr, and the forces of the energy x K x / 2 with K(i,j) below.
constexpr double step = 0.01;
double constant(int i, int j) { return i == j ? 1.0 + 0.1 * i : 0.01 * (i + j); }

void fill(zandor::RunData& run, int disp_sign) {
  run.natom = 2;
  run.n3 = 6;
  run.n6 = 12;
  run.dx = step;
  run.disp_sign = disp_sign;
  zandor::allocate_run_arrays(run);
  for (int ih = 1; ih <= 6; ++ih) {
    run.sqtmass(ih) = ih < 4 ? 40.0 : 41.0;
    for (int jh = 1; jh <= 6; ++jh) {
      run.force.column(1, 2 * ih)[jh - 1] = -constant(ih, jh) * step;
      run.force.column(1, 2 * ih - 1)[jh - 1] = constant(ih, jh) * step;
    }
  }
  for (int a = 1; a <= 2; ++a) run.mass(a) = run.sqtmass(3 * a) * run.sqtmass(3 * a);
  run.x(3, 2) = 2.0;
}

TEST(force_constants, are_second_derivatives_with_the_sign_of_the_steps) {
  for (const int disp_sign : {1, -1, 0}) {
    zandor::RunData run;
    fill(run, disp_sign);
    run.force.column(1, 2)[4] += 4 * step;  // a difference that is not symmetric
    zandor::assemble_force_constants(run);
    const double sign = disp_sign == 1 ? 1.0 : -1.0;
    for (int i = 1; i <= 6; ++i) {
      for (int j = 1; j <= 6; ++j) {
        const double noise = (i == 1 && j == 5) || (i == 5 && j == 1) ? -1.0 : 0.0;
        EXPECT_NEAR(run.hess(i, j), sign * (constant(i, j) + noise), 1e-13);
      }
    }
  }
}

TEST(vibrations, stop_rather_than_print_what_is_not_finite) {
  zandor::RunData run;
  fill(run, 1);
  run.force.column(1, 2)[4] = 1e308;
  run.force.column(1, 1)[4] = -1e308;
  EXPECT_TRUE(support::stops(2,
                             "expected finite force constants, found -Infinity between coordinates "
                             "1 and 5 (jobs 1, 2, 9, 10)",
                             [&] { zandor::analyse_vibrations(run); }));
  fill(run, 1);
  for (int ih = 1; ih <= 6; ++ih) {
    run.sqtmass(ih) = 1.0;
    std::fill_n(run.force.column(1, 2 * ih), 6, -8e307 * step);  // whose sums overflow
    std::fill_n(run.force.column(1, 2 * ih - 1), 6, 8e307 * step);
  }
  EXPECT_TRUE(support::stops(2,
                             "expected every unprojected eigenvalue to converge, found number 1 "
                             "not converged after 30 iterations",
                             [&] { zandor::analyse_vibrations(run); }));
}

TEST(derived_jobs, take_the_forces_that_stand_in_their_source) {
  zandor::RunData run;
  fill(run, 1);
  run.nop = 1;
  run.op = {"op", {3, 3, 1}};
  run.atom_m = {"atom_m", {2, 1}};
  run.op(1, 2, 1) = -1.0;  // x of the image is -y
  run.op(2, 1, 1) = 1.0;
  run.op(3, 3, 1) = 1.0;
  run.atom_m(1, 1) = 2;
  run.atom_m(2, 1) = 1;
  run.jobs.resize(13);
  for (zandor::Job& job : run.jobs) job.is_calc = true;
  const auto derive = [&](std::size_t i, int source) {
    run.jobs[i] = {};
    run.jobs[i].calc_m = source;
    run.jobs[i].iops = 1;
    std::fill_n(run.force.column(1, i), 6, 0.0);
  };
  derive(2, 12);  // a computed job, read before
  derive(3, 2);   // derived already
  derive(4, 5);   // derived later: the zeros that stand there
  derive(5, 12);
  const double* const source = run.force.column(1, 12);
  zandor::derive_symmetry_jobs(run);
  EXPECT_EQ(run.force(1, 1, 2), -source[4]);
  EXPECT_EQ(run.force(1, 1, 3), -source[0]);
  EXPECT_EQ(run.force(3, 1, 4), 0.0);
  EXPECT_EQ(run.force(3, 1, 5), source[5]);
}

TEST(dipole_derivatives, are_positive_minus_negative_step_whatever_disp_sign_says) {
  for (const bool symm : {false, true}) {
    zandor::RunData run;
    fill(run, -1);
    run.symm = symm;
    run.tdip(2, 8) = 0.5 + 3 * step;
    run.tdip(2, 7) = 0.5 - 3 * step;
    zandor::differentiate_transition_dipoles(run);
    EXPECT_NEAR(run.tddip(2, 1, 2), symm ? 0.0 : 3.0, 1e-13);
    EXPECT_EQ(run.tddip(1, 1, 2), 0.0);
    if (symm) continue;
    run.tdip(3, 4) = 1.7e308;
    run.tdip(3, 3) = -1.7e308;
    EXPECT_TRUE(support::stops(2, "derivatives, found Infinity for coordinate 2 (jobs 3, 4)",
                               [&] { zandor::differentiate_transition_dipoles(run); }));
  }
}

}  // namespace
