// A sequential text file being written: fields are appended to a buffer that goes out in large
// blocks. Every write and the close are checked; a failure is a fatal stop. A file that replaces
// another is not seen before it is complete and put in place (io/replacement.hpp).
#pragma once

#include <memory>
#include <string>
#include <string_view>

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

  // Ends the writing. A file that replaces another comes back complete, to be put in place; of
  // others nothing comes back.
  std::unique_ptr<Replacement> close();

  // Text as it stands, line ends included; and the fields of io/fields.hpp. A field is at
  // most widest_field wide.
  OutputFile& text(std::string_view text);
  OutputFile& text(std::string_view text, int width);
  OutputFile& integer(long long value, int width);
  OutputFile& fixed(double value, int width, int decimals);
  OutputFile& sci(double value, int width, int decimals);
  OutputFile& end_line() { return text("\n"); }

 private:
  int keep(int descriptor, const std::string& name);
  char* room(std::size_t size);
  void advance(const char* end) { used_ = static_cast<std::size_t>(end - buffer_.get()); }
  void flush();

  std::unique_ptr<Replacement> replacement_;  // null where the file itself is written
  int descriptor_ = -1;
  std::string name_;
  std::unique_ptr<char[]> buffer_;
  std::size_t used_ = 0;
};

}  // namespace io
