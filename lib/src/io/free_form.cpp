#include "io/free_form.hpp"

#include <charconv>
#include <cmath>

#include "io/values.hpp"

namespace io {

namespace {

std::string name_of(const Subject& subject) {
  return subject.number < 0 ? std::string(subject.text) : joined(subject.text, " ", subject.number);
}

}  // namespace

FreeForm::FreeForm(int fid) : cursor_(fid) { ran_out_ = !cursor_.next_record(); }

FreeForm::FreeForm(int fid, std::string_view buffer) : cursor_(fid, buffer) {}

void FreeForm::stop(const Place& place, const Subject& subject, std::string_view expected,
                    std::string_view found) {
  std::string remark;
  const long long began = cursor_.began();
  if (began > 0 && began < place.line) remark = joined("reading began at line ", began);
  if (!subject.remark.empty()) remark.append(remark.empty() ? "" : "; ").append(subject.remark);
  if (!remark.empty()) remark = " (" + remark + ")";
  fatal_stop(place, "expected ", name_of(subject), " (", expected, "), found ", found, remark);
}

void FreeForm::warn_of_open_end(const Subject& subject) const {
  if (!value_taken_ || repeats_left_ > 0 || slash_met_ || !cursor_.at_open_end()) return;
  warn(cursor_.here(), "the file ends right behind " + name_of(subject) +
                           ", without a line end: it may have been cut inside the number");
}

void FreeForm::stop_at_item(const Subject& subject, std::string_view expected) {
  stop(cursor_.here(), subject, expected, quoted(word()));
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

// Makes item_ the next item; null when it is that, behind a slash or not there.
void FreeForm::take(Type type) {
  if (repeats_left_ > 0) {
    --repeats_left_;
    return;
  }
  item_.kind = Item::Kind::null;
  if (!find_item()) return;
  take_item(cursor_, Grammar::free_form, item_);
  value_taken_ = true;
  repeats_left_ = item_.repeat - 1;
  repeated_type_ = type;
}

// The same, for an item that must be well-formed. False when it is null.
bool FreeForm::next_item(Type type, const Subject& subject, std::string_view expected) {
  take(type);
  if (ran_out_) stop(cursor_.behind_end(), subject, expected, cursor_.end_name());
  if (item_.kind == Item::Kind::ended) {
    stop(cursor_.behind_end(), subject, "closing quote", cursor_.end_name());
  }
  if (item_.kind == Item::Kind::malformed) stop_at_item(subject, expected);
  if (item_.kind == Item::Kind::null) return false;
  if (type != repeated_type_) {
    stop(cursor_.here(), subject, expected, "a repeated value of another kind");
  }
  return true;
}

template <class Value>
bool FreeForm::parsed_item(Value& value, bool (*parse)(std::string_view, Value&), Type type,
                           const Subject& subject, std::string_view expected) {
  if (!next_item(type, subject, expected)) return false;
  if (item_.kind != Item::Kind::word || !parse(item_.word, value)) stop_at_item(subject, expected);
  return true;
}

void FreeForm::integer(int& value, const Subject& subject) {
  if (optional_integer(value, subject)) return;
  stop(cursor_.here(), subject, "integer", missing_value());
}

bool FreeForm::optional_integer(int& value, const Subject& subject) {
  return parsed_item(value, parse_integer, Type::integer, subject, "integer");
}

// Takes the next item if it is a number in its usual spelling behind nothing but blanks, as nearly
// all are.
bool FreeForm::take_plain_number(double& value) {
  if (repeats_left_ > 0 || slash_met_ || ran_out_) return false;
  cursor_.skip_blanks();
  const std::string_view rest = cursor_.rest();
  const char* const end = rest.data() + rest.size();
  double plain = 0.0;
  const auto [behind, error] = std::from_chars(rest.data(), end, plain);
  if (error != std::errc{} || !std::isfinite(plain)) return false;
  if (behind != end && !ends_word(*behind, Grammar::free_form)) return false;
  value = plain;
  cursor_.skip(static_cast<std::size_t>(behind - rest.data()));
  value_taken_ = true;
  return true;
}

void FreeForm::real(double& value, const Subject& subject) {
  if (take_plain_number(value)) return;
  if (parsed_item(value, parse_real, Type::real, subject, "number")) return;
  stop(cursor_.here(), subject, "number", missing_value());
}

void FreeForm::finite_real(double& value, const Subject& subject) {
  real(value, subject);
  if (!std::isfinite(value)) stop_at_item(subject, "finite number");
}

bool FreeForm::logical(bool& value, const Subject& subject) {
  return parsed_item(value, parse_logical, Type::logical, subject, "T or F");
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
  take(Type::text);
  const bool is_text = item_.kind == Item::Kind::word || item_.kind == Item::Kind::quoted;
  assign(value, is_text ? word() : std::string_view{});
  // What stands behind a malformed text cannot be told apart into items.
  if (item_.kind == Item::Kind::malformed || item_.kind == Item::Kind::ended) {
    ran_out_ = true;
    repeats_left_ = 0;
  }
}

Line item_of(int fid, std::string_view text, int number) {
  FreeForm items(fid, text);
  Line item;
  for (int i = 0; i < number; ++i) items.text_or_blank(item);
  return item;
}

}  // namespace io
