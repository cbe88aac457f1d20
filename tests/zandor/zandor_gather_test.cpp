// The program as a user runs it: whole job directories, compared byte by byte.
#include <gtest/gtest.h>

#include <fstream>

#include "support/support.hpp"

namespace {

namespace fs = std::filesystem;

const fs::path project = PROJECT_FOLDER;
constexpr const char* results[] = {"zandor-es.out", "vib.xyz", "vibp.xyz"};

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
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(support::read_file("result.log"), "kept");
  for (const char* name : results) {
    EXPECT_EQ(support::read_file(name), support::read_file(fs::path("expected") / name)) << name;
  }
}

INSTANTIATE_TEST_SUITE_P(all, JobDirectory,
                         testing::Values("examples/formaldehyde-s1", "examples/formaldehyde-s1-c2v",
                                         "tests/zandor/cases/diatomic-dipoles",
                                         "tests/zandor/cases/triatomic-formats",
                                         "tests/zandor/cases/pentatomic-imaginary",
                                         "tests/zandor/cases/nine-atoms-c2v"));

// The projected frequencies that the program gives for a job directory.
std::vector<double> frequencies(const fs::path& job_directory) {
  support::TempFolder folder;
  fs::copy(job_directory, ".", fs::copy_options::recursive);
  support::run({ZANDOR_GATHER, "control.inp"});
  std::ifstream report("zandor-es.out");
  std::vector<double> values;
  std::string line;
  while (std::getline(report, line) && line != " Projected Frequency (cm-1)") {
  }
  while (std::getline(report, line) && line.size() == 25)
    values.push_back(std::stod(line.substr(10)));
  return values;
}

TEST(symmetry, gives_the_same_vibrations_as_computing_every_job) {
  const auto all = frequencies(project / "examples/formaldehyde-s1");
  const auto derived = frequencies(project / "examples/formaldehyde-s1-c2v");
  ASSERT_EQ(all.size(), 12U);
  ASSERT_EQ(derived.size(), 12U);
  // Images of the same job differ by the noise of the forces, 1e-9 Hartree/Bohr: 1e-7 of a force
  // constant, some 1e-3 cm-1 of these frequencies.
  for (const std::size_t mode : {0U, 7U, 8U, 9U, 10U, 11U}) {
    EXPECT_NEAR(all[mode], derived[mode], 0.005) << mode + 1;
  }
}

}  // namespace
