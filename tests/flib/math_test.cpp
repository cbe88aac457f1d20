#include "flib/math.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <vector>

namespace {

double sum(const std::vector<double>& terms) {
  return flib::ri_sum_d(static_cast<int>(terms.size()), terms.data());
}

TEST(ri_sum_d, resolves_terms_relative_to_the_largest) {
  EXPECT_EQ(sum({0.0, -0.0}), 0.0);
  EXPECT_EQ(sum({-3.5}), -3.5);
  EXPECT_EQ(sum({1.0, 1e-15}), 1.0 + 1e-15);
  EXPECT_EQ(sum({1.0, 9e-17}), 1.0);  // below 1 / rscale, rscale = 10**16
  EXPECT_EQ(sum({1.0, 9.9e-16, 9.9e-16}), 1.0 * 1.0000000000000018e16 / 1e16);
  EXPECT_EQ(sum(std::vector<double>(10, 0.1)), 0.1 * 1e16 / 1e15);
}

TEST(ri_sum_d, does_not_depend_on_the_order_of_terms) {
  std::vector<double> terms(1000);
  for (std::size_t i = 0; i < 1000; ++i) {
    terms[i] = std::sin(static_cast<double>(i)) * static_cast<double>(i % 30);
  }
  const double forward = sum(terms);
  std::reverse(terms.begin(), terms.end());
  EXPECT_EQ(sum(terms), forward);
  // Each of the 1000 terms loses less than 30 / 10**13.
  EXPECT_NEAR(forward, std::accumulate(terms.begin(), terms.end(), 0.0), 3e-9);
}

TEST(ri_sum_d, never_turns_infinities_into_integers) {
  const double inf = std::numeric_limits<double>::infinity();
  EXPECT_EQ(sum({1.0, inf}), inf);
  EXPECT_TRUE(std::isnan(sum({1.0, std::nan("")})));
  EXPECT_TRUE(std::isnan(sum({inf, -inf})));
}

}  // namespace
