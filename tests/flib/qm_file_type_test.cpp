#include "flib/qm_file_type.hpp"

#include <gtest/gtest.h>

#include "flib/qm_file_ifoniom.hpp"
#include "io/text.hpp"
#include "support/support.hpp"

namespace {

struct Kind {
  io::Line label{"kept"}, version{"kept"};
  int info = 9;
};

Kind kind_of(const std::string& content) {
  support::TempFolder folder;
  support::write_file("f", content);
  Kind kind;
  flib::qm_file_type("f", kind.label, kind.version, kind.info);
  return kind;
}

// What the corpus of the probes does not hold; most labels and versions are tested there.
TEST(qm_file_type, recognises_by_the_first_keyword_of_the_list) {
  const struct {
    std::string content;
    const char *label, *version;
    int info;
  } cases[] = {
      {" Entering Gaussian System\n *****************\n x y\n", "GAUSSIAN LOG", "", 2},
      {std::string(66, ' ') + "M\nvasp.5.4 MOLPRO\n", "VASP", "5.4", 3},
      {"x Inc., Pleasanton\n A, B, C\n", "QCHEM", "A B C", 0},
      {std::string(999, '\n') + "HESSIAN", "BDF HESS", "0", 0},
      {std::string(1000, '\n') + "HESSIAN", "kept", "kept", -1},
      {std::string(194, ' ') + "HESSIAN", "kept", "kept", -1},
  };
  for (const auto& test : cases) {
    const Kind kind = kind_of(test.content);
    EXPECT_EQ(kind.label.content(), test.label) << test.content;
    EXPECT_EQ(kind.version.content(), test.version) << test.content;
    EXPECT_EQ(kind.info, test.info) << test.content;
  }
}

TEST(qm_file_type, stops_at_a_file_that_breaks_off) {
  EXPECT_EXIT(kind_of(""), testing::ExitedWithCode(2), "f:1: expected the first line of the file");
  EXPECT_EXIT(kind_of("x Inc., Pleasanton"), testing::ExitedWithCode(2),
              "f:2: expected the line with the version, found the end of the file");
  Kind kind;
  flib::qm_file_type("missing", kind.label, kind.version, kind.info);
  EXPECT_EQ(kind.label.content(), "kept");
  EXPECT_EQ(kind.info, -1);
}

TEST(qm_file_ifoniom, finds_the_word_beyond_the_first_lines_in_any_case) {
  support::TempFolder folder;
  bool ifoniom = false;
  int info = 5;
  support::write_file("f", std::string(5000, '\n') + " an OnIOm job\n");
  flib::qm_file_ifoniom("f", ifoniom, info);
  EXPECT_TRUE(ifoniom);
  EXPECT_EQ(info, -1);
  EXPECT_EXIT(flib::qm_file_ifoniom("missing", ifoniom, info), testing::ExitedWithCode(2),
              "missing: expected a file that can be read");
}

}  // namespace
