// Single values in the spellings that input files may use. Independent of the locale.
#pragma once

#include <algorithm>
#include <string_view>

#include "io/exact_arithmetic.hpp"

namespace io {

// Optional sign and decimal digits, nothing else. False when malformed or beyond 32 bits;
// `value` is then unchanged.
bool parse_integer(std::string_view token, int& value);

// Decimal number with an optional point and an exponent after E, D or Q in either case or directly
// by its sign (1.5-3 is 0.0015); NaN, Inf, Infinity in any case. Nearest double; a magnitude too
// large becomes infinity, one too small zero. False when malformed; `value` is then unchanged.
bool parse_real(std::string_view token, double& value);

// Optional point, T or F in either case, then anything. False when malformed.
bool parse_logical(std::string_view token, bool& value);

constexpr bool is_digit(char c) { return c >= '0' && c <= '9'; }

// The capital letters A-Z turned into small ones; no other character changes.
constexpr char lowered(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; }

// Whether two texts differ at most in the case of letters.
constexpr bool equal_in_any_case(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](char x, char y) { return lowered(x) == lowered(y); });
}

}  // namespace io
