#include "flib/file.hpp"

#include "io/text.hpp"

namespace flib {

namespace {

std::string padded(std::string_view content, std::size_t length) {
  std::string result(content);
  result.resize(length, ' ');
  return result;
}

}  // namespace

std::string name_base(std::string_view name) {
  const std::string_view content = io::trimmed(io::without_leading_blanks(name));
  const std::size_t slash = content.rfind('/');
  return padded(slash == std::string_view::npos ? content : content.substr(slash + 1), name.size());
}

std::string name_main(std::string_view name) {
  const std::string base = name_base(name);
  const std::string_view content = io::trimmed(base);
  return padded(content.substr(0, content.rfind('.')), name.size());
}

}  // namespace flib
