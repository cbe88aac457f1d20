#include "flib/string.hpp"

#include <algorithm>

#include "io/values.hpp"

namespace flib {

std::string strlowcase(std::string_view input) {
  std::string result(input);
  std::transform(result.begin(), result.end(), result.begin(), io::lowered);
  return result;
}

}  // namespace flib
