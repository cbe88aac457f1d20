// A sequential text file being written: fields are appended to a buffer that goes out in large
// blocks. Every write and the close are checked; a failure is a fatal stop that leaves a regular
// file empty, so that half a result never looks like a whole one.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "io/fields.hpp"

namespace io {

class OutputFile {
 public:
  OutputFile() = default;
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  // Creates or replaces the file; with `keep_content` an existing one is opened as it is. The
  // result is 0 or the error number.
  int open(const std::string& name, bool keep_content);
  void close();
  bool is_open() const { return descriptor_ >= 0; }

  // Text as it stands, line ends included; and the fields of io/fields.hpp. A field is at
  // most widest_field wide.
  OutputFile& text(std::string_view text);
  OutputFile& text(std::string_view text, int width);
  OutputFile& integer(long long value, int width);
  OutputFile& fixed(double value, int width, int decimals);
  OutputFile& sci(double value, int width, int decimals);
  OutputFile& end_line() { return text("\n"); }

 private:
  char* room(std::size_t size);
  void advance(const char* end) { used_ = static_cast<std::size_t>(end - buffer_.data()); }
  void flush();
  [[noreturn]] void stop(const char* failed, int error);

  int descriptor_ = -1;
  std::string name_;
  std::vector<char> buffer_;
  std::size_t used_ = 0;
};

}  // namespace io
