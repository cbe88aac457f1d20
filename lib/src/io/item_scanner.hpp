// What free-form reading and the control group share: a cursor over the records of a unit or over
// one line buffer, and the shape of an item (repeat count, quoted or unquoted value).
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "io/fatal.hpp"

namespace io {

// The most characters that are kept of a quoted text; no text of the system takes more.
inline constexpr std::size_t longest_text = 200;

class RecordCursor {
 public:
  // Over the records of a unit, beginning with the next one, which is not read yet.
  explicit RecordCursor(int fid) : fid_(fid) {}
  // Over one line buffer that was read from the unit.
  RecordCursor(int fid, std::string_view buffer) : fid_(fid), buffered_(true), record_(buffer) {}

  // Goes on to the next record; false at the end of the file or of the buffer. The unit remembers
  // where a read that needed more than one record began (InputFile::read_began).
  bool next_record();
  // How many records it has read, and the one that it is on.
  int records() const { return records_; }
  std::string_view record() const { return record_; }
  bool at_end() const { return position_ >= record_.size(); }
  char peek() const { return record_[position_]; }
  void advance() { ++position_; }
  void skip_blanks() {
    while (!at_end() && (peek() == ' ' || peek() == '\t')) advance();
  }
  std::string_view rest() const { return record_.substr(position_); }
  void skip(std::size_t count) { position_ += count; }

  // Where the cursor stands, and where it stands when the text ended too early.
  Place here() const;
  Place behind_end() const;
  // Where the first of several reads in a row began that needed more than one record; 0 for none.
  long long began() const;
  // Whether the cursor stands where the file ends, in a line without its end.
  bool at_open_end() const;
  // What ended too early: "the end of the file" or "the end of the line".
  const char* end_name() const { return buffered_ ? "the end of the line" : "the end of the file"; }

 private:
  int fid_;
  bool buffered_ = false;
  int records_ = 0;
  std::string_view record_;
  std::size_t position_ = 0;
};

// One item as it is spelled: r*value, r*, or a value.
struct Item {
  enum class Kind { null, word, quoted, malformed, ended };
  Kind kind = Kind::null;
  long long repeat = 1;
  std::string prefix;     // "r*", empty where there is none
  std::string_view word;  // an unquoted value; lies in the record that the cursor is on
  std::string quoted;     // a quoted value, at most longest_text characters
};

// The characters that end an unquoted value: blank, tab, comma and slash; in the control group
// also the equals sign and the exclamation mark.
enum class Grammar { free_form, control_group };
constexpr bool ends_word(char c, Grammar grammar) {
  if (c == ' ' || c == '\t' || c == ',' || c == '/') return true;
  return grammar == Grammar::control_group && (c == '=' || c == '!');
}

// Takes the item at the cursor, which stands on its first character. A malformed item holds the
// text at fault in `word`; `ended` says that the text broke off within quotes.
void take_item(RecordCursor& cursor, Grammar grammar, Item& item);

}  // namespace io
