// Every probe of quantum-chemistry files against real files and edited ones, and on files that
// break off. corpus/answers.txt holds one line per file: its name, then what each probe gives:
// "-" unchanged, "?" not to be asked, "io" a fatal stop, "stop" the probe's own message.
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <climits>
#include <cstdlib>
#include <functional>
#include <sstream>

#include "flib/get_free_fid.hpp"
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

// What a probe makes of `count` integers.
template <std::size_t count, class Ask>
Answers integers(Ask ask) {
  std::array<int, count> values;
  values.fill(kept);
  ask(values);
  return shown({values.begin(), values.end()});
}

Answers type_of(const std::string& file) {
  io::Line label("-"), version("-");
  int info = kept;
  bool warned = false;
  const io::SinkScope sink({.print_line = [&](std::string_view) { warned = true; }});
  flib::qm_file_type(file, label, version, info);
  return {std::string(label.content()), std::string(version.content()), shown(info),
          warned ? "T" : "F"};
}

// The probes in the order of the answers, with how many each gives.
struct Probe {
  std::size_t answers;
  std::function<Answers(const std::string& file)> ask;
};

const Probe probes[] = {
    {4, type_of},
    {2,
     [](const std::string& file) {
       bool ifoniom = false;
       int info = kept;
       flib::qm_file_ifoniom(file, ifoniom, info);
       return Answers{ifoniom ? "T" : "F", shown(info)};
     }},
    {2,
     [](const std::string& f) {
       return integers<2>([&](auto& v) { flib::qm_file_natom(f, v[0], v[1]); });
     }},
    {3,
     [](const std::string& f) {
       return integers<3>([&](auto& v) { flib::qm_file_natom_oniom_qm(f, v[0], v[1], v[2]); });
     }},
    {5,
     [](const std::string& f) {
       io::close(io::standard_input);
       lseek(STDIN_FILENO, 0, SEEK_SET);
       return integers<5>(
           [&](auto& v) { flib::qm_file_nbasis_nbsuse(f, v[0], v[1], v[2], v[3], v[4]); });
     }},
    {7,
     [](const std::string& f) {
       return integers<7>(
           [&](auto& v) { flib::qm_file_nci(f, v[0], v[1], v[2], v[3], v[4], v[5], v[6]); });
     }},
};

void ask_and_compare(const Probe& probe, const std::string& file, const Answers& expected) {
  if (expected[0] == "io" || expected[0] == "stop") {
    EXPECT_TRUE(support::stops(expected[0] == "io" ? 2 : 1, "", [&] { probe.ask(file); })) << file;
    return;
  }
  const Answers answers = probe.ask(file);
  for (std::size_t i = 0; i < probe.answers; ++i) {
    if (expected[i] == "?") continue;
    EXPECT_EQ(answers[i], expected[i]) << file << ", answer " << i;
  }
}

void check(const Probe& probe, const std::string& file, const Answers& expected) {
  ask_and_compare(probe, file, expected);
  int fid = 0;
  flib::get_free_fid(fid);
  EXPECT_EQ(fid, 100) << file << " is left open";
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

const std::string charges = " NAtoms= 3 x\n Charge = 0\n Charge = 0\n";
const std::string log = " Entering Gaussian System\n *****************\n Gaussian 16:  x-G16 d\n";

TEST(qm_file_probes, take_layers_with_and_without_freeze_codes) {
  EXPECT_EQ(
      sizes_of(log + charges + " C(PDBName=CA,ResName=H) 0.1 0.2 -0.3 H\n C,-1,0.1,0.2,0.3,H\n" +
               " C 0 1. 2. 3. L H 1 0.7\n"),
      (Answers{"3", "2", "3", "0"}));
}

TEST(qm_file_probes, recognise_within_the_first_1000_lines_and_200_characters) {
  const struct {
    std::string content;
    Answers answers;
  } cases[] = {
      {std::string(66, ' ') + "M\nvasp.5.4 MOLPRO\n", {"VASP", "5.4", "3", "F"}},
      {" QRX MOLECULAR INFOS\n VERSION\n 2.1\n", {"QRX", "2.1", "3", "F"}},
      {std::string(999, '\n') + "HESSIAN", {"BDF HESS", "0", "0", "F"}},
      {std::string(1000, '\n') + "HESSIAN", {"-", "-", "-1", "T"}},
      {std::string(194, ' ') + "HESSIAN", {"-", "-", "-1", "T"}},
  };
  const support::TempFolder folder;
  for (const auto& test : cases) {
    support::write_file("f", test.content);
    EXPECT_EQ(type_of("f"), test.answers) << test.content;
  }
  EXPECT_EQ(type_of("missing"), (Answers{"-", "-", "-1", "F"}));
}

// Electrons of either spin, basis functions and the class code.
Answers basis_of(const std::string& content) {
  const support::TempFolder folder;
  support::write_file("f", content);
  int na = kept, nb = kept, nbasis = kept, nbsuse = kept, info = kept;
  flib::qm_file_nbasis_nbsuse("f", na, nb, nbasis, nbsuse, info);
  return shown({na, nb, nbasis, info});
}

TEST(qm_file_probes, count_open_shells_and_miss_what_is_not_there) {
  EXPECT_EQ(basis_of("NWChem\n  functions       =    19\n  atoms           =     3\n"
                     "  closed shells   =     4\n  open shells     =     1\n\n"),
            (Answers{"5", "4", "19", "0"}));
  EXPECT_EQ(basis_of("Number of alpha electrons I 8\nNumber of beta electrons I 7\n"
                     "Number of basis functions I 13\nNumber of independent functions I 13\n"
                     "Alpha MO coefficients N= 4\n"),
            (Answers{"8", "7", "13", "0"}))
      << "one blank between fields";
  EXPECT_EQ(basis_of(" TURBOMOLE V7.2\n no count\n"), (Answers{"-", "-", "-", "-1"}));
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
      {log + charges + " C 0.1 0.2 -0.3 H\n C 0 1. 2. 3.\n",
       "f:8: expected the layer of atom 2, found the end of the l"},
      {log + charges + " C 0.1 0.2 -0.3 H\n",
       "f:8: expected the layer of atom 2, found the end of the file"},
      {log + " NAtoms= 3 x\n Charge = 0\n\t\n",
       "f:6: expected the first atom line, found a blank one"},
      {log + " NAtoms= three\n", "f:4: expected the number of atoms (integer), found 'three'"},
      {log + " NAtoms=\n", "f:4: expected the number of atoms (integer), found the end of the l"},
      {"ORCA version 5:\nCARTESIAN COORDINATES (ANGSTROEM)\n---\nC 0 0 0\nH 0 0",
       "f:6: expected the end of the atom block after 2 atoms, found the end of the file"},
      {"x Inc., Pleasanton", "f:2: expected the line with the version, found the end of the file"},
      {"", "f:1: expected the first line of the file, found an empty file"},
      {"UniMoVib data file\nNATM\n", "f:3: expected the number of atoms (integer), found the end"},
  };
  for (const auto& test : cases) {
    EXPECT_TRUE(support::stops(2, test.message, [&] { sizes_of(test.content); }));
  }
  std::string long_line;
  long_line.resize(10000000, 'x');
  EXPECT_EQ(sizes_of(long_line)[0], "-");
}

}  // namespace
