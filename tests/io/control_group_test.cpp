#include "io/control_group.hpp"

#include <gtest/gtest.h>

#include "io/units.hpp"
#include "support/support.hpp"

namespace {

using support::unit;

std::string read_group(const std::string& content) {
  support::TempFolder folder;
  support::write_file("in", content);
  bool flag = true;
  int count = 1;
  double size = 1.0;
  io::Line text("none");
  const io::ControlKey keys[] = {
      {"flag", &flag}, {"count", &count}, {"size", &size}, {"text", &text}};
  io::open_existing(unit, "in");
  io::read_control_group(unit, keys);
  io::close(unit);
  return std::string(flag ? "T" : "F") + " " + std::to_string(count) + " " +
         std::to_string(size).substr(0, 4) + " " + std::string(text.content());
}

TEST(control_group, reads_every_spelling) {
  const struct {
    const char* content;
    const char* result;
  } cases[] = {
      {"&control\n/\n", "T 1 1.00 none"},
      {"&control &end", "T 1 1.00 none"},
      {"&CONTROL\n FLAG=.f. , Count = -3\n SIZE\n=\n 2.5d-1 &END", "F -3 0.25 none"},
      {"title\n! &control count=7\n&other count=9 /\n text &control count=2 / count=5",
       "T 2 1.00 none"},
      {"&&control count=3 /", "T 3 1.00 none"},
      {"&controlx count=9 /\n& control\n&control,count=4/", "T 4 1.00 none"},
      {"&control count=2 count=3 /", "T 3 1.00 none"},
      {"&control size = , count=2,,flag=f /", "F 2 1.00 none"},
      {"&control size = count = 2 flag =\n/", "T 2 1.00 none"},
      {"&control count=2!no blank\n! size=5 /\n size=3 ! / '\n/", "T 2 3.00 none"},
      {"&control text='a/b ''c'' ! =' count=5/", "T 5 1.00 a/b 'c' ! ="},
      {"&control text=\"two\nlines\" /", "T 1 1.00 twolines"},
      {"&control count=1*8 size=1* text=1*'x' /", "T 8 1.00 x"},
  };
  for (const auto& test : cases) EXPECT_EQ(read_group(test.content), test.result) << test.content;
}

TEST(control_group, stops_with_file_and_line) {
  const struct {
    const char* content;
    const char* message;
  } cases[] = {
      {"", "in:0: expected a group '&control', found none in the file"},
      {"&control\n\ncount=1\n",
       "in:4: expected '/' to close the group opened in line 1, found the end"},
      {"&control\n\nwidth = 1 /",
       "in:3: expected a key of the group (flag, count, size, text), found 'width'"},
      {"&control count(1) = 1 /", "found 'count(1)'"},
      {"&control count 5 /", "expected '=' behind the key 'count', found '5'"},
      {"&control = 5 /", "expected a key, found '='"},
      {"&control\ncount = 5.0 /", "in:2: expected an integer for the key 'count', found '5.0'"},
      {"&control size = '1' /", "expected a number for the key 'size', found '1'"},
      {"&control text = abc /", "expected a text in quotes for the key 'text', found 'abc'"},
      {"&control count = 1 2 /", "size, text), found '2'"},
      {"&control count = 2*1 /", "expected an integer for the key 'count', found '2*1'"},
      {"&control 1*count = 1 /", "size, text), found '1*count'"},
      {"&control count=2&end", "expected an integer for the key 'count', found '2&end'"},
      {"&control text = 'a'b /", "expected a text in quotes for the key 'text'"},
      {"&control text = 'a\nb", "in:3: expected a closing quote for the text in line 1"},
  };
  for (const auto& test : cases) {
    EXPECT_TRUE(support::stops(2, test.message, [&] { read_group(test.content); })) << test.content;
  }
}

}  // namespace
