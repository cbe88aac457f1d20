#include "io/output_file.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "io/fatal.hpp"

namespace io {

namespace {

constexpr std::size_t block_size = std::size_t{256} * 1024;

}  // namespace

int OutputFile::open(const std::string& name, bool keep_content) {
  // Without O_NONBLOCK a named pipe that nobody reads would hang the run here.
  const int flags = O_WRONLY | O_CREAT | O_CLOEXEC | O_NONBLOCK | (keep_content ? 0 : O_TRUNC);
  descriptor_ = ::open(name.c_str(), flags, 0666);
  if (descriptor_ < 0) return errno;
  ::fcntl(descriptor_, F_SETFL, 0);
  name_ = name;
  used_ = 0;
  return 0;
}

void OutputFile::stop(const char* failed, int error) {
  // Works on regular files only, and only they can look complete.
  if (::ftruncate(descriptor_, 0) != 0) errno = 0;
  fatal_stop({name_}, std::string(failed) + strerror(error));
}

void OutputFile::flush() {
  const char* from = buffer_.data();
  while (used_ > 0) {
    const ssize_t written = ::write(descriptor_, from, used_);
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) stop("cannot write: ", errno);
    from += written;
    used_ -= static_cast<std::size_t>(written);
  }
}

void OutputFile::close() {
  flush();
  const int descriptor = descriptor_;
  descriptor_ = -1;
  if (::close(descriptor) != 0) {
    const int error = errno;
    if (::truncate(name_.c_str(), 0) != 0) errno = 0;
    fatal_stop({name_}, std::string("cannot close: ") + strerror(error));
  }
}

// Room for `size` characters, at most widest_field where a field is written.
char* OutputFile::room(std::size_t size) {
  if (buffer_.empty()) buffer_.resize(block_size);
  if (buffer_.size() - used_ < size) flush();
  return buffer_.data() + used_;
}

OutputFile& OutputFile::text(std::string_view text) {
  while (!text.empty()) {
    char* const out = room(1);
    const std::size_t size = std::min(text.size(), buffer_.size() - used_);
    advance(std::copy_n(text.data(), size, out));
    text.remove_prefix(size);
  }
  return *this;
}

OutputFile& OutputFile::text(std::string_view text, int width) {
  advance(text_field(room(widest_field), text, width));
  return *this;
}

OutputFile& OutputFile::integer(long long value, int width) {
  advance(int_field(room(widest_field), value, width));
  return *this;
}

OutputFile& OutputFile::fixed(double value, int width, int decimals) {
  advance(fixed_field(room(widest_field), value, width, decimals));
  return *this;
}

OutputFile& OutputFile::sci(double value, int width, int decimals) {
  advance(sci_field(room(widest_field), value, width, decimals));
  return *this;
}

}  // namespace io
