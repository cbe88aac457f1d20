// Sum rules of exact models, and of models whose signs have been turned.
#include "analysis/sum_rules.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <random>
#include <span>

#include "analysis/dipoles.hpp"
#include "analysis/model.hpp"

namespace {

TEST(sum_rules, are_met_by_an_exact_model_whatever_the_labels) {
  for (const int disp_sign : {1, -1}) {
    zandor::RunData run = model::run_of(model::general(), disp_sign);
    const Eigen::Matrix3Xd dipoles = analysis::job_dipoles(run);
    EXPECT_LT(analysis::sum_rule_residual(run, dipoles).absolute, 1e-12);
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

// One dipole that is off, so far that the largest condition is 1.4 times a limit, or over 1.4.
TEST(sum_rules, are_missed_by_what_each_limit_allows) {
  const auto error_of = [](double noise, double digits, auto figure) {
    return [=](double size) {
      zandor::RunData run = model::run_of(model::general());
      std::mt19937 random(3);
      std::normal_distribution<double> error(0.0, noise);
      for (double& d : std::span(run.tdip.data(), run.tdip.size())) {
        d = std::round((d + error(random)) * digits) / digits;
      }
      for (double& d : run.dipole0) d = std::round(d * digits) / digits;
      run.tdip(1, 7) += std::round(size * digits) / digits;
      const auto residual = analysis::sum_rule_residual(run, analysis::job_dipoles(run));
      return std::pair(figure(residual), analysis::ResidualLimits().explain(residual));
    };
  };
  using Residual = analysis::SumRuleResidual;
  const struct {
    std::function<std::pair<double, bool>(double)> of;
    double limit;
  } cases[] = {{error_of(0.0, 1e12, [](const Residual& r) { return r.relative; }), 1e-2},
               {error_of(0.0, 1e4, [](const Residual& r) { return r.worst_ratio; }), 3.0},
               {error_of(1e-4, 1e12, [](const Residual& r) { return r.noise_ratio; }), 8.0}};
  for (const auto& [of, limit] : cases) {
    double within = 0.0, beyond = 1.0;
    for (int i = 0; i < 40; ++i) {
      const double size = (within + beyond) / 2.0;
      (of(size).second ? within : beyond) = size;
    }
    EXPECT_NEAR(of(within).first / limit, 1.0, 0.1);
  }
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

}  // namespace
