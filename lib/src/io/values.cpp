#include "io/values.hpp"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>

namespace io {

namespace {

// The pieces of a real number: [sign] mantissa [exponent].
struct RealParts {
  bool negative = false;
  std::string_view mantissa;  // digits with an optional point, at least one digit
  std::string_view exponent;  // with its sign; empty where there is none
};

bool is_sign(char c) { return c == '+' || c == '-'; }

// Takes a sign from the head of a text; true when it was a minus.
bool take_sign(std::string_view& text) {
  const bool negative = text.starts_with('-');
  if (negative || text.starts_with('+')) text.remove_prefix(1);
  return negative;
}

bool split_real(std::string_view token, RealParts& parts) {
  constexpr std::string_view digits = "0123456789";
  parts.negative = take_sign(token);
  std::size_t end = std::min(token.find_first_not_of(digits), token.size());
  if (token.substr(end).starts_with('.')) {
    end = std::min(token.find_first_not_of(digits, end + 1), token.size());
  }
  parts.mantissa = token.substr(0, end);
  if (parts.mantissa.find_first_of(digits) == token.npos) return false;
  token.remove_prefix(end);
  if (token.empty()) return true;
  if (!is_sign(token.front())) {
    const char letter = lowered(token.front());
    if (letter != 'e' && letter != 'd' && letter != 'q') return false;
    token.remove_prefix(1);
  }
  parts.exponent = token;
  take_sign(token);
  return !token.empty() && token.find_first_not_of(digits) == token.npos;
}

// The power of ten of the first digit that is not zero; 0 for a mantissa of zeros.
long long leading_power(std::string_view mantissa) {
  const auto whole = static_cast<long long>(std::min(mantissa.find('.'), mantissa.size()));
  const std::size_t first = mantissa.find_first_not_of("0.");
  if (first == std::string_view::npos) return 0;
  const auto place = static_cast<long long>(first);
  return place < whole ? whole - place - 1 : whole - place;
}

// Whether a value beyond the range of a double is too large, not too small. No line is so long that
// its digits make up for an exponent beyond 32 bits.
bool is_overflow(const RealParts& parts) {
  std::string_view digits = parts.exponent;
  const bool negative = take_sign(digits);
  int exponent = 0;
  const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), exponent);
  if (result.ec == std::errc::result_out_of_range) return !negative;
  return leading_power(parts.mantissa) + (negative ? -exponent : exponent) > 0;
}

double value_of(const RealParts& parts) {
  std::string text(parts.mantissa);
  if (!parts.exponent.empty()) {
    text += 'e';
    text += parts.exponent;
  }
  double magnitude = 0.0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), magnitude);
  if (result.ec == std::errc::result_out_of_range) {
    const bool zero = parts.mantissa.find_first_not_of("0.") == std::string_view::npos;
    magnitude = !zero && is_overflow(parts) ? std::numeric_limits<double>::infinity() : 0.0;
  }
  return parts.negative ? -magnitude : magnitude;
}

bool parse_named_real(std::string_view token, double& value) {
  const bool negative = take_sign(token);
  const bool is_nan = equal_in_any_case(token, "nan");
  if (!is_nan && !equal_in_any_case(token, "inf") && !equal_in_any_case(token, "infinity")) {
    return false;
  }
  const double magnitude =
      is_nan ? std::numeric_limits<double>::quiet_NaN() : std::numeric_limits<double>::infinity();
  value = negative ? -magnitude : magnitude;
  return true;
}

