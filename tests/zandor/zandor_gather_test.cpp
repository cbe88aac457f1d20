// The program as a user runs it: whole job directories, compared byte by byte.
#include <gtest/gtest.h>

#include "support/support.hpp"
#include "zandor/good_job.hpp"

namespace {

namespace fs = std::filesystem;

const fs::path project = PROJECT_FOLDER;

class JobDirectory : public testing::TestWithParam<std::pair<const char*, int>> {
 protected:
  support::Outcome run() {
    fs::copy(project / GetParam().first, ".", fs::copy_options::recursive);
    return support::run({ZANDOR_GATHER, "control.inp"});
  }
  support::TempFolder folder_;
};

TEST_P(JobDirectory, gives_the_expected_results) {
  support::write_file("result.log", "kept");
  support::write_file("vib.xyz", std::string(1000000, 'x'));
  const support::Outcome outcome = run();
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out, "");
  // Of a reference that is not stationary, axes, and a step in the control file that does not
  // count.
  EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), GetParam().second)
      << outcome.err;
  EXPECT_EQ(support::read_file("result.log"), "kept");
  for (const char* name : results) {
    EXPECT_EQ(support::read_file(name), support::read_file(fs::path("expected") / name)) << name;
  }
}

INSTANTIATE_TEST_SUITE_P(all, JobDirectory,
                         testing::Values(std::pair("examples/formaldehyde-s1", 0),
                                         std::pair("examples/formaldehyde-s1-c2v", 0),
                                         std::pair("examples/ammonia-s1-c3v", 2),
                                         std::pair("tests/zandor/cases/diatomic-dipoles", 1),
                                         std::pair("tests/zandor/cases/triatomic-formats", 2),
                                         std::pair("tests/zandor/cases/pentatomic-imaginary", 1),
                                         std::pair("tests/zandor/cases/nine-atoms-c2v", 0)));

}  // namespace
