// Free-form reading: items in order, separated by blanks, tabs or one comma. A slash ends the read;
// two commas in a row make a null item; r*value repeats. Items that are null or behind a slash
// keep the values that the caller's variables had.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "io/item_scanner.hpp"
#include "io/text.hpp"

namespace io {

// What an item is, for messages: "the mass of atom 3" is {"the mass of atom", 3}.
struct Subject {
  std::string_view text;
  int number = -1;               // left out of the message when negative
  std::string_view remark = {};  // stands at the end of the message, in parentheses
};

// One read. From a unit it begins with the next record and goes on to further ones until every
// item is there; what is left of the last record used is skipped. From a line buffer it cannot go
// on: running out of items is a fatal stop, as is the end of the file.
class FreeForm {
 public:
  explicit FreeForm(int fid);
  FreeForm(int fid, std::string_view buffer);

  // Items of which a value must be given: a null, a slash before it or a malformed value is a
  // fatal stop that names the subject.
  void integer(int& value, const Subject& subject);
  void real(double& value, const Subject& subject);
  // A real that is neither infinite nor not-a-number.
  void finite_real(double& value, const Subject& subject);

  // Items that may be null; the result says whether a value was given.
  bool optional_integer(int& value, const Subject& subject);
  bool logical(bool& value, const Subject& subject);
  bool text(std::span<char> value, const Subject& subject);

  // What the last item without a value was, for messages: "a slash" or nothing between separators.
  const char* missing_value() const {
    return slash_met_ ? "a slash" : "no value between separators";
  }

  // Warns when the item taken last, a number, ends where the file ends, in a line without its end:
  // the file may have been cut inside the number.
  void warn_of_open_end(const Subject& subject) const;

  // Takes text items and drops them.
  void skip_words(int count, const Subject& subject);

  // Takes a text item. One that is missing, breaks off or is malformed becomes blank, and so does
  // everything behind it.
  void text_or_blank(std::span<char> value);

  // The text of the item taken last, valid until the next one; how many records have been read, the
  // last of them, and what is left of it.
  std::string_view word() const {
    return item_.kind == Item::Kind::quoted ? std::string_view(item_.quoted) : item_.word;
  }
  int records() const { return cursor_.records(); }
  std::string_view record() const { return cursor_.record(); }
  std::string_view rest() const { return cursor_.rest(); }

 private:
  enum class Type { none, integer, real, logical, text };

  bool take_plain_number(double& value);
  bool find_item();
  void take(Type type);
  bool next_item(Type type, const Subject& subject, std::string_view expected);
  template <class Value>
  bool parsed_item(Value& value, bool (*parse)(std::string_view, Value&), Type type,
                   const Subject& subject, std::string_view expected);
  [[noreturn]] void stop(const Place& place, const Subject& subject, std::string_view expected,
                         std::string_view found);
  [[noreturn]] void stop_at_item(const Subject& subject, std::string_view expected);

  RecordCursor cursor_;
  Item item_;
  Type repeated_type_ = Type::none;
  long long repeats_left_ = 0;
  bool value_taken_ = false;  // an item stands before the cursor, its separator not yet taken
  bool slash_met_ = false;
  bool ran_out_ = false;
};

// The item with this number of a text that was read from the unit; blank when it is not there.
Line item_of(int fid, std::string_view text, int number = 1);

}  // namespace io
