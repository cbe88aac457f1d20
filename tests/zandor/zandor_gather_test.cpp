// The program as a user runs it: whole job directories, compared byte by byte.
#include <gtest/gtest.h>

#include "support/support.hpp"
#include "zandor/good_job.hpp"

namespace {

namespace fs = std::filesystem;

const fs::path project = PROJECT_FOLDER;

class JobDirectory : public testing::TestWithParam<const char*> {
 protected:
  support::Outcome run() {
    fs::copy(project / GetParam(), ".", fs::copy_options::recursive);
    return support::run({ZANDOR_GATHER, "control.inp", "ignored"});
  }
  support::TempFolder folder_;
};

TEST_P(JobDirectory, gives_the_expected_results) {
  support::write_file("result.log", "kept");
  support::write_file("vib.xyz", std::string(1000000, 'x'));
  const support::Outcome outcome = run();
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out, "");
  // The control file of one directory gives a step, which is not the one that counts.
  EXPECT_EQ(outcome.err.empty(), fs::path(GetParam()).stem() != "triatomic-formats") << outcome.err;
  EXPECT_EQ(support::read_file("result.log"), "kept");
  for (const char* name : results) {
    EXPECT_EQ(support::read_file(name), support::read_file(fs::path("expected") / name)) << name;
  }
}

INSTANTIATE_TEST_SUITE_P(all, JobDirectory,
                         testing::Values("examples/formaldehyde-s1", "examples/formaldehyde-s1-c2v",
                                         "examples/ammonia-s1-c3v",
                                         "tests/zandor/cases/diatomic-dipoles",
                                         "tests/zandor/cases/triatomic-formats",
                                         "tests/zandor/cases/pentatomic-imaginary",
                                         "tests/zandor/cases/nine-atoms-c2v"));

}  // namespace
