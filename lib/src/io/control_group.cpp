#include "io/control_group.hpp"

#include <algorithm>
#include <string>
#include <utility>

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
  long long line = 0;  // where it stands in the file

  // The value as it is spelled, but for its quotes.
  std::string spelled() const { return item.prefix + item.quoted; }
};

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

// The group as a row of tokens.
class GroupTokens {
 public:
  // Moves behind the opening of the group.
  explicit GroupTokens(int fid);

  // The next token, which the caller must not ask for behind the end of the group.
  Token next();

  // Stops at a token: it is not what was expected.
  template <class... Parts>
  [[noreturn]] void stop(const Token& token, const Parts&... parts) const;

 private:
  int fid_;
  RecordCursor cursor_;
  long long opening_line_ = 0;
};

GroupTokens::GroupTokens(int fid) : fid_(fid), cursor_(fid) {
  while (cursor_.next_record()) {
    const std::size_t behind = find_opening(cursor_.rest());
    if (behind == std::string_view::npos) continue;
    cursor_.skip(behind);
    opening_line_ = line_number(fid_);
    return;
  }
  fatal_stop({name(fid_)}, "expected a group '&control', found none in the file");
}

Token GroupTokens::next() {
  Token token;
  for (;;) {
    cursor_.skip_blanks();
    if (!cursor_.at_end() && cursor_.peek() != '!') break;
    if (cursor_.next_record()) continue;
    token.kind = Token::Kind::ended;
    return token;
  }
  token.line = line_number(fid_);
  const char c = cursor_.peek();
  if (c == '/') return token;
  if (c == '=' || c == ',') {
    cursor_.advance();
    token.kind = c == '=' ? Token::Kind::equals : Token::Kind::comma;
    return token;
  }
  take_item(cursor_, Grammar::control_group, token.item);
  token.kind = Token::Kind::ended;
  if (token.item.kind == Item::Kind::ended) return token;
  // A word lies in the record, which reading ahead may replace.
  if (token.item.kind != Item::Kind::quoted) token.item.quoted = token.item.word;
  const bool ending =
      token.item.kind == Item::Kind::word && equal_in_any_case(token.item.quoted, group_ending);
  token.kind = ending ? Token::Kind::close : Token::Kind::value;
  return token;
}

template <class... Parts>
void GroupTokens::stop(const Token& token, const Parts&... parts) const {
  // The end of the file is an error only when it is reached: what stands before it may be wrong.
  if (token.kind == Token::Kind::ended) {
    const std::string missing =
        token.line > 0 ? joined("a closing quote for the text in line ", token.line)
                       : joined("'/' to close the group opened in line ", opening_line_);
    fatal_stop(next_place(fid_), "expected ", missing, ", found the end of the file");
  }
  fatal_stop({name(fid_), token.line}, parts...);
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

void assign_value(const GroupTokens& tokens, const Token& value, const ControlKey& key) {
  const Item& item = value.item;
  if (item.repeat == 1 && item.kind == Item::Kind::null) return;
  if (item.repeat != 1 || !std::visit(StoreValue{item}, key.target)) {
    tokens.stop(value, "expected ", form_of(key), " for the key '", key.name, "', found ",
                quoted(value.spelled()));
  }
}

const ControlKey& find_key(const GroupTokens& tokens, const Token& token,
                           std::span<const ControlKey> keys) {
  const Item& item = token.item;
  std::string known;
  for (const ControlKey& key : keys) {
    const bool is_plain = item.kind == Item::Kind::word && item.prefix.empty();
    if (is_plain && equal_in_any_case(item.quoted, key.name)) return key;
    known.append(known.empty() ? "" : ", ").append(key.name);
  }
  tokens.stop(token, "expected a key of the group (", known, "), found ", quoted(token.spelled()));
}

}  // namespace

void read_control_group(int fid, std::span<const ControlKey> keys) {
  GroupTokens tokens(fid);
  const ControlKey* key = nullptr;  // waits for its value
  Token token = tokens.next();
  while (token.kind != Token::Kind::close) {
    Token following = token.kind == Token::Kind::ended ? token : tokens.next();
    if (token.kind == Token::Kind::comma) {
      key = nullptr;  // a missing value
    } else if (token.kind != Token::Kind::value) {
      tokens.stop(token, "expected a key, found '='");
    } else if (following.kind == Token::Kind::equals) {
      key = &find_key(tokens, token, keys);
      following = tokens.next();
    } else if (key != nullptr) {
      assign_value(tokens, token, *key);
      key = nullptr;
    } else {
      tokens.stop(following, "expected '=' behind the key '", find_key(tokens, token, keys).name,
                  "', found ",
                  following.kind == Token::Kind::value ? quoted(following.spelled()) : "none");
    }
    token = std::move(following);
  }
}

}  // namespace io
