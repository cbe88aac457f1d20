#include "export/json_text.hpp"

#include "export/text_columns.hpp"
#include "io/fatal.hpp"

namespace exporting {

namespace {

constexpr int line_depth = 2;  // keys that stand on lines of their own: at most this deep
constexpr std::string_view hexadecimal = "0123456789abcdef";

bool is_character(unsigned code, int bytes) {
  constexpr unsigned smallest[] = {0, 0, 0x80, 0x800, 0x10000};
  return code >= smallest[bytes] && code <= 0x10ffff && (code < 0xd800 || code > 0xdfff);
}

// Whether all bytes make up UTF-8.
bool is_utf8(std::string_view text) {
  unsigned code = 0;
  int bytes = 0, expected = 0;  // of the character: in all, and yet to come
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    const bool continues = byte >> 6U == 0b10U;
    if (continues != (expected > 0) || byte >= 0xf8) return false;
    if (continues) {
      code = code << 6U | (byte & 0x3fU);
      if (--expected == 0 && !is_character(code, bytes)) return false;
    } else if (byte >= 0x80) {
      bytes = byte >= 0xf0 ? 4 : byte >= 0xe0 ? 3 : 2;
      expected = bytes - 1;
      code = byte & 0x7fU >> static_cast<unsigned>(bytes);
    }
  }
  return expected == 0;
}

}  // namespace

void JsonText::new_line() {
  out_.end_line();
  for (int i = 0; i < depth_ && i < line_depth; ++i) out_.text(" ");
}

void JsonText::begin_value() {
  if (!first_ && !behind_key_) out_.text(",");
  first_ = false;
  behind_key_ = false;
}

void JsonText::open(char bracket, bool on_new_line) {
  begin_value();
  if (on_new_line) new_line();
  out_.text({&bracket, 1});
  ++depth_;
  first_ = true;
}

void JsonText::close(char bracket) {
  --depth_;
  if (bracket == '}' && depth_ < line_depth) new_line();
  out_.text({&bracket, 1});
  first_ = false;
}

void JsonText::key(std::string_view name) {
  if (!first_) out_.text(",");
  first_ = true;
  if (depth_ <= line_depth) new_line();
  text(name);
  out_.text(": ");
  behind_key_ = true;
}

// Bytes that are no UTF-8 are spelt as the characters of their numbers, and '<' as an escape, so
// that no text can end the script that holds it in a page.
void JsonText::text(std::string_view value) {
  begin_text();
  const unsigned char last_plain = is_utf8(value) ? 0xff : 0x7e;
  for (const char& c : value) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte >= 0x20 && byte <= last_plain && c != '"' && c != '\\' && c != '<') {
      out_.text({&c, 1});
    } else {
      const char escape[] = {'\\', 'u', '0', '0', hexadecimal[byte / 16], hexadecimal[byte % 16]};
      out_.text({escape, sizeof escape});
    }
  }
  end_text();
}

void JsonText::begin_text() {
  begin_value();
  out_.text("\"");
}

void JsonText::integer(long long value) {
  begin_value();
  out_.text(std::to_string(value));
}

void JsonText::boolean(bool value) {
  begin_value();
  out_.text(value ? "true" : "false");
}

void JsonText::null() {
  begin_value();
  out_.text("null");
}

void JsonText::number(double value) {
  if (!(value - value == 0.0)) {
    io::fatal_stop("expected finite numbers to write, found one that is not");
  }
  begin_value();
  out_.text(shortest(value));
}

void JsonText::texts(const std::vector<std::string>& values) {
  begin_array();
  for (const std::string& value : values) text(value);
  end_array();
}

void JsonText::integers(const std::vector<int>& values) {
  begin_array();
  for (const int value : values) integer(value);
  end_array();
}

void JsonText::numbers(const double* values, std::size_t size, bool on_new_line) {
  begin_array(on_new_line);
  for (std::size_t i = 0; i < size; ++i) number(values[i]);
  end_array();
}

void JsonText::number_rows(const double* values, std::size_t rows, std::size_t size) {
  begin_array();
  for (std::size_t i = 0; i < rows; ++i) numbers(values + i * size, size, true);
  end_array();
}

}  // namespace exporting
