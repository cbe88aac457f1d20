#include "flib/search_word.hpp"

#include <limits>
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

// Reads on to the next line that `holds` accepts, over at most `most` lines.
template <class Holds>
bool search(int fid, std::span<char> line, Holds holds,
            long long most = std::numeric_limits<long long>::max()) {
  for (; most > 0 && read_next(fid, line); --most) {
    if (holds(io::view(line))) return true;
  }
  return false;
}

// The same, but the first comparison is made whatever the read status.
template <class Holds>
bool search_from_buffer(int fid, std::span<char> line, Holds holds) {
  const bool read = read_next(fid, line);
  return holds(io::view(line)) || (read && search(fid, line, holds));
}

auto holding(int i, int j, std::string_view word) {
  return [=](std::string_view line) { return holds_in_columns(line, i, j, word); };
}

auto holding(std::string_view word) {
  return [=](std::string_view line) { return holds_anywhere(line, word); };
}

std::string without_blanks(std::string_view text) {
  std::string result(text);
  del_space(result);
  result.resize(io::trimmed(result).size());
  return result;
}

// Whether a keyword must be compared line by line. The loaded text of a file lacks the padding of a
// line, which matches blanks at the end of a keyword, and has line ends, which no line holds.
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
  return search(fid, line, holding(i, j, word));
}

bool search_word_tline(int fid, int i, int j, std::string_view word, int tline, bool limit,
                       std::span<char> line) {
  return limit ? search(fid, line, holding(i, j, word), tline)
               : search_from_buffer(fid, line, holding(i, j, word));
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
  if (needs_single_lines(word)) return search_from_buffer(fid, line, holding(word));
  const bool read = read_next(fid, line);
  if (holds_anywhere(io::view(line), word)) return true;
  return read && io::read_line_holding(fid, word, false, line) == io::read_ok;
}

bool search_word_free_tline(int fid, std::string_view word, int tline, bool limit,
                            std::span<char> line) {
  return limit ? search(fid, line, holding(word), tline) : search_word_free(fid, word, line);
}

bool search_word_free_ignorecase_tline(int fid, std::string_view cword, std::span<char> cline,
                                       int tline) {
  const std::string word = strlowcase(cword);
  const auto holds = [&](std::string_view line) { return holds_anywhere(strlowcase(line), word); };
  const bool read = read_next(fid, cline);
  if (holds(io::view(cline))) return true;
  if (!read) return false;
  if (tline > 0) return search(fid, cline, holds, tline);
  if (needs_single_lines(word)) return search(fid, cline, holds);
  return io::read_line_holding(fid, word, true, cline) == io::read_ok;
}

bool search_word_del_space(int fid, std::string_view word, std::span<char> line) {
  const std::string wanted = without_blanks(word);
  return search(fid, line, [&](std::string_view text) {
    return holds_anywhere(without_blanks(text), wanted);
  });
}

bool search_word_first_number(int fid, std::span<char> line) {
  return search_from_buffer(fid, line, [fid](std::string_view text) {
    io::Line item = io::item_of(fid, text);
    return is_number(item);
  });
}

}  // namespace flib
