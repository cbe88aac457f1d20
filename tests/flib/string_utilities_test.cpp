// The small text routines: string, str_delete, del_space, is_number, file, get_free_fid.
#include <gtest/gtest.h>

#include "flib/del_space.hpp"
#include "flib/file.hpp"
#include "flib/get_free_fid.hpp"
#include "flib/is_number.hpp"
#include "flib/str_delete.hpp"
#include "flib/string.hpp"
#include "io/text.hpp"
#include "io/units.hpp"
#include "support/support.hpp"

namespace {

TEST(str_delete, removes_occurrences_within_its_limits) {
  const struct {
    const char *text, *sub, *result;
  } cases[] = {
      {"File-Type", "TYPE", "File-"}, {"Y. Shao, Z. Gan, E", ",", "Y. Shao Z. Gan E"},
      {"xAbyabz", "ab", "xy"},        {"ababxyz", "AB", "abxyz"},
      {"abcdefab", "ab", "cdef"},     {"abcdeab1", "ab", "cde"},
      {"plain", "", "plain"},
  };
  for (const auto& test : cases) {
    io::Text<20> text(test.text);
    flib::str_delete(text, test.sub);
    EXPECT_EQ(text.content(), test.result) << test.text << " less " << test.sub;
  }
  io::Text<4> full("a-bc");
  flib::str_delete(full, "-");
  EXPECT_EQ(full.padded(), "abc ");
}

TEST(string_utilities, take_texts_and_names_apart) {
  io::Text<12> text(" a b\tc  d");
  flib::del_space(text);
  EXPECT_EQ(text.padded(), "ab\tcd       ");
  EXPECT_EQ(flib::strlowcase("AbZ[\xc4 "), "abz[\xc4 ");
  for (const char* name : {"/a/b/job.log", "job", "dir.d/job", "  job.x "}) {
    EXPECT_EQ(io::trimmed(flib::name_main(name)), "job") << name;
  }
  EXPECT_EQ(flib::name_main("a.b.c"), "a.b  ");
  EXPECT_EQ(flib::name_main(".hidden"), std::string(7, ' '));
  EXPECT_EQ(flib::name_base("a/b/ "), std::string(5, ' '));
}

TEST(string_utilities, tell_unsigned_integers) {
  io::Text<6> number("  42");
  EXPECT_TRUE(flib::is_number(number));
  EXPECT_EQ(number.padded(), "42    ");
  for (const char* token : {"", "+42", "-1", "4.2", "1e3", "4 2", "4\t"}) {
    io::Text<6> other(token);
    EXPECT_FALSE(flib::is_number(other)) << token;
  }
}

TEST(get_free_fid, gives_the_lowest_free_handle_from_100) {
  support::TempFolder folder;
  support::write_file("in", "");
  io::open_existing(100, "in");
  int fid = 0;
  flib::get_free_fid(fid);
  EXPECT_EQ(fid, 101);
  io::close(100);
}

}  // namespace
