#include "export/text_columns.hpp"

#include <charconv>
#include <limits>

namespace exporting {

std::string shortest(double value) {
  char text[32];
  return {text, std::to_chars(text, text + sizeof text, value).ptr};
}

void fixed_column(io::OutputFile& out, double value, int width, int decimals) {
  // The widest number has 309 digits before the point.
  char text[std::numeric_limits<double>::max_exponent10 + 32];
  const auto end =
      std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, decimals).ptr;
  const auto size = static_cast<int>(end - text);
  out.text(std::string(size < width ? static_cast<std::size_t>(width - size) : 1, ' '));
  out.text({text, end});
}

}  // namespace exporting
