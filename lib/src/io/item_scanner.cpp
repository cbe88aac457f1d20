#include "io/item_scanner.hpp"

#include <charconv>

#include "io/units.hpp"
#include "io/values.hpp"

namespace io {

namespace {

// Takes the quoted text at the cursor; a doubled quote stands for one, records are joined.
void take_quoted(RecordCursor& cursor, Grammar grammar, Item& item) {
  const char quote = cursor.peek();
  cursor.advance();
  item.quoted.clear();
  for (;;) {
    while (cursor.at_end()) {
      if (!cursor.next_record()) {
        item.kind = Item::Kind::ended;
        return;
      }
    }
    const char c = cursor.peek();
    cursor.advance();
    if (c == quote) {
      if (cursor.at_end() || cursor.peek() != quote) break;
      cursor.advance();
    }
    if (item.quoted.size() < longest_text) item.quoted += c;
  }
  item.kind = Item::Kind::quoted;
  if (!cursor.at_end() && !ends_word(cursor.peek(), grammar)) {
    item.kind = Item::Kind::malformed;
    item.word = cursor.rest();
  }
}

std::string_view take_word(RecordCursor& cursor, Grammar grammar) {
  const std::string_view rest = cursor.rest();
  std::size_t size = 0;
  while (size < rest.size() && !ends_word(rest[size], grammar)) ++size;
  cursor.skip(size);
  return rest.substr(0, size);
}

// The length of a leading "digits*" of the text, or 0.
std::size_t repeat_prefix(std::string_view text) {
  std::size_t digits = 0;
  while (digits < text.size() && is_digit(text[digits])) ++digits;
  return digits > 0 && digits < text.size() && text[digits] == '*' ? digits + 1 : 0;
}

}  // namespace

bool RecordCursor::next_record() {
  position_ = 0;
  if (!buffered_ && records_ > 0) input(fid_).note_continuation();
  if (buffered_ || read_record(fid_, record_) != read_ok) {
    record_ = {};
    return false;
  }
  ++records_;
  return true;
}

Place RecordCursor::here() const { return place(fid_); }

Place RecordCursor::behind_end() const { return buffered_ ? place(fid_) : next_place(fid_); }

long long RecordCursor::began() const { return buffered_ ? 0 : input(fid_).read_began(); }

bool RecordCursor::at_open_end() const {
  return !buffered_ && at_end() && input(fid_).last_record_is_open();
}

void take_item(RecordCursor& cursor, Grammar grammar, Item& item) {
  item.repeat = 1;
  item.prefix.clear();
  const std::string_view rest = cursor.rest();
  if (const std::size_t prefix = repeat_prefix(rest); prefix > 0) {
    const char* const digits_end = rest.data() + prefix - 1;
    const auto result = std::from_chars(rest.data(), digits_end, item.repeat);
    if (result.ec != std::errc{} || item.repeat < 1) {
      item.kind = Item::Kind::malformed;
      item.word = take_word(cursor, grammar);
      return;
    }
    item.prefix = rest.substr(0, prefix);
    cursor.skip(prefix);
    if (cursor.at_end() || ends_word(cursor.peek(), grammar)) {
      item.kind = Item::Kind::null;
      return;
    }
  }
  if (cursor.peek() == '\'' || cursor.peek() == '"') {
    take_quoted(cursor, grammar, item);
    return;
  }
  item.kind = Item::Kind::word;
  item.word = take_word(cursor, grammar);
}

}  // namespace io
