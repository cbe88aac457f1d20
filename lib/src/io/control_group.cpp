#include "io/control_group.hpp"

#include <algorithm>
#include <optional>
#include <string>

#include "io/fatal.hpp"
#include "io/item_scanner.hpp"
#include "io/units.hpp"
#include "io/values.hpp"

namespace io {

namespace {

constexpr std::string_view group_opening = "&control";
constexpr std::string_view group_ending = "&end";

struct Token {
  enum class Kind { value, equals, comma, close, ended };
  Kind kind = Kind::close;
  Item item;           // of a value; its text, unquoted too, is in `quoted`
  std::string shown;   // the value as it is spelled, but for its quotes
  long long line = 0;  // where it stands in the file
};

bool equal_in_any_case(std::string_view text, std::string_view small_letters) {
  return std::equal(text.begin(), text.end(), small_letters.begin(), small_letters.end(),
                    [](char a, char b) { return lowered(a) == b; });
}

// The place behind "&control" in a record that opens the group, or npos.
std::size_t find_opening(std::string_view record) {
  const std::string_view text =
      record.substr(std::min(record.find_first_not_of(" \t"), record.size()));
  if (!text.empty() && text.front() == '!') return std::string_view::npos;
  for (std::size_t at = record.find('&'); at != std::string_view::npos;
       at = record.find('&', at + 1)) {
    const std::size_t behind = at + group_opening.size();
    if (!equal_in_any_case(record.substr(at, group_opening.size()), group_opening)) continue;
    if (behind >= record.size() || ends_word(record[behind], Grammar::free_form)) return behind;
  }
  return std::string_view::npos;
}

// The group as a row of tokens, with two to look at ahead of the one taken.
class GroupTokens {
 public:
  explicit GroupTokens(int fid) : fid_(fid), cursor_(fid) { open_group(); }

  Token take();
  bool next_is_value();
  Place place_of(const Token& token) const { return {name(fid_), token.line}; }

 private:
  void open_group();
  Token scan();

  int fid_;
  RecordCursor cursor_;
  long long opening_line_ = 0;
  std::optional<Token> first_ahead_;
  std::optional<Token> second_ahead_;
};

void GroupTokens::open_group() {
  while (cursor_.next_record()) {
    const std::size_t behind = find_opening(cursor_.rest());
    if (behind == std::string_view::npos) continue;
    cursor_.skip(behind);
    opening_line_ = line_number(fid_);
    return;
  }
  fatal_stop({name(fid_)}, "expected a group '&control', found none in the file");
}

Token GroupTokens::scan() {
  for (;;) {
    if (cursor_.at_end()) {
      if (cursor_.next_record()) continue;
      Token ended;
      ended.kind = Token::Kind::ended;
      return ended;
    }
    const char c = cursor_.peek();
    if (c == '!') cursor_.skip(cursor_.rest().size());
    if (c == ' ' || c == '\t') cursor_.advance();
    if (c != '!' && c != ' ' && c != '\t') break;
  }
  Token token;
  token.line = line_number(fid_);
  const char c = cursor_.peek();
  if (c == '/') return token;
  if (c == '=' || c == ',') {
    cursor_.advance();
    token.kind = c == '=' ? Token::Kind::equals : Token::Kind::comma;
    return token;
  }
  take_item(cursor_, Grammar::control_group, token.item);
  if (token.item.kind == Item::Kind::ended) {
    fatal_stop(next_place(fid_), "expected a closing quote for the text in line " +
                                     std::to_string(token.line) + ", found the end of the file");
  }
  // A word would lie in a record that the look ahead may leave.
  if (token.item.kind != Item::Kind::quoted) token.item.quoted = token.item.word;
  token.shown = std::string(token.item.prefix) + token.item.quoted;
  const bool ending =
      token.item.kind == Item::Kind::word && equal_in_any_case(token.item.quoted, group_ending);
  token.kind = ending ? Token::Kind::close : Token::Kind::value;
  return token;
}

Token GroupTokens::take() {
  Token token = first_ahead_ ? *first_ahead_ : scan();
  first_ahead_ = second_ahead_;
  second_ahead_.reset();
  // Not before it is taken: what stands before the end may be wrong already.
  if (token.kind == Token::Kind::ended) {
    fatal_stop(next_place(fid_), "expected '/' to close the group opened in line " +
                                     std::to_string(opening_line_) + ", found the end of the file");
  }
  return token;
}

// Whether a value comes next that is not the key of the next "key =". Nothing is read behind the
// end of the group.
bool GroupTokens::next_is_value() {
  if (!first_ahead_) first_ahead_ = scan();
  if (first_ahead_->kind != Token::Kind::value) return false;
  if (!second_ahead_) second_ahead_ = scan();
  return second_ahead_->kind != Token::Kind::equals;
}

// Stores the item in a variable of its type; false when it has another form.
struct StoreValue {
  const Item& item;
  bool is_word() const { return item.kind == Item::Kind::word; }
  bool operator()(bool* value) const { return is_word() && parse_logical(item.quoted, *value); }
  bool operator()(int* value) const { return is_word() && parse_integer(item.quoted, *value); }
  bool operator()(double* value) const { return is_word() && parse_real(item.quoted, *value); }
  bool operator()(Line* value) const {
    if (item.kind == Item::Kind::quoted) *value = item.quoted;
    return item.kind == Item::Kind::quoted;
  }
};

const char* form_of(const ControlKey& key) {
  static constexpr const char* forms[] = {"T or F", "an integer", "a number", "a text in quotes"};
  return forms[key.target.index()];
}

void assign_value(GroupTokens& tokens, const ControlKey& key) {
  const Token value = tokens.take();
  const Item& item = value.item;
  if (item.repeat == 1 && item.kind == Item::Kind::null) return;
  if (item.repeat != 1 || !std::visit(StoreValue{item}, key.target)) {
    fatal_stop(tokens.place_of(value), "expected " + std::string(form_of(key)) + " for the key '" +
                                           std::string(key.name) + "', found " +
                                           quoted(value.shown));
  }
}

const ControlKey& find_key(GroupTokens& tokens, const Token& token,
                           std::span<const ControlKey> keys) {
  const Item& item = token.item;
  if (item.kind == Item::Kind::word && item.prefix.empty()) {
    for (const ControlKey& key : keys) {
      if (equal_in_any_case(item.quoted, key.name)) return key;
    }
  }
  std::string known;
  for (const ControlKey& key : keys) known += (known.empty() ? "" : ", ") + std::string(key.name);
  fatal_stop(tokens.place_of(token),
             "expected a key of the group (" + known + "), found " + quoted(token.shown));
}

}  // namespace

void read_control_group(int fid, std::span<const ControlKey> keys) {
  GroupTokens tokens(fid);
  for (;;) {
    const Token token = tokens.take();
    if (token.kind == Token::Kind::close) return;
    if (token.kind == Token::Kind::comma) continue;
    if (token.kind == Token::Kind::equals) {
      fatal_stop(tokens.place_of(token), "expected a key, found '='");
    }
    const ControlKey& key = find_key(tokens, token, keys);
    const Token equals = tokens.take();
    if (equals.kind != Token::Kind::equals) {
      fatal_stop(tokens.place_of(equals),
                 "expected '=' behind the key '" + std::string(key.name) + "', found " +
                     (equals.kind == Token::Kind::value ? quoted(equals.shown) : "none"));
    }
    // A value is missing where a separator, the end or the next "key =" follows.
    if (tokens.next_is_value()) assign_value(tokens, key);
  }
}

}  // namespace io
