// Text of fixed capacity: content left-justified, the rest blanks. Trailing blanks are not content;
// a longer value is cut. Every name, keyword and line buffer of the system is such a text.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>
#include <string_view>

namespace io {

// The capacity of file names, keywords and line buffers.
inline constexpr std::size_t line_capacity = 200;

// The content of a blank-padded text: all of it up to the last character that is not a blank.
constexpr std::string_view trimmed(std::string_view text) {
  const std::size_t last = text.find_last_not_of(' ');
  return last == std::string_view::npos ? std::string_view{} : text.substr(0, last + 1);
}

// The text from its first character that is not a blank.
constexpr std::string_view without_leading_blanks(std::string_view text) {
  const std::size_t first = text.find_first_not_of(' ');
  return first == std::string_view::npos ? std::string_view{} : text.substr(first);
}

// Stores `value`, cut or padded with blanks to the capacity of `text`. `value` may lie in `text`.
inline void assign(std::span<char> text, std::string_view value) {
  const std::size_t kept = std::min(text.size(), value.size());
  std::copy_n(value.data(), kept, text.data());
  std::fill(text.begin() + static_cast<std::ptrdiff_t>(kept), text.end(), ' ');
}

// A blank-padded text of `capacity` characters, all blank at first.
template <std::size_t capacity>
class Text {
 public:
  Text() { chars_.fill(' '); }
  explicit Text(std::string_view value) { assign(chars_, value); }
  Text& operator=(std::string_view value) {
    assign(chars_, value);
    return *this;
  }

  // All characters, padding included.
  std::string_view padded() const { return {chars_.data(), capacity}; }
  // The content without the padding.
  std::string_view content() const { return trimmed(padded()); }
  operator std::span<char>() { return chars_; }

 private:
  std::array<char, capacity> chars_;
};

using Line = Text<line_capacity>;

// The characters of a line buffer as text, padding included.
inline std::string_view view(std::span<const char> text) { return {text.data(), text.size()}; }

}  // namespace io
