#include "io/fields.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace io {

namespace {

// A double in fixed form has up to 309 digits before the point.
constexpr int longest_number = 400;

char* right_justified(char* out, std::string_view text, int width) {
  const auto columns = static_cast<std::size_t>(width);
  if (text.size() > columns) return std::fill_n(out, width, '*');
  out = std::fill_n(out, columns - text.size(), ' ');
  return std::copy(text.begin(), text.end(), out);
}

char* special_field(char* out, double value, int width) {
  if (std::isnan(value)) return right_justified(out, "NaN", width);
  const bool negative = std::signbit(value);
  const std::string_view full = negative ? "-Infinity" : "Infinity";
  const std::string_view brief = negative ? "-Inf" : "Inf";
  return right_justified(out, full.size() <= static_cast<std::size_t>(width) ? full : brief, width);
}

}  // namespace

char* fixed_field(char* out, double value, int width, int decimals) {
  if (!std::isfinite(value)) return special_field(out, value, width);
  char text[longest_number];
  const auto result =
      std::to_chars(text, text + longest_number, value, std::chars_format::fixed, decimals);
  return right_justified(out, {text, static_cast<std::size_t>(result.ptr - text)}, width);
}

char* sci_field(char* out, double value, int width, int decimals) {
  if (!std::isfinite(value)) return special_field(out, value, width);
  char text[longest_number];
  char* end =
      std::to_chars(text, text + longest_number, value, std::chars_format::scientific, decimals)
          .ptr;
  char* const letter = std::find(text, end, 'e');
  *letter = 'E';
  const bool three_digits = end - letter > 4;
  if (three_digits) end = std::copy(letter + 1, end, letter);
  return right_justified(out, {text, static_cast<std::size_t>(end - text)}, width);
}

char* int_field(char* out, long long value, int width) {
  char text[24];
  const auto result = std::to_chars(text, text + sizeof text, value);
  return right_justified(out, {text, static_cast<std::size_t>(result.ptr - text)}, width);
}

char* text_field(char* out, std::string_view text, int width) {
  return right_justified(out, text.substr(0, static_cast<std::size_t>(width)), width);
}

}  // namespace io
