// JSON written value by value, so that no text grows in memory with the numbers of a molecule.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "io/output_file.hpp"

namespace exporting {

// Values and keys in the order in which they are to stand; separators come by themselves. Within an
// object every value follows its key.
class JsonText {
 public:
  explicit JsonText(io::OutputFile& out) : out_(out) {}

  void begin_object(bool on_new_line = false) { open('{', on_new_line); }
  void end_object() { close('}'); }
  void begin_array(bool on_new_line = false) { open('[', on_new_line); }
  void end_array() { close(']'); }
  void key(std::string_view name);

  void text(std::string_view value);
  // A text whose pieces are written as they come; they must need no escapes.
  void begin_text();
  void piece_of_text(std::string_view piece) { out_.text(piece); }
  void end_text() { out_.text("\""); }
  void integer(long long value);
  void boolean(bool value);
  void null();
  // The shortest digits, 17 at most, that read back as the same number. One that is not finite is a
  // fatal stop: JSON has no word for it.
  void number(double value);

  void texts(const std::vector<std::string>& values);
  void integers(const std::vector<int>& values);
  // Arrays of `size` numbers, and of `rows` rows of `size` numbers each, one row to a line.
  void numbers(const double* values, std::size_t size, bool on_new_line = false);
  void number_rows(const double* values, std::size_t rows, std::size_t size);

 private:
  void open(char bracket, bool on_new_line = false);
  void close(char bracket);
  void begin_value();
  void new_line();

  io::OutputFile& out_;
  int depth_ = 0;
  bool first_ = true;  // nothing stands yet within the innermost brackets
  bool behind_key_ = false;
};

}  // namespace exporting
