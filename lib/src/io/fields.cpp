#include "io/fields.hpp"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>

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

// |value| * 10**power exactly: whole part, and the rest as it decides the rounding.
class ScaledMagnitude {
 public:
  // False when the power is out of range or the scaled value does not fit.
  bool scale(double value, int power) {
    if (power < 0 || power > largest_power) return false;
    const auto bits = std::bit_cast<std::uint64_t>(value);
    const int exponent = static_cast<int>(bits >> 52 & 0x7ff);
    const std::uint64_t fraction = bits & ((std::uint64_t{1} << 52) - 1);
    const Wide product = Wide{fraction | (exponent != 0 ? std::uint64_t{1} << 52 : 0)} *
                         powers_of_ten[static_cast<std::size_t>(power)];
    const int shift = 1075 - (exponent != 0 ? exponent : 1);  // value = significand / 2**shift
    if (shift <= 0) return false;
    if (shift >= wide_bits) {
      // The product has a bit less than a Wide, so this is below one half: rounds to zero.
      whole_ = 0;
      rounds_up_ = false;
      return true;
    }
    const Wide whole = product >> shift;
    if (whole >> 63 != 0) return false;
    whole_ = static_cast<std::uint64_t>(whole);
    const Wide rest = product - (whole << shift);
    const Wide half = Wide{1} << (shift - 1);
    rounds_up_ = rest > half || (rest == half && whole_ % 2 == 1);
    return true;
  }
  std::uint64_t truncated() const { return whole_; }
  std::uint64_t rounded() const { return whole_ + (rounds_up_ ? 1 : 0); }

 private:
  std::uint64_t whole_ = 0;
  bool rounds_up_ = false;
};

// "00", "01", ... "99".
constexpr auto digit_pairs = [] {
  std::array<char, 200> pairs{};
  for (std::size_t i = 0; i < 100; ++i) {
    pairs[2 * i] = static_cast<char>('0' + i / 10);
    pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
  }
  return pairs;
}();

// Writes `count` decimal digits of the number so that they end before `end`; the result is what is
// left of the number.
std::uint64_t put_digits(char* end, std::uint64_t number, int count) {
  for (; count >= 2; count -= 2) {
    end -= 2;
    std::memcpy(end, &digit_pairs[static_cast<std::size_t>(2 * (number % 100))], 2);
    number /= 100;
  }
  if (count == 0) return number;
  *--end = static_cast<char>('0' + number % 10);
  return number / 10;
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
  return right_justified(out, {text, static_cast<std::size_t>(result.ptr - text)}, width);
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
  return right_justified(out, {text, static_cast<std::size_t>(end - text)}, width);
}

// Finds the digits and the decimal exponent of a value that is not zero, or fails where the scaled
// integer does not fit.
bool find_digits(double value, int decimals, std::uint64_t& digits, int& exponent) {
  std::uint64_t lowest = 1;
  for (int i = 0; i < decimals; ++i) lowest *= 10;
  // An estimate that is right or one too small: 1233 / 4096 is below log10(2).
  const auto bits = std::bit_cast<std::uint64_t>(value);
  exponent = ((static_cast<int>(bits >> 52 & 0x7ff) - 1023) * 1233) >> 12;
  ScaledMagnitude scaled;
  for (int attempt = 0; attempt < 3; ++attempt) {
    if (!scaled.scale(value, decimals - exponent)) return false;
    if (scaled.truncated() < lowest) {
      --exponent;
    } else if (scaled.truncated() >= 10 * lowest) {
      ++exponent;
    } else {
      digits = scaled.rounded();
      if (digits == 10 * lowest) {
        digits = lowest;
        ++exponent;
      }
      return true;
    }
  }
  return false;
}

}  // namespace

char* fixed_field(char* out, double value, int width, int decimals) {
  if (!std::isfinite(value)) return special_field(out, value, width);
  ScaledMagnitude scaled;
  if (decimals < 1 || decimals > 10 || !scaled.scale(value, decimals)) {
    return fixed_by_library(out, value, width, decimals);
  }
  char text[32];
  char* const text_end = text + sizeof text;
  std::uint64_t whole = put_digits(text_end, scaled.rounded(), decimals);
  char* begin = text_end - decimals;
  *--begin = '.';
  do {
    *--begin = static_cast<char>('0' + whole % 10);
    whole /= 10;
  } while (whole != 0);
  if (std::signbit(value)) *--begin = '-';
  return right_justified(out, {begin, static_cast<std::size_t>(text_end - begin)}, width);
}

char* sci_field(char* out, double value, int width, int decimals) {
  if (!std::isfinite(value)) return special_field(out, value, width);
  std::uint64_t digits = 0;
  int exponent = 0;
  if (decimals < 1 || decimals > 10 ||
      (value != 0.0 && !find_digits(value, decimals, digits, exponent))) {
    return sci_by_library(out, value, width, decimals);
  }
  char text[32];
  char* const begin = text + 1;
  char* const letter = begin + 2 + decimals;
  *begin = static_cast<char>('0' + put_digits(letter, digits, decimals));
  begin[1] = '.';
  letter[0] = 'E';
  letter[1] = exponent < 0 ? '-' : '+';
  put_digits(letter + 4, static_cast<std::uint64_t>(std::abs(exponent)), 2);
  const bool negative = std::signbit(value);
  text[0] = '-';
  const std::string_view shown(negative ? text : begin,
                               static_cast<std::size_t>(letter + 4 - begin) + (negative ? 1 : 0));
  return right_justified(out, shown, width);
}

char* int_field(char* out, long long value, int width) {
  char text[24];
  const auto result = std::to_chars(text, text + sizeof text, value);
  return right_justified(out, {text, static_cast<std::size_t>(result.ptr - text)}, width);
}

char* text_field(char* out, std::string_view text, int width) {
  return right_justified(out, text.substr(0, static_cast<std::size_t>(width)), width);
}

long long overfull_fields() { return overfull; }

}  // namespace io
