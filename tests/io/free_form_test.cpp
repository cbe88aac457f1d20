#include "io/free_form.hpp"

#include <gtest/gtest.h>

#include "io/text.hpp"
#include "io/units.hpp"
#include "support/support.hpp"

namespace {

using support::unit;

// Reads items as `kinds` says (i, r, l, w; capitals: a value must be given) and joins what came
// back; "-" where nothing was given.
std::string read_items(io::FreeForm& items, const std::string& kinds) {
  std::string result;
  for (const char kind : kinds) {
    int integer = 0;
    double real = 0;
    bool logical = false;
    io::Text<4> word;
    bool given = true;
    if (kind == 'i') given = items.optional_integer(integer, {"item"});
    if (kind == 'I') items.integer(integer, {"item", 3});
    if (kind == 'R') items.real(real, {"item"});
    if (kind == 'F') items.finite_real(real, {"item"});
    if (kind == 'l') given = items.logical(logical, {"item"});
    if (kind == 'w') given = items.text(word, {"item"});
    std::string shown = kind == 'w' ? std::string(word.content()) : std::to_string(integer);
    if (kind == 'R' || kind == 'F') shown = std::to_string(real).substr(0, 4);
    if (kind == 'l') shown = logical ? "T" : "F";
    result += (result.empty() ? "" : "|") + (given ? shown : "-");
  }
  return result;
}

std::string read_file_items(const std::string& content, const std::string& kinds) {
  support::TempFolder folder;
  support::write_file("in", content);
  io::open_existing(unit, "in");
  std::string result;
  {
    io::FreeForm items(unit);
    result = read_items(items, kinds);
  }
  io::Line rest;
  result += io::read_line(unit, rest) == io::read_ok ? " >" + std::string(rest.content()) : "";
  io::close(unit);
  return result;
}

TEST(free_form, takes_items_as_separators_and_repeats_say) {
  const struct {
    const char* content;
    const char* kinds;
    const char* result;
  } cases[] = {
      {"1 2\t3,4 , 5\nnext", "iiiii", "1|2|3|4|5 >next"},
      {",,,     3\n", "wwwi", "-|-|-|3"},
      {"1,\n2", "ii", "1|2"},
      {"1,\n,2", "iii", "1|-|2"},
      {"1 2/3\nnext", "iiii", "1|2|-|- >next"},
      {"run/c2h4 5\nnext", "wi", "run|- >next"},
      {"3*7 1", "iiii", "7|7|7|1"},
      {"2*,5", "iii", "-|-|5"},
      {"2* 5", "iwi", "-|-|5"},
      {"2*1.5-1 2*.true. 2*'a b'", "RRllww", "0.15|0.15|T|T|a b|a b"},
      {"'it''s' \"a\"\"b\"", "ww", "it's|a\"b"},
      {"'ab\ncd' x", "ww", "abcd|x"},
      {"1 '' x", "iww", "1||x"},
      {"it's abcdefgh", "ww", "it's|abcd"},
      {"'a/b', 3*x", "wwww", "a/b|x|x|x"},
      {"12*", "w", "-"},
      {"\xff\x01 2", "wi", "\xff\x01|2"},
      {"1 2\r\n3 4\r\n", "iii", "1|2|3"},
  };
  for (const auto& test : cases) {
    EXPECT_EQ(read_file_items(test.content, test.kinds), test.result) << test.content;
  }
}

TEST(free_form, stops_with_file_line_and_what_was_found) {
  const struct {
    const char* content;
    const char* kinds;
    const char* message;
  } cases[] = {
      {"1\nx5\n", "II", "in:2: expected item 3 (integer), found 'x5'"},
      {"5.0\n", "i", "in:1: expected item (integer), found '5.0'"},
      {"1\n", "II", "in:2: expected item 3 (integer), found the end of the file"},
      {"", "R", "in:1: expected item (number), found the end of the file"},
      {"1,,", "III", "in:1: expected item 3 (integer), found no value between separators"},
      {"/", "R", "found a slash"},
      {"nan", "F", "expected item (finite number), found 'nan'"},
      {"..t", "l", "expected item (T or F), found '..t'"},
      {"maybe", "l", "expected item (T or F), found 'maybe'"},
      {"0*5", "i", "found '0*5'"},
      {"2*5", "iR", "found a repeated value of another kind"},
      {"'abc'd", "w", "found 'd'"},
      {"'abc\n\n", "w", "in:3: expected item (closing quote), found the end of the file"},
      {"a\x01\x80 c", "i", "found 'a\\x01\\x80'"},
      {"1234567890123456789012345678901234567890123", "i",
       "found '1234567890123456789012345678901234567890'"},
  };
  for (const auto& test : cases) {
    EXPECT_TRUE(support::stops(2, test.message, [&] { read_file_items(test.content, test.kinds); }))
        << test.content;
  }
}

TEST(free_form, does_not_leave_a_line_buffer) {
  support::TempFolder folder;
  support::write_file("in", "natom = 12\nnext\n");
  io::open_existing(unit, "in");
  io::Line line;
  io::read_line(unit, line);
  io::FreeForm items(unit, line.padded());
  EXPECT_EQ(read_items(items, "wwI"), "nato|=|12");
  EXPECT_TRUE(support::stops(2, "in:1: expected item 3 (integer), found the end of the line",
                             [&] { read_items(items, "I"); }));
  io::Line word;
  for (const char* missing : {"a b", "a b 'open", "a 2*'open", "a b,,", "a b/c", "a 'b'c d"}) {
    io::FreeForm words(unit, missing);
    for (int i = 0; i < 3; ++i) words.text_or_blank(word);
    EXPECT_EQ(word.content(), "") << missing;
  }
  double number = 0.0;
  io::FreeForm malformed(unit, "'b'7 8");
  malformed.text_or_blank(word);
  EXPECT_TRUE(
      support::stops(2, "found the end of the line", [&] { malformed.real(number, {"item"}); }));
  io::close(unit);
}

}  // namespace
