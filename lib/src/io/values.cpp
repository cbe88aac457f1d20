#include "io/values.hpp"

#include <algorithm>
#include <charconv>
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
