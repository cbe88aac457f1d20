// A sequential text file being written: fields are appended to a buffer that goes out in large
// blocks. Every write and the close are checked; a failure is a fatal stop. A file that replaces
// another is not seen before it is complete and put in place (io/replacement.hpp).
#pragma once

#include <string>
#include <string_view>

#include "io/block.hpp"
#include "io/fields.hpp"
#include "io/replacement.hpp"

namespace io {

class OutputFile {
 public:
  OutputFile() = default;
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;
  ~OutputFile();

  // Begins a file that replaces what stands under the name, or opens it as it is, created if
  // absent. The result is 0 or the error number.
  int open_replaced(const std::string& name);
  int open_kept(const std::string& name);
  // Writes to standard output, block by block; `name` is for messages.
  int open_standard_output(const std::string& name);

  // Ends the writing. One that replaces another comes back complete, to be put in place; nothing
  // is put in place that is not complete.
  Replacement close();
  bool replaces() const { return !kept_; }

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

  Replacement replacement_;
  int descriptor_ = -1;
  bool kept_ = false;
  std::string name_;
  Block buffer_;
  std::size_t used_ = 0;
};

}  // namespace io
