#include "flib/search_word.hpp"

#include <algorithm>
#include <string>

#include "flib/del_space.hpp"
#include "flib/is_number.hpp"
#include "flib/string.hpp"
#include "io/fatal.hpp"
#include "io/free_form.hpp"
#include "io/text.hpp"
#include "io/units.hpp"

namespace flib {

namespace {

bool read_next(int fid, std::span<char> line) { return io::read_line(fid, line) == io::read_ok; }

std::string without_blanks(std::string_view text) {
  std::string result(text);
  del_space(result);
  result.resize(io::trimmed(result).size());
  return result;
}

bool first_item_is_number(int fid, std::span<char> line) {
  if (io::trimmed(io::view(line)).empty()) return false;
  io::Line item;
  io::FreeForm(fid, io::view(line)).text_or_blank(item);
  return is_number(item);
}

// The search over the loaded text of the file does not see the padding of a line, in which a
// keyword that ends in a blank also matches, and sees line ends, which are no part of a line.
bool needs_single_lines(std::string_view word) {
  return word.empty() || word.back() == ' ' || word.find_first_of("\r\n") != std::string_view::npos;
}

}  // namespace

bool holds_in_columns(std::string_view line, int i, int j, std::string_view word) {
  if (i > j) return io::trimmed(word).empty();
  if (i < 1 || static_cast<std::size_t>(j) > line.size()) {
    io::fatal_stop("expected columns of 'line' within 1.." + std::to_string(line.size()) +
                   ", found " + std::to_string(i) + ".." + std::to_string(j));
  }
  const std::string_view slice =
      line.substr(static_cast<std::size_t>(i - 1), static_cast<std::size_t>(j - i + 1));
  return io::trimmed(slice) == io::trimmed(word);
}

bool holds_anywhere(std::string_view line, std::string_view word) {
  return line.find(word) != std::string_view::npos;
}

bool search_word(int fid, int i, int j, std::string_view word, std::span<char> line) {
  while (read_next(fid, line)) {
    if (holds_in_columns(io::view(line), i, j, word)) return true;
  }
  return false;
}

bool search_word_tline(int fid, int i, int j, std::string_view word, int tline, bool limit,
                       std::span<char> line) {
  if (!limit) {
    const bool read = read_next(fid, line);
    if (holds_in_columns(io::view(line), i, j, word)) return true;
    return read && search_word(fid, i, j, word, line);
  }
  for (int count = 1; count <= tline && read_next(fid, line); ++count) {
    if (holds_in_columns(io::view(line), i, j, word)) return true;
  }
  return false;
}

bool search_word_back(int fid, int i, int j, std::string_view word, std::span<char> line) {
  io::step_back(fid);
  for (;;) {
    if (!read_next(fid, line)) return false;
    if (holds_in_columns(io::view(line), i, j, word)) return true;
    // The first step leads before the line just tested, the second before the one above it.
    io::step_back(fid);
    if (!io::step_back(fid)) {
      read_next(fid, line);
      return false;
    }
  }
}

bool search_word_free(int fid, std::string_view word, std::span<char> line) {
  bool read = read_next(fid, line);
  if (holds_anywhere(io::view(line), word)) return true;
  if (read && !needs_single_lines(word)) {
    return io::read_line_holding(fid, word, false, line) == io::read_ok;
  }
  while (read) {
    read = read_next(fid, line);
    if (read && holds_anywhere(io::view(line), word)) return true;
  }
  return false;
}

bool search_word_free_tline(int fid, std::string_view word, int tline, bool limit,
                            std::span<char> line) {
  if (!limit) return search_word_free(fid, word, line);
  for (int count = 1; count <= tline && read_next(fid, line); ++count) {
    if (holds_anywhere(io::view(line), word)) return true;
  }
  return false;
}

bool search_word_free_ignorecase_tline(int fid, std::string_view cword, std::span<char> cline,
                                       int tline) {
  const std::string word = strlowcase(cword);
  const auto holds = [&] { return holds_anywhere(strlowcase(io::view(cline)), word); };
  bool read = read_next(fid, cline);
  if (holds()) return true;
  if (read && tline <= 0 && !needs_single_lines(word)) {
    return io::read_line_holding(fid, word, true, cline) == io::read_ok;
  }
  for (int counter = 1; read && (tline <= 0 || counter <= tline); ++counter) {
    read = read_next(fid, cline);
    if (holds()) return true;
  }
  return false;
}

bool search_word_del_space(int fid, std::string_view word, std::span<char> line) {
  const std::string wanted = without_blanks(word);
  while (read_next(fid, line)) {
    if (holds_anywhere(without_blanks(io::view(line)), wanted)) return true;
  }
  return false;
}

bool search_word_first_number(int fid, std::span<char> line) {
  // The first test looks at the buffer whatever the read status, as the other searches do.
  bool read = read_next(fid, line);
  if (first_item_is_number(fid, line)) return true;
  while (read) {
    read = read_next(fid, line);
    if (read && first_item_is_number(fid, line)) return true;
  }
  return false;
}

}  // namespace flib
