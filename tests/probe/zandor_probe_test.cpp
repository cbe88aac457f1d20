// The program zandor_probe as a user runs it.
#include <gtest/gtest.h>

#include "support/support.hpp"

namespace {

class ZandorProbe : public testing::Test {
 protected:
  ZandorProbe() {
    for (const char* name : {"chemsmart-GaussianTests-CH3CH3_qmmm.log", "edge-crlf.fchk",
                             "cclib-Gaussian-Gaussian16-dvb_td.out"}) {
      std::filesystem::copy_file(PROJECT_FOLDER "/tests/flib/corpus/" + std::string(name), name);
    }
    support::write_file("empty.log", "");
    support::write_file("x\xff", "unknown\n");
  }
  support::TempFolder folder_;
};

TEST_F(ZandorProbe, prints_a_block_per_file) {
  const support::Outcome outcome =
      support::run({ZANDOR_PROBE, "edge-crlf.fchk", "chemsmart-GaussianTests-CH3CH3_qmmm.log"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(outcome.out,
            "file = edge-crlf.fchk\ntype = GAUSSIAN FCHK\nversion = UNKNOWN\ninfo = -1\noniom = F\n"
            "natom = 3\nnalpha = 5\nnbeta = 5\nnbasis = 7\nnbsuse = 7\n\n"
            "file = chemsmart-GaussianTests-CH3CH3_qmmm.log\ntype = GAUSSIAN LOG\n"
            "version = G16RevC.01\ninfo = 2\noniom = T\nnatom = 8\nnqm = 4\nnqmmm = 8\n");
}

TEST_F(ZandorProbe, prints_json_and_goes_on_behind_files_it_cannot_read) {
  const support::Outcome unknown = support::run({ZANDOR_PROBE, "--json", "x\xff"});
  EXPECT_EQ(unknown.out, "{\"file\":\"x\xEF\xBF\xBD\",\"info\":-1,\"oniom\":false}\n");
  EXPECT_EQ(unknown.err, "*** WARNING: Unknown output type with file 'x\xff'\n");
  EXPECT_EQ(unknown.status, 1);
  const support::Outcome mixed =
      support::run({ZANDOR_PROBE, "--json", "missing", "empty.log", "x\xff", "-",
                    "cclib-Gaussian-Gaussian16-dvb_td.out"});
  EXPECT_NE(
      mixed.err.find("zandor_probe: missing: expected a file that can be read, found: No such"),
      std::string::npos);
  EXPECT_NE(mixed.err.find("zandor_probe: empty.log:1: expected the first line"),
            std::string::npos);
  EXPECT_NE(mixed.err.find("zandor_probe: -: expected the name of a file"), std::string::npos);
  EXPECT_NE(mixed.out.find(
                "\n{\"file\":\"cclib-Gaussian-Gaussian16-dvb_td.out\",\"type\":\"GAUSSIAN LOG\","
                "\"version\":\"G16RevA.03\",\"info\":2,\"oniom\":false,\"natom\":20,\"ni\":25,"
                "\"na\":25,\"nci\":20,\"nae\":35,\"nfc\":10,\"nfv\":0}\n"),
            std::string::npos);
  EXPECT_EQ(mixed.status, 2) << "2 outranks 1";
}

TEST_F(ZandorProbe, explains_itself) {
  EXPECT_EQ(support::run({ZANDOR_PROBE, "--help"}).status, 0);
  EXPECT_EQ(support::run({ZANDOR_PROBE}).status, 2);
  EXPECT_EQ(support::run({ZANDOR_PROBE, "--unknown"}).status, 2);
}

}  // namespace
