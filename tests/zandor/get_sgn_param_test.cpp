#include "get_sgn_param.hpp"

#include <gtest/gtest.h>
#include <unistd.h>

#include "support/support.hpp"

namespace {

struct Header {
  int natom = 0, nbasis = 0, nbsuse = 33, mi = 0, ma = 0, mci = 0, nfc = 0, nfv = 0;
  std::array<int, 2> loc{};
  double value = 0;
};

Header read_header(const std::string& content) {
  support::TempFolder folder;
  support::write_file("coord-a.sgn", content);
  Header h;
  zandor::get_sgn_param(true, "coord-a.sgn  ", h.natom, h.nbasis, h.nbsuse, h.mi, h.ma, h.mci,
                        h.nfc, h.nfv, h.loc, h.value);
  return h;
}

const std::string good =
    "title\n\"n a t o m\" = 3\nnmo , = , 27\nmi = 12\n\"m a\" = 15\nmci = 3\nNFC = 1\nNFV = +0\n"
    "tden_maxloc = 12 2\ntden_maxval = -.72\n";

TEST(get_sgn_param, reads_the_third_field_of_each_keyword_line) {
  const Header h = read_header(good);
  EXPECT_EQ(h.natom, 3);
  EXPECT_EQ(h.nbasis, 27);
  EXPECT_EQ(h.nbsuse, 33) << "not touched";
  EXPECT_EQ(h.mi * 100 + h.ma, 1215);
  EXPECT_EQ(h.mci * 100 + h.nfc * 10 + h.nfv, 310);
  EXPECT_EQ(h.loc, (std::array<int, 2>{12, 2}));
  EXPECT_EQ(h.value, -0.72);
}

TEST(get_sgn_param, stops_at_missing_keywords_and_values) {
  const auto edited = [](const std::string& from, const std::string& to) {
    std::string text = good;
    return text.replace(text.find(from), from.size(), to);
  };
  EXPECT_EXIT(dup2(2, 1);
              read_header(edited("mci = 3\n", "") + "mci = 3\n"), testing::ExitedWithCode(1),
              "coord-a.sgn: no line holds 'NFC' after line 10\nCan not find keyword NFC stop!");
  EXPECT_EXIT(read_header(edited("\"n a t o m\" = 3", "natom 12")), testing::ExitedWithCode(2),
              "coord-a.sgn:2: expected natom \\(integer\\), found the end of the line");
  EXPECT_EXIT(read_header(edited("= 12", "= 12x")), testing::ExitedWithCode(2),
              "coord-a.sgn:4: expected mi \\(integer\\), found '12x'");
  EXPECT_EQ(read_header(edited("mi = 12", "nmiss 1 2\nmi = 12")).mi, 2) << "a longer word holds it";
}

TEST(get_sgn_param, asks_the_outputs_of_the_job_without_a_reference) {
  support::TempFolder folder;
  const std::filesystem::path corpus = PROJECT_FOLDER "/tests/flib/corpus";
  const auto probe = [&](const char* log) {
    std::filesystem::copy_file(corpus / log, "job.log",
                               std::filesystem::copy_options::overwrite_existing);
    Header h;
    h.loc = {5, 5};
    h.value = 5;
    zandor::get_sgn_param(false, "run/job.sgn", h.natom, h.nbasis, h.nbsuse, h.mi, h.ma, h.mci,
                          h.nfc, h.nfv, h.loc, h.value);
    EXPECT_EQ(h.loc, (std::array<int, 2>{0, 0}));
    EXPECT_EQ(h.value, 0.0);
    return std::array<int, 8>{h.natom, h.nbasis, h.nbsuse, h.mi, h.ma, h.mci, h.nfc, h.nfv};
  };
  std::filesystem::copy_file(corpus / "cclib-FChk-Gaussian09-dvb_td.fchk", "job.fchk");
  EXPECT_EQ(probe("cclib-Gaussian-Gaussian16-dvb_td.out"),
            (std::array<int, 8>{20, 60, 60, 25, 25, 20, 10, 0}));
  // An ONIOM job takes its atoms from the log; this one prints no roots.
  EXPECT_EQ(probe("chemsmart-GaussianTests-CH3CH3_qmmm.log"),
            (std::array<int, 8>{4, 60, 60, 4, 12, 0, 1, 0}));
}

}  // namespace
