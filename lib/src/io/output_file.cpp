#include "io/output_file.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include "io/block.hpp"
#include "io/fatal.hpp"
#include "io/write_all.hpp"

namespace io {

OutputFile::~OutputFile() {
  if (!replacement_ && descriptor_ >= 0) ::close(descriptor_);
}

int OutputFile::open_replaced(const std::string& name) {
  replacement_ = std::make_unique<Replacement>();
  const int error = replacement_->begin(name);
  descriptor_ = replacement_->descriptor();
  name_ = name;
  return error;
}

int OutputFile::keep(int descriptor, const std::string& name) {
  descriptor_ = descriptor;
  name_ = name;
  return descriptor < 0 ? errno : 0;
}

int OutputFile::open_kept(const std::string& name) {
  // Without O_NONBLOCK a named pipe that nobody reads would hang the run here.
  const int flags = O_WRONLY | O_CREAT | O_CLOEXEC | O_NONBLOCK;
  const int error = keep(::open(name.c_str(), flags, 0666), name);
  if (error == 0) ::fcntl(descriptor_, F_SETFL, 0);
  return error;
}

int OutputFile::open_standard_output(const std::string& name) {
  return keep(::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0), name);
}

void OutputFile::flush() {
  const int error = write_all(descriptor_, {buffer_.get(), used_});
  if (error != 0) fatal_stop({name_}, "cannot write: ", strerror(error));
  used_ = 0;
}

std::unique_ptr<Replacement> OutputFile::close() {
  flush();
  const int descriptor = std::exchange(descriptor_, -1);
  int error = replacement_ ? replacement_->complete() : 0;
  if (!replacement_ && ::close(descriptor) != 0) error = errno;
  if (error != 0) fatal_stop({name_}, "cannot close: ", strerror(error));
  return std::move(replacement_);
}

// Room for `size` characters, at most widest_field where a field is written.
char* OutputFile::room(std::size_t size) {
  if (!buffer_) buffer_ = std::make_unique_for_overwrite<char[]>(block_size);
  if (block_size - used_ < size) flush();
  return buffer_.get() + used_;
}

OutputFile& OutputFile::text(std::string_view text) {
  while (!text.empty()) {
    char* const out = room(1);
    const std::size_t size = std::min(text.size(), block_size - used_);
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
