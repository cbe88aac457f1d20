#include "io/output_file.hpp"

#include <gtest/gtest.h>

#include <map>

#include "io/units.hpp"
#include "support/support.hpp"

namespace {

namespace fs = std::filesystem;

constexpr int out_unit = 30;

TEST(output_file, writes_more_than_its_buffer_and_replaces_or_keeps) {
  support::TempFolder folder;
  support::write_file("out", "before");
  io::open_kept(out_unit, "out");
  io::close(out_unit);
  EXPECT_EQ(support::read_file("out"), "before");
  io::open_replaced(out_unit, "out");
  std::string expected;
  const std::string text(300000, 'x');
  io::output(out_unit).text(text);
  for (int i = 0; i < 50000; ++i) {
    io::output(out_unit).integer(i, 7).end_line();
    std::string line = std::to_string(i) + "\n";
    expected += std::string(8 - line.size(), ' ') + line;
  }
  io::close(out_unit);
  EXPECT_EQ(support::read_file("out"), text + expected);
}

void write(const char* name, const std::string& content) {
  io::open_replaced(out_unit, name);
  io::output(out_unit).text(content);
  io::close(out_unit);
}

// The names in the working folder and their content, links shown by where they lead.
std::string folder() {
  std::map<std::string, std::string> files;
  for (const fs::directory_entry& entry : fs::directory_iterator(".")) {
    files[entry.path().filename()] = entry.is_symlink() ? "->" + fs::read_symlink(entry).string()
                                                        : support::read_file(entry.path());
  }
  std::string text;
  for (const auto& [name, content] : files) text += name + "=" + content + " ";
  return text;
}

TEST(output_file, takes_the_place_of_another_when_it_is_complete) {
  support::TempFolder temporary;
  support::write_file("old", "old");
  fs::permissions("old", fs::perms::owner_all);
  fs::create_symlink("old", "link");
  fs::create_symlink("new", "dangling");
  io::open_replaced(out_unit, "link");
  io::output(out_unit).text(std::string(300000, 'x'));
  EXPECT_EQ(support::read_file("old"), "old");
  io::close(out_unit);
  write("link", "1");
  write("dangling", "2");
  write("new ", "3");
  EXPECT_EQ(folder(), "dangling=->new link=->old new=2 new =3 old=1 ");
  EXPECT_EQ(fs::status("old").permissions(), fs::perms::owner_all);
  fs::create_directory("folder");
  EXPECT_TRUE(support::stops(2, "folder:0: expected a file that can be written, found: Is a dir",
                             [] { write("folder", ""); }));
  EXPECT_TRUE(support::stops(2, "no/file:0: expected a file that can be written, found: No such",
                             [] { write("no/file", ""); }));
}

TEST(output_file, is_put_in_place_together_with_others_or_not_at_all) {
  support::TempFolder temporary;
  support::write_file("a", "old");
  fs::create_symlink("/dev/full", "full");
  for (const char* stop : {"", "a stop between the files", "full"}) {
    const auto put = [&](const char* text) {
      io::begin_results();
      write("b", text);
      if (*stop == 'a') io::fatal_stop(stop);
      write(*stop == 'f' ? stop : "c", text);
      write("a", text);
      EXPECT_EQ(support::read_file("a"), *stop == '\0' ? "old" : "new");
      io::put_results_in_place();
    };
    if (*stop == '\0') {
      put("new");
    } else {
      EXPECT_TRUE(support::stops(2, stop, [&] { put("newer"); }));
    }
    EXPECT_EQ(folder(), "a=new b=new c=new full=->/dev/full ");
  }
  write("a", "alone");
  EXPECT_EQ(support::read_file("a"), "alone") << "a stop ends the waiting for others, too";
}

}  // namespace
