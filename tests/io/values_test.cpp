#include "io/values.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

constexpr double infinite = std::numeric_limits<double>::infinity();

TEST(values, reads_every_spelling_of_a_real) {
  const struct {
    const char* token;
    double value;
  } cases[] = {
      {"0.0015", 0.0015},   {"1.5-3", 0.0015},
      {"1.5+3", 1500},      {"-1.5D+03", -1500},
      {"+2.5q1", 25},       {"7", 7},
      {".5", 0.5},          {"5.", 5},
      {"1e5", 1e5},         {"-.5E-1", -0.05},
      {"1e400", infinite},  {"-10.0D9223372036854775807", -infinite},
      {"1e-400", 0},        {"0e999", 0},
      {"0.0001-400", 0},    {"1e-99999999999999999999", 0},
      {"INF", infinite},    {"-infinity", -infinite},
      {"4.9d-324", 5e-324}, {"+1", 1},
      {"0.1", 0.1},         {"9007199254740993", 9007199254740992.0},
  };
  for (const auto& test : cases) {
    double value = -77;
    EXPECT_TRUE(io::parse_real(test.token, value)) << test.token;
    EXPECT_EQ(value, test.value) << test.token;
  }
  double value = 0;
  EXPECT_TRUE(io::parse_real("NaN", value) && std::isnan(value));
  EXPECT_TRUE(io::parse_real("-0.0", value) && value == 0 && std::signbit(value));
  EXPECT_TRUE(io::parse_real("-1d-400", value) && value == 0 && std::signbit(value));
}

TEST(values, refuses_what_is_no_real) {
  for (const char* token :
       {"",      "+",    "-",    ".",      "+-1",     "--1", "1e",    "1e+", "1d5x", "e5",
        "0x1p3", "1..2", "1.5f", "nan(1)", "infinit", "in",  "1e5.0", "1-",  "1,5",  "abc"}) {
    double value = 42;
    EXPECT_FALSE(io::parse_real(token, value)) << token;
    EXPECT_EQ(value, 42) << token;
  }
}

TEST(values, reads_integers_of_32_bits_only) {
  int value = 0;
  EXPECT_TRUE(io::parse_integer("+2147483647", value) && value == 2147483647);
  EXPECT_TRUE(io::parse_integer("-2147483648", value) && value == -2147483647 - 1);
  EXPECT_TRUE(io::parse_integer("007", value) && value == 7);
  for (const char* token :
       {"", "+", "-", "2147483648", "5.0", "5e0", "0x5", "+-5", "5 ", "99999999999999999999"}) {
    EXPECT_FALSE(io::parse_integer(token, value)) << token;
  }
}

}  // namespace
