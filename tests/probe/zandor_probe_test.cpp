// The program zandor_probe as a user runs it.
#include <gtest/gtest.h>

#include "support/support.hpp"

namespace {

class ZandorProbe : public testing::Test {
 protected:
  ZandorProbe() {
    for (const char* name : {"chemsmart-GaussianTests-CH3CH3_qmmm.log", "edge-crlf.fchk",
                             "made-zand.out", "cclib-Gaussian-Gaussian16-dvb_td.out"}) {
      std::filesystem::copy_file(PROJECT_FOLDER "/tests/flib/corpus/" + std::string(name), name);
    }
    support::write_file("empty.log", "");
    support::write_file("x\xff", "unknown\n");
  }
  support::TempFolder folder_;
};

TEST_F(ZandorProbe, prints_a_block_per_file) {
  const support::Outcome outcome = support::run(
      {ZANDOR_PROBE, "edge-crlf.fchk", "chemsmart-GaussianTests-CH3CH3_qmmm.log", "made-zand.out"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(outcome.out,
            "file = edge-crlf.fchk\ntype = GAUSSIAN FCHK\nversion = UNKNOWN\ninfo = -1\noniom = F\n"
            "natom = 3\nnalpha = 5\nnbeta = 5\nnbasis = 7\nnbsuse = 7\n\n"
            "file = chemsmart-GaussianTests-CH3CH3_qmmm.log\ntype = GAUSSIAN LOG\n"
            "version = G16RevC.01\ninfo = 2\noniom = T\nnatom = 8\nnqm = 4\nnqmmm = 8\n\n"
            "file = made-zand.out\ntype = ZANDORCE\nversion = 1.0\ninfo = 3\noniom = F\n"
            "natom = 3\n");
}

TEST_F(ZandorProbe, prints_json_and_goes_on_behind_files_it_cannot_read) {
  const std::string deep = std::string(150, 'd') + "/" + std::string(100, 'd');
  std::filesystem::create_directories(deep);
  std::filesystem::rename("edge-crlf.fchk", deep + "/[x]");
  std::filesystem::copy_file(deep + "/[x]", "[x]");
  const support::Outcome outcome =
      support::run({ZANDOR_PROBE, "--json", "missing", "empty.log", "x\xff", "-", "blank ", "[x]",
                    deep + "/[x]", "cclib-Gaussian-Gaussian16-dvb_td.out"});
  const std::string checkpoint =
      "\",\"type\":\"GAUSSIAN "
      "FCHK\",\"version\":\"UNKNOWN\",\"info\":-1,\"oniom\":false,\"natom\":3,"
      "\"nalpha\":5,\"nbeta\":5,\"nbasis\":7,\"nbsuse\":7}\n{\"file\":\"";
  EXPECT_EQ(
      outcome.out,
      "{\"file\":\"x\xEF\xBF\xBD\",\"info\":-1,\"oniom\":false}\n{\"file\":\"./[x]" + checkpoint +
          deep + "/[x]" + checkpoint +
          "cclib-Gaussian-Gaussian16-dvb_td.out\",\"type\":\"GAUSSIAN LOG\",\"version\":"
          "\"G16RevA.03\",\"info\":2,\"oniom\":false,\"natom\":20,\"ni\":25,\"na\":25,\"nci\":20,"
          "\"nae\":35,\"nfc\":10,\"nfv\":0}\n");
  EXPECT_EQ(
      outcome.err,
      "zandor_probe: missing: expected a file that can be read, found: No such file or directory\n"
      "zandor_probe: empty.log:1: expected the first line of the file, found an empty file\n"
      "*** WARNING: Unknown output type with file 'x\\xff'\n"
      "zandor_probe: -: expected the name of a file, found '-' (standard input is not read)\n"
      "zandor_probe: blank : expected a file name of at most 200 characters that does not end in "
      "a blank, found another\n");
  EXPECT_EQ(outcome.status, 2) << "2 outranks 1";
  EXPECT_EQ(support::run({ZANDOR_PROBE, "x\xff"}).status, 1);
  EXPECT_EQ(support::run({ZANDOR_PROBE, "--unknown"}).status, 2);
  EXPECT_EQ(support::run({ZANDOR_PROBE, "--help"}).status, 0);
}

TEST_F(ZandorProbe, leaves_no_file_open_and_takes_names_of_200_characters) {
  const std::string folder(100, 'd');
  const std::string name = folder + "/" + std::string(99, 'f');  // 200 characters, as few as fit
  std::filesystem::create_directory(folder);
  std::filesystem::copy_file("edge-crlf.fchk", name);
  std::string line = "ulimit -n 20; \"" ZANDOR_PROBE "\" --json " + name;
  for (int i = 0; i < 15; ++i) line += " edge-crlf.fchk empty.log";
  const support::Outcome outcome = support::run({"bash", "-c", line});
  EXPECT_EQ(std::count(outcome.out.begin(), outcome.out.end(), '\n'), 16) << outcome.err;
  EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 15) << outcome.err;
}

}  // namespace
