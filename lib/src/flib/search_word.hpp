// Keyword search over open text files: move line by line until one holds a keyword.
//
// Each function takes the unit first and returns true when a line matched; the file then stands
// behind that line and the line buffer holds it (cut at the buffer's capacity or padded with
// blanks). False means the end of the file was met, or a limit. None opens, closes or rewinds.
//
// Two ways to compare:
// - column equality: the slice line(i:j), columns from 1 and inclusive, against the keyword, the
//   shorter of the two padded with blanks. A slice outside the buffer is a fatal stop; i > j is an
//   empty slice.
// - substring: the keyword at its full length, trailing blanks included, anywhere in the buffer
//   with its padding.
#pragma once

#include <span>
#include <string_view>

namespace flib {

// Column equality, from the next line to the end of the file.
bool search_word(int fid, int i, int j, std::string_view word, std::span<char> line);

// Column equality over at most `tline` lines if `limit` is set. Without it as search_word, but the
// first comparison is made whatever the read status: at the end of the file it sees what the buffer
// held before.
bool search_word_tline(int fid, int i, int j, std::string_view word, int tline, bool limit,
                       std::span<char> line);

// Column equality backwards, beginning with the line read last. At the first line without a match
// the result is false.
bool search_word_back(int fid, int i, int j, std::string_view word, std::span<char> line);

// Substring, from the next line to the end of the file; the first comparison is made whatever the
// read status.
bool search_word_free(int fid, std::string_view word, std::span<char> line);

// Substring over at most `tline` lines if `limit` is set, else as search_word_free.
bool search_word_free_tline(int fid, std::string_view word, int tline, bool limit,
                            std::span<char> line);

// Substring in any letter case. With tline > 0 the next line and at most `tline` more are examined
// (one more than the name says, on purpose); otherwise the search goes to the end of the file.
bool search_word_free_ignorecase_tline(int fid, std::string_view cword, std::span<char> cline,
                                       int tline);

// Substring after every blank is removed from both sides. The line buffer keeps its blanks.
bool search_word_del_space(int fid, std::string_view word, std::span<char> line);

// The next line whose first item consists of decimal digits only.
bool search_word_first_number(int fid, std::span<char> line);

// The two comparisons, for lines that are in memory already.
bool holds_in_columns(std::string_view line, int i, int j, std::string_view word);
bool holds_anywhere(std::string_view line, std::string_view word);

}  // namespace flib
