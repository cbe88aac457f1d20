#include "io/free_form.hpp"

#include <cmath>

#include "io/text.hpp"
#include "io/values.hpp"

namespace io {

namespace {

std::string name_of(const Subject& subject) {
  std::string name(subject.text);
  if (subject.number >= 0) name += " " + std::to_string(subject.number);
  return name;
}

}  // namespace

FreeForm::FreeForm(int fid) : cursor_(fid) { ran_out_ = !cursor_.next_record(); }

FreeForm::FreeForm(int fid, std::string_view buffer) : cursor_(fid, buffer) {}

void FreeForm::stop(const Place& place, const Subject& subject, std::string_view expected,
                    std::string_view found) {
  std::string message = "expected " + name_of(subject);
  if (!expected.empty()) message += " (" + std::string(expected) + ")";
  message += ", found " + std::string(found);
  std::string remark;
  const long long began = cursor_.began();
  if (began > 0 && began < place.line) remark = "reading began at line " + std::to_string(began);
  if (!subject.remark.empty()) remark.append(remark.empty() ? "" : "; ").append(subject.remark);
  fatal_stop(place, remark.empty() ? message : message + " (" + remark + ")");
}

void FreeForm::warn_of_open_end(const Subject& subject) const {
  if (!value_taken_ || repeats_left_ > 0 || slash_met_ || !cursor_.at_open_end()) return;
  warn(cursor_.here(), "the file ends right behind " + name_of(subject) +
                           ", without a line end: it may have been cut inside the number");
}

void FreeForm::stop_at_item(const Subject& subject, std::string_view expected) {
  const bool as_quoted = item_.kind == Item::Kind::quoted;
  stop(cursor_.here(), subject, expected, quoted(as_quoted ? item_.quoted : item_.word));
}

void FreeForm::stop_without_value(const Subject& subject, std::string_view expected) {
  stop(cursor_.here(), subject, expected, missing_value());
}

// Moves to the first character of the next item. False when the item is null or behind a slash;
// ran_out_ tells when the text ended.
bool FreeForm::find_item() {
  while (!slash_met_ && !ran_out_) {
    if (cursor_.at_end()) {
      ran_out_ = !cursor_.next_record();
      continue;
    }
    const char c = cursor_.peek();
    if (c == '/') {
      slash_met_ = true;
    } else if (c == ',') {
      cursor_.advance();
      if (!value_taken_) return false;
      value_taken_ = false;
    } else if (c == ' ' || c == '\t') {
      cursor_.advance();
    } else {
      return true;
    }
  }
  return false;
}

// Makes item_ the next item. False when it is null or behind a slash.
bool FreeForm::next_item(Type type, const Subject& subject, std::string_view expected) {
  if (repeats_left_ > 0) {
    --repeats_left_;
    if (item_.kind != Item::Kind::null && type != repeated_type_) {
      stop(cursor_.here(), subject, expected, "a repeated value of another kind");
    }
    return item_.kind != Item::Kind::null;
  }
  if (!find_item()) {
    if (ran_out_) stop(cursor_.behind_end(), subject, expected, cursor_.end_name());
    return false;
  }
  take_item(cursor_, Grammar::free_form, item_);
  if (item_.kind == Item::Kind::ended) {
    stop(cursor_.behind_end(), subject, "closing quote", cursor_.end_name());
  }
  if (item_.kind == Item::Kind::malformed) stop_at_item(subject, expected);
  value_taken_ = true;
  repeats_left_ = item_.repeat - 1;
  repeated_type_ = type;
  return item_.kind != Item::Kind::null;
}

void FreeForm::integer(int& value, const Subject& subject) {
  if (!optional_integer(value, subject)) stop_without_value(subject, "integer");
}

bool FreeForm::optional_integer(int& value, const Subject& subject) {
  if (!next_item(Type::integer, subject, "integer")) return false;
  if (item_.kind != Item::Kind::word || !parse_integer(item_.word, value)) {
    stop_at_item(subject, "integer");
  }
  return true;
}

// Takes the next item if it is a plain decimal behind nothing but blanks, as nearly all numbers
// are.
bool FreeForm::take_plain_decimal(double& value) {
  if (repeats_left_ > 0 || slash_met_ || ran_out_) return false;
  cursor_.skip_blanks();
  const std::string_view rest = cursor_.rest();
  const std::size_t size = scan_decimal(rest, value);
  if (size == 0 || (size < rest.size() && !ends_word(rest[size], Grammar::free_form))) return false;
  cursor_.skip(size);
  value_taken_ = true;
  return true;
}

void FreeForm::real(double& value, const Subject& subject) {
  double plain = 0.0;
  if (take_plain_decimal(plain)) {
    value = plain;
    return;
  }
  if (!next_item(Type::real, subject, "number")) stop_without_value(subject, "number");
  if (item_.kind != Item::Kind::word || !parse_real(item_.word, value)) {
    stop_at_item(subject, "number");
  }
}

void FreeForm::finite_real(double& value, const Subject& subject) {
  real(value, subject);
  if (!std::isfinite(value)) stop_at_item(subject, "finite number");
}

bool FreeForm::logical(bool& value, const Subject& subject) {
  if (!next_item(Type::logical, subject, "T or F")) return false;
  if (item_.kind != Item::Kind::word || !parse_logical(item_.word, value)) {
    stop_at_item(subject, "T or F");
  }
  return true;
}

bool FreeForm::text(std::span<char> value, const Subject& subject) {
  if (!next_item(Type::text, subject, "text")) return false;
  assign(value, word());
  return true;
}

void FreeForm::skip_words(int count, const Subject& subject) {
  for (int i = 0; i < count; ++i) next_item(Type::text, subject, "a word before it");
}

void FreeForm::text_or_blank(std::span<char> value) {
  assign(value, {});
  if (repeats_left_ > 0) {
    text(value, {});
    return;
  }
  if (!find_item()) return;
  take_item(cursor_, Grammar::free_form, item_);
  value_taken_ = true;
  repeats_left_ = item_.repeat - 1;
  repeated_type_ = Type::text;
  if (item_.kind == Item::Kind::word) assign(value, item_.word);
  if (item_.kind == Item::Kind::quoted) assign(value, item_.quoted);
  // What stands behind a malformed text cannot be told apart into items.
  ran_out_ = item_.kind == Item::Kind::malformed || item_.kind == Item::Kind::ended;
  if (ran_out_) repeats_left_ = 0;
}

}  // namespace io
