// Writing to a descriptor until all is written.
#pragma once

#include <unistd.h>

#include <cerrno>
#include <string_view>

namespace io {

// Writes all of `text`; the result is 0 or the error number. Safe within a signal handler.
inline int write_all(int descriptor, std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = ::write(descriptor, text.data(), text.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return errno;
    text.remove_prefix(static_cast<std::size_t>(written));
  }
  return 0;
}

}  // namespace io
