#include "io/fatal.hpp"

#include <gtest/gtest.h>

#include <algorithm>

#include "io/process.hpp"

namespace {

TEST(fatal, shows_letters_and_escapes_what_a_terminal_would_obey) {
  const std::pair<const char*, const char*> cases[] = {
      {"M\xc3\xb6l \xe6\xb0\xb4 '\"", "M\xc3\xb6l \xe6\xb0\xb4 '\""},
      {"\x1b[2J\t\n\x7f \xc2\x9b", "\\x1b[2J\\x09\\x0a\\x7f \\xc2\\x9b"},
      {"\xe2\x80\xae \xef\xbb\xbf", "\\xe2\\x80\\xae \\xef\\xbb\\xbf"},  // right to left; not seen
      {"\xc0\xaf \xed\xa0\x80", "\\xc0\\xaf \\xed\\xa0\\x80"},           // overlong; half a pair
      {"\xf4\x90\x80\x80 \xe6\xb0", "\\xf4\\x90\\x80\\x80 \\xe6\\xb0"},  // too large; cut
  };
  for (const auto& [text, shown] : cases) EXPECT_EQ(io::printable(text), shown);
  EXPECT_EQ(io::printable("note=\"", "\""), "note=\\x22");
  const std::string letters = std::string(39, 'a') + "\xc3\xb6";
  EXPECT_EQ(io::quoted(letters), "'" + std::string(39, 'a') + "'...");
}

TEST(fatal, shows_twenty_warnings_of_a_kind) {
  const auto body = [] {
    for (int i = 0; i < 25; ++i) io::warn({"file", i}, "one");
    io::warn({}, "other\x1b");
    io::fatal_stop("stop");
    return 0;
  };
  testing::internal::CaptureStderr();
  EXPECT_EQ(io::run_program(body), 2);
  const std::string text = testing::internal::GetCapturedStderr();
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 23);
  EXPECT_TRUE(
      text.ends_with("test: warning: file:19: one\ntest: warning: other\\x1b\n"
                     "test: warning: ... and 5 more\ntest: stop\n"))
      << text;
}

}  // namespace
