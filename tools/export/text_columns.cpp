#include "export/text_columns.hpp"

#include <charconv>
#include <cmath>
#include <limits>

namespace exporting {

std::string fixed_column(double value, int width, int decimals) {
  // The widest number has 309 digits before the point.
  char text[std::numeric_limits<double>::max_exponent10 + 32];
  const auto end =
      std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, decimals).ptr;
  const auto size = static_cast<int>(end - text);
  return std::string(size < width ? static_cast<std::size_t>(width - size) : 1, ' ')
      .append(text, end);
}

double with_short_exponent(double value) { return std::fabs(value) < 1e-99 ? 0.0 : value; }

std::string symbol_column(const std::string& symbol) {
  constexpr std::size_t width = 4;
  return symbol.size() < width ? std::string(width - symbol.size(), ' ') + symbol
                               : symbol.substr(0, width);
}

}  // namespace exporting
