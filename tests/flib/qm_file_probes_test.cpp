// Every probe of quantum-chemistry files against real files and edited ones, and on files that
// break off. corpus/answers.txt holds one line per file: its name, then what each probe gives:
// "-" unchanged, "?" not to be asked, "io" a fatal stop, "stop" the probe's own message.
#include <gtest/gtest.h>
#include <unistd.h>

#include <climits>
#include <cstdlib>
#include <functional>
#include <sstream>

#include "flib/qm_file_ifoniom.hpp"
#include "flib/qm_file_natom.hpp"
#include "flib/qm_file_natom_oniom_qm.hpp"
#include "flib/qm_file_nbasis_nbsuse.hpp"
#include "flib/qm_file_nci.hpp"
#include "flib/qm_file_type.hpp"
#include "io/text.hpp"
#include "io/units.hpp"
#include "support/support.hpp"

namespace {

namespace fs = std::filesystem;

constexpr int kept = INT_MIN;
using Answers = std::vector<std::string>;

std::string shown(int value) { return value == kept ? "-" : std::to_string(value); }

Answers shown(const std::vector<int>& values) {
  Answers answers;
  for (const int value : values) answers.push_back(shown(value));
  return answers;
}

// The probes in the order of the answers, with how many each gives.
struct Probe {
  std::size_t answers;
  std::function<Answers(const std::string& file)> ask;
};

const Probe probes[] = {
    {4,
     [](const std::string& file) {
       io::Line label("-"), version("-");
       int info = kept;
       testing::internal::CaptureStdout();
       flib::qm_file_type(file, label, version, info);
       const bool warned = !testing::internal::GetCapturedStdout().empty();
       return Answers{std::string(label.content()), std::string(version.content()), shown(info),
                      warned ? "T" : "F"};
     }},
    {2,
     [](const std::string& file) {
       bool ifoniom = false;
       int info = kept;
       flib::qm_file_ifoniom(file, ifoniom, info);
       return Answers{ifoniom ? "T" : "F", shown(info)};
     }},
    {2,
     [](const std::string& file) {
       int natom = kept, info = kept;
       flib::qm_file_natom(file, natom, info);
       return shown({natom, info});
     }},
    {3,
     [](const std::string& file) {
       int nqm = kept, nqmmm = kept, info = kept;
       flib::qm_file_natom_oniom_qm(file, nqm, nqmmm, info);
       return shown({nqm, nqmmm, info});
     }},
    {5,
     [](const std::string& file) {
       int na = kept, nb = kept, nbasis = kept, nbsuse = kept, info = kept;
       io::close(io::standard_input);
       lseek(STDIN_FILENO, 0, SEEK_SET);
       flib::qm_file_nbasis_nbsuse(file, na, nb, nbasis, nbsuse, info);
       return shown({na, nb, nbasis, nbsuse, info});
     }},
    {7,
     [](const std::string& file) {
       int ni = kept, na = kept, nci = kept, nae = kept, nfc = kept, nfv = kept, info = kept;
       flib::qm_file_nci(file, ni, na, nci, nae, nfc, nfv, info);
       return shown({ni, na, nci, nae, nfc, nfv, info});
     }},
};

void check(const Probe& probe, const std::string& file, const Answers& expected) {
  if (expected[0] == "io" || expected[0] == "stop") {
    EXPECT_EXIT(probe.ask(file), testing::ExitedWithCode(expected[0] == "io" ? 2 : 1), "");
    return;
  }
  const Answers answers = probe.ask(file);
  for (std::size_t i = 0; i < probe.answers; ++i) {
    if (expected[i] == "?") continue;
    EXPECT_EQ(answers[i], expected[i]) << file << ", answer " << i;
  }
}

TEST(qm_file_probes, answer_as_the_corpus_says) {
  const char* const other = std::getenv("ZANDOR_CORPUS");  // another folder of files and answers
  const fs::path corpus = other != nullptr ? other : CORPUS;
  const support::TempFolder folder;
  support::write_file("input", " NBsUse=   321 1.00D-06 EigRej= -1.00D+00 NBFU=   321\n");
  ASSERT_NE(std::freopen("input", "r", stdin), nullptr);
  std::istringstream lines(support::read_file(corpus / "answers.txt"));
  int files = 0;
  for (std::string line; std::getline(lines, line); ++files) {
    std::istringstream items(line);
    Answers row;
    for (std::string item; std::getline(items, item, '|');) row.push_back(item);
    ASSERT_EQ(row.size(), 24U) << line;
    auto next = row.begin() + 1;
    for (const Probe& probe : probes) {
      const auto end = next + static_cast<std::ptrdiff_t>(probe.answers);
      if (*next != "?") check(probe, corpus / row[0], {next, end});
      next = end;
    }
  }
  EXPECT_GT(files, 50);
}

// What the three size probes give for a file of this content.
Answers sizes_of(const std::string& content) {
  const support::TempFolder folder;
  support::write_file("f", content);
  int natom = kept, nqm = kept, nqmmm = kept, info = kept;
  flib::qm_file_natom("f", natom, info);
  flib::qm_file_natom_oniom_qm("f", nqm, nqmmm, info);
  return shown({natom, nqm, nqmmm, info});
}

const std::string log = " Entering Gaussian System\n *****************\n Gaussian 16:  x-G16 d\n";

TEST(qm_file_probes, take_layers_with_and_without_freeze_codes) {
  const std::string charges = " NAtoms= 3 x\n Charge = 0\n Charge = 0\n";
  EXPECT_EQ(
      sizes_of(log + charges + " C(PDBName=CA,ResName=H) 0.1 0.2 -0.3 H\n C,-1,0.1,0.2,0.3,H\n" +
               " C 0 1. 2. 3. L H 1 0.7\n"),
      (Answers{"3", "2", "3", "0"}));
  EXPECT_EXIT(sizes_of(log + charges + " C 0.1 0.2 -0.3 H\n C 0 1. 2. 3.\n"),
              testing::ExitedWithCode(2),
              "f:8: expected the layer of atom 2, found the end of the l");
  EXPECT_EXIT(sizes_of(log + charges + " C 0.1 0.2 -0.3 H\n"), testing::ExitedWithCode(2),
              "f:8: expected the layer of atom 2, found the end of the file");
}

TEST(qm_file_probes, count_the_rows_of_a_cif_loop) {
  EXPECT_EQ(
      sizes_of("_cell_length_a 1\nloop_\n_atom_site_occupancy\n _atom_site_x\n\nC 1\n# c\nH 1\n"
               "_next 1\nloop_\n")[0],
      "2");
}

TEST(qm_file_probes, stop_where_a_file_breaks_off_or_holds_no_number) {
  const struct {
    std::string content;
    const char* message;
  } cases[] = {
      {log + " NAtoms= three\n", "f:4: expected the number of atoms \\(integer\\), found 'three'"},
      {log + " NAtoms=\n",
       "f:4: expected the number of atoms \\(integer\\), found the end of the l"},
      {"ORCA version 5:\nCARTESIAN COORDINATES (ANGSTROEM)\n---\nC 0 0 0\nH 0 0",
       "f:6: expected the end of the atom block after 2 atoms, found the end of the file"},
      {"UniMoVib data file\nNATM\n",
       "f:3: expected the number of atoms \\(integer\\), found the end"},
  };
  for (const auto& test : cases) {
    EXPECT_EXIT(sizes_of(test.content), testing::ExitedWithCode(2), test.message);
  }
  EXPECT_EQ(sizes_of(std::string(10000000, 'x'))[0], "-") << "one line of 10 MB";
}

}  // namespace
