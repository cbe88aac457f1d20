#include "io/fields.hpp"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <random>
#include <string>

namespace {

constexpr double inf = std::numeric_limits<double>::infinity();

std::string fixed(double value, int width, int decimals) {
  char out[io::widest_field];
  return {out, io::fixed_field(out, value, width, decimals)};
}

std::string sci(double value, int width, int decimals) {
  char out[io::widest_field];
  return {out, io::sci_field(out, value, width, decimals)};
}

TEST(fields, round_pad_and_overflow) {
  const struct {
    std::string (*field)(double value, int width, int decimals);
    double value;
    int width, decimals;
    const char* text;
  } cases[] = {
      {fixed, 0.5291772490, 16, 10, "    0.5291772490"},
      {fixed, 99.996, 6, 2, "100.00"},
      {fixed, -0.001, 6, 2, " -0.00"},
      {fixed, 99.996, 5, 2, "*****"},
      {fixed, -9.99, 4, 2, "****"},
      {fixed, 1e300, 15, 8, "***************"},
      {fixed, std::nan(""), 6, 2, "   NaN"},
      {fixed, inf, 8, 2, "Infinity"},
      {fixed, inf, 7, 2, "    Inf"},
      {fixed, -inf, 9, 2, "-Infinity"},
      {fixed, -inf, 3, 1, "***"},
      {sci, 0.0, 15, 6, "   0.000000E+00"},
      {sci, -0.0, 15, 6, "  -0.000000E+00"},
      {sci, 1e-120, 15, 6, "   1.000000-120"},
      {sci, -9.9999999e99, 15, 6, "  -1.000000+100"},
      {sci, 9.99999951, 15, 6, "   1.000000E+01"},
      {sci, 9.9999994, 15, 6, "   9.999999E+00"},
      {sci, 1.5, 11, 6, "***********"},
      {sci, std::nan(""), 15, 6, "            NaN"},
      {sci, 5e-324, 15, 7, "  4.9406565-324"},
      {sci, -1.0, 13, 6, "-1.000000E+00"},
  };
  for (const auto& test : cases) {
    EXPECT_EQ(test.field(test.value, test.width, test.decimals), test.text) << test.value;
  }
}

// snprintf of the C library rounds the exact value, ties to even, and so must the fields.
TEST(fields, round_as_the_exact_value_says) {
  std::mt19937_64 random(1);
  const auto compare = [](double value) {
    char expected[512];
    std::snprintf(expected, sizeof expected, "%63.10f", value);
    if (std::string(expected).size() == 63) {
      ASSERT_EQ(fixed(value, 63, 10), expected);
    }
    std::snprintf(expected, sizeof expected, "%30.6E", value);
    std::string shown = expected;
    if (shown[shown.size() - 5] == 'E') shown = " " + shown.erase(shown.size() - 5, 1);
    ASSERT_EQ(sci(value, 30, 6), shown);
  };
  for (int i = 0; i < 50000; ++i) {
    const auto bits = static_cast<std::uint64_t>(random());
    const double any = std::bit_cast<double>(bits);
    if (std::isfinite(any)) compare(any);
    // Numbers of the size that reports hold, and halves of the last digit.
    const double usual =
        std::ldexp(static_cast<double>(bits >> 11), -53 - static_cast<int>(bits % 60));
    compare((bits & 1024) != 0 ? usual : -usual);
    const double tie = (static_cast<double>(bits % 100000) + 0.5) / 1024.0;
    compare(tie);
    compare(std::round(usual * 1e7) / 1e7 + 5e-8);
  }
}

}  // namespace