// Powers of ten that a double holds exactly.
constexpr double exact_powers[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                   1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                   1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

// Eight characters at once, the first in the lowest byte, so this is for processors that store it
// there. Source: D. Lemire, Number parsing at a gigabyte per second, Softw. Pract. Exp. 51 (2021).
//
// The digits are 0x30..0x39: the upper half of the byte is 3, also when 6 is added (0x3a + 6 is the
// first with upper half 4).
bool are_eight_digits(std::uint64_t chars) {
  constexpr std::uint64_t upper_halves = 0xf0f0f0f0f0f0f0f0;
  constexpr std::uint64_t zeros = 0x3030303030303030;
  constexpr std::uint64_t sixes = 0x0606060606060606;
  return (chars & upper_halves) == zeros && ((chars + sixes) & upper_halves) == zeros;
}

// Neighbours first become numbers of two digits, p0..p3, in bytes 0, 2, 4 and 6. The value is
// 1000000 p0 + 10000 p1 + 100 p2 + p3. One product adds up the terms of p0 and p2 (bytes 0 and 4)
// in its upper half, another those of p1 and p3: the factor of the upper byte stands in the lower
// half of the multiplier and the other way round.
std::uint64_t number_of_eight_digits(std::uint64_t chars) {
  constexpr std::uint64_t bytes_0_and_4 = 0x000000ff000000ff;
  constexpr std::uint64_t for_p0_p2 = (std::uint64_t{1000000} << 32) + 100;
  constexpr std::uint64_t for_p1_p3 = (std::uint64_t{10000} << 32) + 1;
  const std::uint64_t digits = chars - 0x3030303030303030;
  const std::uint64_t pairs = digits * 10 + (digits >> 8);
  return ((pairs & bytes_0_and_4) * for_p0_p2 + (pairs >> 16 & bytes_0_and_4) * for_p1_p3) >> 32;
}

// Takes digits at the head of a text into the significand; the result is the text behind them.
const char* take_digits(const char* at, const char* end, std::uint64_t& significand) {
  if constexpr (std::endian::native == std::endian::little) {
    for (std::uint64_t chars = 0; end - at >= 8; at += 8) {
      std::memcpy(&chars, at, 8);
      if (!are_eight_digits(chars)) break;
      significand = 100000000 * significand + number_of_eight_digits(chars);
    }
  }
  for (; at < end && is_digit(*at); ++at) {
    significand = 10 * significand + static_cast<std::uint64_t>(*at - '0');
  }
  return at;
}

}  // namespace

bool parse_integer(std::string_view token, int& value) {
  if (token.size() > 1 && token.front() == '+' && is_digit(token[1])) token.remove_prefix(1);
  int parsed = 0;
  const char* const end = token.data() + token.size();
  const auto result = std::from_chars(token.data(), end, parsed);
  if (result.ec != std::errc{} || result.ptr != end) return false;
  value = parsed;
  return true;
}

std::size_t scan_decimal(std::string_view text, double& value) {
  const char* const begin = text.data();
  const char* const end = begin + text.size();
  const bool negative = !text.empty() && *begin == '-';
  const char* const digits = begin + (negative ? 1 : 0);
  std::uint64_t significand = 0;
  const char* at = take_digits(digits, end, significand);
  std::ptrdiff_t count = at - digits;
  std::ptrdiff_t decimals = 0;
  if (at < end && *at == '.') {
    const char* const fraction = at + 1;
    at = take_digits(fraction, end, significand);
    decimals = at - fraction;
    count += decimals;
  }
  // 19 digits cannot overflow the significand, and below 2**53 it is exact as a double.
  if (count < 1 || count > 19 || significand >= std::uint64_t{1} << 53) return 0;
  const double magnitude = static_cast<double>(significand) / exact_powers[decimals];
  value = negative ? -magnitude : magnitude;
  return static_cast<std::size_t>(at - begin);
}

bool parse_real(std::string_view token, double& value) {
  RealParts parts;
  if (!split_real(token, parts)) return parse_named_real(token, value);
  value = value_of(parts);
  return true;
}

bool parse_logical(std::string_view token, bool& value) {
  if (!token.empty() && token.front() == '.') token.remove_prefix(1);
  if (token.empty()) return false;
  const char letter = lowered(token.front());
  if (letter != 't' && letter != 'f') return false;
  value = letter == 't';
  return true;
}

}  // namespace io
