// Sum rules of exact models, and of models whose signs have been turned.
#include "analysis/sum_rules.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>

#include "analysis/dipoles.hpp"
#include "analysis/model.hpp"
#include "analysis/turned_signs.hpp"

namespace {

TEST(sum_rules, are_met_by_an_exact_model_whatever_the_labels) {
  for (const int disp_sign : {1, -1}) {
    zandor::RunData run = model::run_of(model::general(), disp_sign);
    const Eigen::Matrix3Xd dipoles = analysis::job_dipoles(run);
    EXPECT_LT(analysis::sum_rule_residual(run, dipoles).absolute, 1e-12);
    EXPECT_TRUE(analysis::find_turned_signs(run, dipoles).fine_as_read());
    run.disp_sign = -disp_sign;
    EXPECT_GT(analysis::sum_rule_residual(run, dipoles).relative, 0.1) << "labels the wrong way";
  }
}

TEST(sum_rules, are_missed_by_print_rounding_no_more_than_it_may) {
  zandor::RunData run = model::run_of(model::general());
  // Five decimals: whatever the digits, no condition is missed by more than its bound.
  for (double& d : run.dipole0) d = std::round(d * 1e5) / 1e5;
  std::for_each_n(run.tdip.data(), run.tdip.size(),
                  [](double& d) { d = std::round(d * 1e5) / 1e5; });
  const auto rounded = analysis::sum_rule_residual(run, analysis::job_dipoles(run));
  EXPECT_GT(rounded.worst_ratio, 1e-3);
  EXPECT_LE(rounded.worst_ratio, 1.0);
}

TEST(print_rounding, is_half_a_last_digit) {
  // Two dipoles and what printing may have done to them: nothing printed, five decimals, whole
  // numbers, five significant digits.
  for (const auto& [first, second, of_first, of_second] :
       std::vector<std::array<double, 4>>{{0.0, 0.0, 0.0, 0.0},
                                          {-1.50003, 0.00012, 5e-6, 5e-6},
                                          {12.0, 7.0, 0.5, 0.5},
                                          {1.2345e-1, 1.2345e-4, 5e-6, 5e-9}}) {
    zandor::RunData run = model::run_of(model::line());
    std::fill_n(run.tdip.data(), run.tdip.size(), 0.0);
    run.dipole0 = {};
    run.tdip(1, 1) = first;
    run.tdip(3, 2) = second;
    const Eigen::VectorXd rounding = analysis::print_rounding(run);
    EXPECT_DOUBLE_EQ(rounding(1), of_first) << first;
    EXPECT_DOUBLE_EQ(rounding(2), of_second) << second;
  }
}

// Turns the signs of some jobs and looks for them.
analysis::TurnedSigns found_again(const zandor::RunData& run, const std::vector<int>& jobs) {
  Eigen::Matrix3Xd dipoles = analysis::job_dipoles(run);
  analysis::turn_signs(run, jobs, dipoles);
  return analysis::find_turned_signs(run, dipoles);
}

TEST(turned_signs, are_named_in_a_bright_state) {
  const zandor::RunData run = model::run_of(model::general());
  for (const std::vector<int>& jobs :
       std::vector<std::vector<int>>{{0}, {1}, {17}, {30}, {3, 4}, {2, 9, 16, 23, 30}}) {
    const analysis::TurnedSigns signs = found_again(run, jobs);
    EXPECT_FALSE(signs.fine_as_read());
    EXPECT_TRUE(signs.certain());
    EXPECT_EQ(signs.jobs, jobs);
    EXPECT_LT(signs.settled.absolute, 1e-12);
  }
}

TEST(turned_signs, are_named_in_a_dark_state) {
  zandor::RunData run = model::run_of(model::dark());
  run.jobs[30].is_calc = false;  // goes with its source
  run.jobs[30].calc_m = 29;
  for (int job = 1; job <= 29; ++job) {
    const analysis::TurnedSigns signs = found_again(run, {job});
    EXPECT_FALSE(signs.fine_as_read()) << job;
    EXPECT_TRUE(signs.certain()) << job;
    EXPECT_EQ(signs.jobs, std::vector<int>{job});
  }
  EXPECT_EQ(found_again(run, {1, 10}).jobs, (std::vector<int>{1, 10}));
}

TEST(turned_signs, do_not_explain_everything) {
  // Two atoms of opposite charge side by side: without both contributions the sums are zero, too.
  const analysis::TurnedSigns doubtful = found_again(model::run_of(model::dark_square()), {7});
  EXPECT_TRUE(doubtful.found());
  EXPECT_FALSE(doubtful.certain());
  const zandor::RunData run = model::run_of(model::general());
  Eigen::Matrix3Xd dipoles = analysis::job_dipoles(run);
  dipoles.col(7) = Eigen::Vector3d(0.3, 0.1, -0.2);  // another state
  const analysis::TurnedSigns signs = analysis::find_turned_signs(run, dipoles);
  EXPECT_FALSE(signs.fine_as_read());
  EXPECT_FALSE(signs.found());
}

}  // namespace
