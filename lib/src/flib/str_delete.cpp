#include "flib/str_delete.hpp"

#include "flib/string.hpp"
#include "io/text.hpp"

namespace flib {

void str_delete(std::span<char> string, std::string_view sub) {
  const std::string content(io::trimmed(io::view(string)));
  const std::string lowered = strlowcase(content);
  const std::string wanted = strlowcase(io::trimmed(sub));
  const std::size_t size = wanted.size();
  if (size > content.size()) return;
  const std::size_t last = content.size() - size;  // where the last slice of that size begins
  std::string result;
  for (std::size_t i = 0; i <= last; ++i) {
    if (lowered.compare(i, size, wanted) == 0) i += size;
    // Behind an occurrence too near to the end there is nothing left that is copied.
    if (i > last) break;
    result.append(content, i, i == last ? size : 1);
  }
  io::assign(string, result);
}

}  // namespace flib
