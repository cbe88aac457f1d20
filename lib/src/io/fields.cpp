#include "io/fields.hpp"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <optional>

namespace io {

namespace {

// A double in fixed form has up to 309 digits before the point.
constexpr int longest_number = 400;

#ifdef __SIZEOF_INT128__
__extension__ typedef unsigned __int128 Wide;
#else
typedef std::uint64_t Wide;
#endif
constexpr int wide_bits = 8 * sizeof(Wide);

// The powers of ten that fit beside the 53 bits of a double in a Wide.
constexpr int largest_power = wide_bits == 128 ? 22 : 3;
constexpr auto powers_of_ten = [] {
  std::array<Wide, largest_power + 1> powers{};
  powers[0] = 1;
  for (std::size_t i = 1; i < powers.size(); ++i) powers[i] = 10 * powers[i - 1];
  return powers;
}();

// Fields with up to so many decimals are written here, others by the library.
constexpr int most_decimals = std::min(10, largest_power - 1);

// |value| * 10**power, rounded from the exact product to nearest, ties to even; nothing when the
// power is out of range or the result does not fit.
std::optional<std::uint64_t> scaled(double value, int power) {
  if (power < 0 || power > largest_power) return std::nullopt;
  const auto bits = std::bit_cast<std::uint64_t>(value);
  const int exponent = static_cast<int>(bits >> 52 & 0x7ff);
  const std::uint64_t fraction = bits & ((std::uint64_t{1} << 52) - 1);
  const Wide product = Wide{fraction | (exponent != 0 ? std::uint64_t{1} << 52 : 0)} *
                       powers_of_ten[static_cast<std::size_t>(power)];
  const int shift = 1075 - (exponent != 0 ? exponent : 1);  // value = significand / 2**shift
  if (shift <= 0) return std::nullopt;
  // The product has a bit less than a Wide, so this is below one half.
  if (shift >= wide_bits) return 0;
  const Wide is_odd = product >> shift & 1;
  const Wide rounded = (product + (Wide{1} << (shift - 1)) - 1 + is_odd) >> shift;
  if (rounded >> 63 != 0) return std::nullopt;
  return static_cast<std::uint64_t>(rounded);
}

// Writes value / 10**decimals with all its decimals and the sign of `number`, so that it ends
// before `end`. The result is where it begins.
char* put_decimal(char* end, std::uint64_t value, int decimals, double number) {
  for (int digits = 0; digits <= decimals || value != 0; ++digits) {
    if (digits == decimals) *--end = '.';
    *--end = static_cast<char>('0' + value % 10);
    value /= 10;
  }
  if (std::signbit(number)) *--end = '-';
  return end;
}

long long overfull = 0;

char* right_justified(char* out, std::string_view text, int width) {
  const auto columns = static_cast<std::size_t>(width);
  if (text.size() > columns) {
    ++overfull;
    return std::fill_n(out, width, '*');
  }
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

char* fixed_by_library(char* out, double value, int width, int decimals) {
  char text[longest_number];
  const auto result =
      std::to_chars(text, text + longest_number, value, std::chars_format::fixed, decimals);
  return right_justified(out, {text, result.ptr}, width);
}

char* sci_by_library(char* out, double value, int width, int decimals) {
  char text[longest_number];
  char* end =
      std::to_chars(text, text + longest_number, value, std::chars_format::scientific, decimals)
          .ptr;
  char* const letter = std::find(text, end, 'e');
  *letter = 'E';
  const bool three_digits = end - letter > 4;
  if (three_digits) end = std::copy(letter + 1, end, letter);
  return right_justified(out, {text, end}, width);
}

bool has_own_form(int decimals) { return decimals >= 1 && decimals <= most_decimals; }

}  // namespace

char* fixed_field(char* out, double value, int width, int decimals) {
  if (!std::isfinite(value)) return special_field(out, value, width);
  const auto digits = scaled(value, decimals);
  if (!digits || !has_own_form(decimals)) return fixed_by_library(out, value, width, decimals);
  char text[32];
  char* const end = text + sizeof text;
  return right_justified(out, {put_decimal(end, *digits, decimals, value), end}, width);
}

char* sci_field(char* out, double value, int width, int decimals) {
  if (!std::isfinite(value)) return special_field(out, value, width);
  if (!has_own_form(decimals)) return sci_by_library(out, value, width, decimals);
  const auto limit =
      static_cast<std::uint64_t>(powers_of_ten[static_cast<std::size_t>(decimals + 1)]);
  // An estimate that is right or one too small: 1233 / 4096 is below log10(2).
  const auto bits = std::bit_cast<std::uint64_t>(value);
  int exponent = value == 0.0 ? 0 : ((static_cast<int>(bits >> 52 & 0x7ff) - 1023) * 1233) >> 12;
  auto digits = scaled(value, decimals - exponent);
  if (digits && *digits >= limit) digits = scaled(value, decimals - ++exponent);
  if (!digits) return sci_by_library(out, value, width, decimals);
  char text[32];
  char* const end = text + sizeof text;
  char* const letter = end - 4;
  std::to_chars(letter + 1, end, 100 + std::abs(exponent));  // the 1 is where the sign stands
  letter[0] = 'E';
  letter[1] = exponent < 0 ? '-' : '+';
  return right_justified(out, {put_decimal(letter, *digits, decimals, value), end}, width);
}

char* int_field(char* out, long long value, int width) {
  char text[24];
  return right_justified(out, {text, std::to_chars(text, text + sizeof text, value).ptr}, width);
}

char* text_field(char* out, std::string_view text, int width) {
  return right_justified(out, text.substr(0, static_cast<std::size_t>(width)), width);
}

long long overfull_fields() { return overfull; }

}  // namespace io
