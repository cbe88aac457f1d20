#include "zandor/get_sgn_param.hpp"

#include <gtest/gtest.h>

#include "support/support.hpp"

namespace {

namespace fs = std::filesystem;
using Counts = std::array<int, 8>;  // natom, nbasis, nbsuse, mi, ma, mci, nfc, nfv

struct Parameters {
  Counts counts{0, 0, 33};
  std::array<int, 2> location{5, 5};
  double value = 5;
};

Parameters ask(bool ref, const char* finp) {
  Parameters p;
  Counts& c = p.counts;
  zandor::get_sgn_param(ref, finp, c[0], c[1], c[2], c[3], c[4], c[5], c[6], c[7], p.location,
                        p.value);
  return p;
}

Parameters read_header(const std::string& content) {
  support::TempFolder folder;
  support::write_file("coord-a.sgn", content);
  return ask(true, "coord-a.sgn  ");
}

const std::string good_header =
    "title\n\"n a t o m\" = 3\nnmo , = , 27\nmi = 12\n\"m a\" = 15\nmci = 3\nNFC = 1\nNFV = +0\n"
    "tden_maxloc = 12 2\ntden_maxval = -.72\n";

TEST(get_sgn_param, reads_the_third_field_of_each_keyword_line) {
  const Parameters p = read_header(good_header);
  EXPECT_EQ(p.counts, (Counts{3, 27, 33, 12, 15, 3, 1, 0})) << "nbsuse, the third, is not touched";
  EXPECT_EQ(p.location, (std::array<int, 2>{12, 2}));
  EXPECT_EQ(p.value, -0.72);
}

TEST(get_sgn_param, stops_at_missing_keywords_and_values) {
  const auto edited = [](const std::string& from, const std::string& to) {
    std::string text = good_header;
    return text.replace(text.find(from), from.size(), to);
  };
  EXPECT_TRUE(support::stops(
      1, "coord-a.sgn:0: no line holds 'NFC' after line 10\nCan not find keyword NFC stop!\n",
      [&] { read_header(edited("mci = 3\n", "") + "mci = 3\n"); }));
  EXPECT_TRUE(support::stops(2,
                             "coord-a.sgn:2: expected natom (integer), found the end of the line",
                             [&] { read_header(edited("\"n a t o m\" = 3", "natom 12")); }));
  EXPECT_EQ(read_header(edited("mi = 12", "nmiss 1 2\nmi = 12")).counts[3], 2) << "a longer word";
}

TEST(get_sgn_param, asks_the_outputs_of_the_job_without_a_reference) {
  support::TempFolder folder;
  const fs::path corpus = PROJECT_FOLDER "/tests/flib/corpus";
  fs::copy_file(corpus / "cclib-FChk-Gaussian09-dvb_td.fchk", "job.fchk");
  fs::copy_file(corpus / "cclib-Gaussian-Gaussian16-dvb_td.out", "job.log");
  const Parameters p = ask(false, "run/job.sgn");
  EXPECT_EQ(p.counts, (Counts{20, 60, 60, 25, 25, 20, 10, 0}));
  EXPECT_EQ(p.location, (std::array<int, 2>{0, 0}));
  EXPECT_EQ(p.value, 0.0);
  // An ONIOM job takes its atoms from the log; this one prints no roots.
  fs::remove("job.log");
  fs::copy_file(corpus / "chemsmart-GaussianTests-CH3CH3_qmmm.log", "job.log");
  EXPECT_EQ(ask(false, "job.x").counts, (Counts{4, 60, 60, 4, 12, 0, 1, 0}));
}

}  // namespace
