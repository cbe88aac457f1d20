#include "report.hpp"

#include <charconv>

namespace check {

std::string rounded(double value) {
  char text[32];
  return {text, std::to_chars(text, text + sizeof text, value, std::chars_format::general, 4).ptr};
}

std::string counted(long long count, std::string_view what) {
  return std::to_string(count) + " " + std::string(what) + (count == 1 ? "" : "s");
}

}  // namespace check
