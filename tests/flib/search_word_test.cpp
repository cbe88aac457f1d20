#include "flib/search_word.hpp"

#include <gtest/gtest.h>

#include "io/text.hpp"
#include "io/units.hpp"
#include "support/support.hpp"

namespace {

constexpr int unit = 20;
using Line = io::Text<20>;

// Opens a file of the given content, searches it, and says which line the file then stands behind
// ("2:" and the buffer), or "no".
class SearchWord : public testing::Test {
 protected:
  void open(const std::string& content) {
    io::close(unit);
    support::write_file("in", content);
    io::open_existing(unit, "in");
    line_ = "before";
  }
  std::string shown(bool found) {
    return found ? std::to_string(io::line_number(unit)) + ":" + std::string(line_.content())
                 : "no";
  }
  void TearDown() override { io::close(unit); }
  support::TempFolder folder_;
  Line line_;
};

TEST_F(SearchWord, compares_columns_padded_with_blanks) {
  const std::string content =
      " Begin_zand_info\nbegin_zand_info\nBegin_zand_infox\nBegin_zand_info\n";
  open(content);
  EXPECT_EQ(shown(flib::search_word(unit, 1, 15, "Begin_zand_info", line_)), "3:Begin_zand_infox");
  open(content);
  EXPECT_EQ(shown(flib::search_word(unit, 1, 16, "Begin_zand_info  ", line_)), "4:Begin_zand_info");
  EXPECT_EQ(shown(flib::search_word(unit, 1, 16, "x", line_)), "no");
  open("abc\n");
  EXPECT_EQ(shown(flib::search_word(unit, 5, 4, "   ", line_)), "1:abc");
  open("abc                 \n");
  EXPECT_EQ(shown(flib::search_word(unit, 3, 20, "c", line_)), "1:abc") << "the last column";
  open("abc\n");
  EXPECT_TRUE(support::stops(2, "expected columns of 'line' within 1..20, found 10..21",
                             [&] { flib::search_word(unit, 10, 21, "a", line_); }));
}

TEST_F(SearchWord, examines_as_many_lines_as_it_says) {
  const std::string content = "a\nb\nword\nd\n";
  const struct {
    int tline;
    bool limit;
    const char *free, *columns, *any_case;
  } cases[] = {
      {0, true, "no", "no", "3:word"},      {1, true, "no", "no", "no"},
      {2, true, "no", "no", "3:word"},      {3, true, "3:word", "3:word", "3:word"},
      {1, false, "3:word", "3:word", "no"},
  };
  for (const auto& test : cases) {
    open(content);
    EXPECT_EQ(shown(flib::search_word_free_tline(unit, "wo", test.tline, test.limit, line_)),
              test.free);
    open(content);
    EXPECT_EQ(shown(flib::search_word_tline(unit, 1, 4, "word", test.tline, test.limit, line_)),
              test.columns);
    open(content);
    EXPECT_EQ(shown(flib::search_word_free_ignorecase_tline(unit, "WO", line_, test.tline)),
              test.any_case);
  }
  open(content);
  flib::search_word_tline(unit, 1, 4, "word", 0, true, line_);
  EXPECT_EQ(shown(flib::search_word_free(unit, "a", line_)), "1:a") << "a limit of 0 reads nothing";
}

TEST_F(SearchWord, looks_at_the_old_buffer_only_where_the_status_is_not_asked) {
  open("");
  EXPECT_TRUE(flib::search_word_free(unit, "before", line_));
  EXPECT_TRUE(flib::search_word_free_tline(unit, "before", 1, false, line_));
  EXPECT_TRUE(flib::search_word_tline(unit, 1, 6, "before", 1, false, line_));
  EXPECT_FALSE(flib::search_word(unit, 1, 6, "before", line_));
  EXPECT_FALSE(flib::search_word_tline(unit, 1, 6, "before", 1, true, line_));
  EXPECT_FALSE(flib::search_word_free_tline(unit, "before", 1, true, line_));
  EXPECT_FALSE(flib::search_word_del_space(unit, "before", line_));
  EXPECT_FALSE(flib::search_word_back(unit, 1, 6, "before", line_));
}

TEST_F(SearchWord, finds_substrings_up_to_the_end_of_the_buffer) {
  open("first\n12345678901234key 9\n123456789012345678key\n12345678901234567key\n");
  EXPECT_EQ(shown(flib::search_word_free(unit, "key", line_)), "2:12345678901234key 9");
  EXPECT_EQ(shown(flib::search_word_free(unit, "key", line_)), "4:12345678901234567key");
  std::string beyond_window;
  for (int i = 0; i < 131000; ++i) beyond_window += "x\n";
  open(beyond_window + "end key\n" + std::string(300, '.') + "\n");
  EXPECT_EQ(shown(flib::search_word_free(unit, "key", line_)), "131001:end key");
  open("x key\nend key\r\nlast");
  EXPECT_EQ(shown(flib::search_word_free(unit, "y   ", line_)), "1:x key")
      << "blanks match padding";
  EXPECT_EQ(shown(flib::search_word_free(unit, "", line_)), "2:end key");
  for (const char* none : {"none", "y\nend", "key\r"}) {
    open("first\nx key\nend key\r\nlast");
    EXPECT_EQ(shown(flib::search_word_free(unit, none, line_)), "no") << "a line holds no line end";
  }
  EXPECT_EQ(line_.content(), "last");
}

TEST_F(SearchWord, ignores_blanks_or_case_where_asked) {
  open(" n m i s s 1\n m  i = 3\n MI\n");
  EXPECT_EQ(shown(flib::search_word_del_space(unit, "m i", line_)), "1: n m i s s 1");
  EXPECT_EQ(shown(flib::search_word_del_space(unit, "mi", line_)), "2: m  i = 3");
  EXPECT_EQ(shown(flib::search_word_del_space(unit, "mi", line_)), "no");
  open("x\ny\n an OnIoM job\n");
  EXPECT_EQ(shown(flib::search_word_free_ignorecase_tline(unit, "ONIOM", line_, 0)),
            "3: an OnIoM job");
  open("x\n 1 OnIoM" + std::string(700000, '.') + "\ny\n");
  EXPECT_EQ(shown(flib::search_word_free_ignorecase_tline(unit, "oniom", line_, 0)),
            "2: 1 OnIoM............")
      << "in the head of a line that is longer than the window";
  open("x\nan End\n");
  EXPECT_EQ(shown(flib::search_word_free_ignorecase_tline(unit, "END  ", line_, 0)), "2:an End");
}

TEST_F(SearchWord, finds_the_first_line_that_begins_with_an_integer) {
  open("\n  \n-3 1\n1.5\n'7' x\n 12/x\n");
  EXPECT_EQ(shown(flib::search_word_first_number(unit, line_)), "5:'7' x");
  EXPECT_EQ(shown(flib::search_word_first_number(unit, line_)), "6: 12/x");
  line_ = "x";
  EXPECT_EQ(shown(flib::search_word_first_number(unit, line_)), "no");
}

TEST_F(SearchWord, searches_backwards_from_the_line_read_last) {
  open("one\nkey\nthree\nkey\nfive");
  flib::search_word_free(unit, "five", line_);
  EXPECT_EQ(shown(flib::search_word_back(unit, 1, 4, "five", line_)), "5:five");
  EXPECT_EQ(shown(flib::search_word_back(unit, 1, 3, "key", line_)), "4:key");
  EXPECT_EQ(shown(flib::search_word_back(unit, 1, 3, "key", line_)), "4:key");
  EXPECT_EQ(shown(flib::search_word(unit, 1, 4, "five", line_)), "5:five") << "the line below";
  EXPECT_EQ(shown(flib::search_word_back(unit, 1, 3, "none", line_)), "no");
}

}  // namespace
