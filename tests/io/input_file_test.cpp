#include "io/input_file.hpp"

#include <gtest/gtest.h>

#include <random>

#include "io/text.hpp"
#include "io/units.hpp"
#include "support/support.hpp"

namespace {

using support::unit;

std::string next(int fid) {
  io::Text<5> line("??");
  return io::read_line(fid, line) == io::read_ok ? std::string(line.content()) : "<end>";
}

class InputFile : public testing::Test {
 protected:
  void open(const std::string& content) {
    support::write_file("in", content);
    io::open_existing(unit, "in");
  }
  std::string next_lines(int count) {
    std::string lines;
    for (int i = 0; i < count; ++i) lines += next(unit) + " ";
    return lines;
  }
  void TearDown() override { io::close(unit); }
  support::TempFolder folder_;
};

TEST_F(InputFile, reads_records_with_any_line_end) {
  open("one\ntwo\r\n\n1234567\r\n12345\r\nlast");
  for (const char* line : {"one", "two", "", "12345", "12345", "last", "<end>", "<end>"}) {
    EXPECT_EQ(next(unit), line);
  }
  EXPECT_EQ(io::line_number(unit), 6);
  io::Text<3> kept("abc");
  EXPECT_EQ(io::read_line(unit, kept), io::end_of_file);
  EXPECT_EQ(kept.padded(), "abc");
}

TEST_F(InputFile, steps_back_by_records) {
  open("1\n2\n3\n");
  EXPECT_FALSE(io::step_back(unit));
  EXPECT_EQ(next_lines(2), "1 2 ");
  EXPECT_TRUE(io::step_back(unit));
  EXPECT_EQ(next_lines(3), "2 3 <end> ");
  EXPECT_TRUE(io::step_back(unit));  // clears the end condition only
  EXPECT_EQ(next(unit), "<end>");
  io::step_back(unit);
  io::step_back(unit);
  EXPECT_EQ(next(unit), "3");
  EXPECT_EQ(io::line_number(unit), 3);
}

// A file with lines of every length around the size of the window, read both ways and searched.
TEST_F(InputFile, gives_the_same_lines_whatever_the_window_holds) {
  std::mt19937 random(7);
  std::vector<std::string> lines;
  std::string content;
  for (int i = 0; i < 3000; ++i) {
    std::size_t size = random() % 400;
    if (i % 500 == 250) size = 200000 + random() % 400000;
    std::string line(size, 'x');
    for (std::size_t at = 0; at < size; at += 1 + random() % 97) line[at] = "Oniom *"[random() % 7];
    if (random() % 10 == 0 && size > 5) line.replace(random() % (size - 5), 5, "oNiOm");
    lines.push_back(line);
    content += line + (random() % 5 == 0 ? "\r\n" : "\n");
  }
  support::write_file("in", content);
  io::open_existing(unit, "in");
  io::go_to_end(unit);
  io::Line line;
  for (std::size_t i = lines.size(); i-- > 0;) {
    ASSERT_TRUE(io::step_back(unit));
    ASSERT_EQ(io::read_line(unit, line), io::read_ok);
    ASSERT_EQ(line.padded(), io::Line(lines[i]).padded()) << i;
    if (i % 700 == 0) {
      ASSERT_EQ(io::line_number(unit), static_cast<long long>(i) + 1);
    }
    io::step_back(unit);
  }
  std::size_t found = 0;
  for (const std::string& text : lines) {
    std::string head = text.substr(0, io::line_capacity);
    for (char& c : head) c = static_cast<char>(std::tolower(c));
    if (head.find("oniom") == std::string::npos) continue;
    ASSERT_EQ(io::read_line_holding(unit, "oniom", true, line), io::read_ok);
    ASSERT_EQ(line.padded(), io::Line(text).padded());
    ++found;
  }
  EXPECT_GT(found, 100U);
  EXPECT_EQ(io::read_line_holding(unit, "oniom", true, line), io::end_of_file);
  EXPECT_EQ(line.padded(), io::Line(lines.back()).padded());
  EXPECT_EQ(io::line_number(unit), 3000);
  io::rewind(unit);
  std::string_view record;
  for (const std::string& text : lines) {
    ASSERT_EQ(io::read_record(unit, record), io::read_ok);
    ASSERT_EQ(record, text);
  }
  EXPECT_EQ(io::read_record(unit, record), io::end_of_file);
}

TEST_F(InputFile, names_the_system_s_reason_when_it_cannot_open) {
  std::filesystem::create_directory("dir");
  EXPECT_NE(io::try_open_existing(unit, "missing"), 0);
  EXPECT_FALSE(io::is_open(unit));
  const struct {
    std::string name;
    const char* message;
  } cases[] = {
      {"missing   ", "missing:0: expected a file that can be read, found: No such file"},
      {"dir", "Is a directory"},
      {std::string("a\0b", 3), "No such file"},
      {"/dev/zero",
       "/dev/zero:0: expected a regular file or at most 64 MiB from a pipe, found more"},
  };
  for (const auto& test : cases) {
    EXPECT_TRUE(support::stops(2, test.message, [&] {
      io::open_existing(unit, test.name);
      next(unit);
    }));
    EXPECT_FALSE(io::is_open(unit));
  }
}

}  // namespace
