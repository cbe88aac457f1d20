#include "io/output_file.hpp"

#include <gtest/gtest.h>

#include "io/units.hpp"
#include "support/support.hpp"

namespace {

constexpr int unit = 30;

TEST(output_file, writes_more_than_its_buffer_and_replaces_or_keeps) {
  support::TempFolder folder;
  support::write_file("out", "before");
  io::open_kept(unit, "out ");
  io::close(unit);
  EXPECT_EQ(support::read_file("out"), "before");
  io::open_replaced(unit, "out");
  std::string expected;
  const std::string text(300000, 'x');
  io::output(unit).text(text);
  for (int i = 0; i < 50000; ++i) {
    io::output(unit).integer(i, 7).end_line();
    std::string line = std::to_string(i) + "\n";
    expected += std::string(8 - line.size(), ' ') + line;
  }
  io::close(unit);
  EXPECT_EQ(support::read_file("out"), text + expected);
}

}  // namespace
