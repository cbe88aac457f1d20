#include "flib/is_number.hpp"

#include <algorithm>

#include "io/text.hpp"
#include "io/values.hpp"

namespace flib {

bool is_number(std::span<char> a) {
  io::assign(a, io::without_leading_blanks(io::view(a)));
  const std::string_view content = io::trimmed(io::view(a));
  return !content.empty() && std::all_of(content.begin(), content.end(), io::is_digit);
}

}  // namespace flib
