// The program on input that is wrong in one place: one clear line, a status, no report.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <random>

#include "io/values.hpp"
#include "support/support.hpp"

namespace {

namespace fs = std::filesystem;
using support::edit_file;
using support::write_file;

const fs::path good = fs::path(PROJECT_FOLDER) / "tests/zandor/cases/diatomic-dipoles";

// A file of the good job directory, what is replaced in it by what, and the message behind
// "zandor_gather: ". Without `from` the whole file is replaced: by nothing or a text.
struct BadInput {
  const char *file, *from;
  std::string to;
  const char* message;
};

const std::string nothing = "(nothing)";
const char* const no_file = "expected a file that can be read, found: No such file or directory";

const BadInput bad_inputs[] = {
    {"control.inp", "symm", "sym",
     "6: expected a key of the group (symm, qctype, fxyz, dx, task, std_orient, disp_mode, disp_a, "
     "disp_sign), found 'sym'"},
    {"files.out", "2\n", "2.0\n", "1: expected the number of atoms (integer), found '2.0'"},
    {"files.out", "2\n", "357913942\n",
     "1: expected a number of atoms from 1 to 357913941, found 357913942"},
    {"files.out", "2\n", "300000000\n",
     "21: expected the atomic number of atom 3 (integer), found 'Name'"},
    {"files.out", "0.005", "0.000",
     "3: expected a displacement step other than 0 that is finite in Bohr, found 0"},
    {"files.out", "Begin_zand", "begin_zand",
     "no line holds 'Begin_zand_info' in columns 1-15 after line 3"},
    {"files.out", "operations:    1", "operations: -1",
     "9: expected a number of operations of 0 or more, found -1"},
    {"files.out", "1.000000", "1.00000x",
     "12: expected a matrix element of operation 1 (number), found '1.00000x'"},
    {"files.out", " 12 0012 T     12    1", "",
     "35: expected the computed flag of job 12 (T or F), found 'list'"},
    {"files.out", "0003 T      3    1", "0003 F 4 2",
     "25: expected an operation within 1..1 for the derived job 3, found 2"},
    {"files.out", "0003 T      3    1", "0003 F 13 1",
     "25: expected a source job within 0..12 for the derived job 3, found 13"},
    {"files.out", "0003 T      3    1", "0003 F,,1",
     "25: expected T, or a source job and an operation, for job 3, found no value between "
     "separators"},
    {"files.out", " 0003 T", " a/0003 T",
     "25: expected T, or a source job and an operation, for job 3, found a slash"},
    {"files.out", "6     2", "6 3", nullptr},  // an image that no derived job uses
    {"coord-ref.sgn", "natom =    2", "natom = 3", "expected natom = 2 as in files.out, found 3"},
    {"coord-ref.sgn", "Center  Atomic", "Center Atomic",
     "no line holds 'Center  Atomic  Atomic    Atomic            Coordinates (Angstroms)' after "
     "line 0 (job 0)"},
    {"coord-ref.sgn", " 1.00783", "-1.00783",
     "14: expected a mass above 0 for atom 1, found -1.007830"},
    {"coord-ref.sgn", " 1.00783", " Infinity",
     "14: expected the mass of atom 1 (finite number), found 'Infinity'"},
    {"coord-ref.log", nullptr, "", "1: expected the first line of the file, found an empty file"},
    {"coord-ref.com", nullptr, "# opt\n\n-1 1\n H 0. 0. 0.\n",
     "5: expected a line that begins with a digit (charge and multiplicity), found the end of the "
     "file"},
    {"coord-0001.sgn", "0.45436779", ",,",
     "18: expected the transition dipole of job 1 (number), found no value between separators"},
    {"coord-0001.sgn", "0.0010067879", std::string("1\0002", 3),
     "21: expected the force on atom 1 (number), found '1\\x002'"},
    {"coord-0001.sgn", "-0.0014159685\n End\n", "",
     "23: expected the force on atom 2 (number), found the end of the file"},
    {"coord-0007.sgn", nullptr, nothing, no_file},
    {"coord-0007.sgn", "Hartrees/Bohr", "hartrees/Bohr",
     "no line holds 'Center Atomic Forces (Hartrees/Bohr)' after line 18 (job 7)"},
};

void spoil(const BadInput& bad) {
  if (bad.from != nullptr) return edit_file(bad.file, bad.from, bad.to);
  fs::remove(bad.file);
  if (bad.to != nothing) write_file(bad.file, bad.to);
}

TEST(bad_input, is_named_in_one_line_and_leaves_no_results) {
  for (const BadInput& bad : bad_inputs) {
    const support::TempFolder folder;
    fs::copy(good, ".");
    spoil(bad);
    const support::Outcome outcome = support::run({ZANDOR_GATHER, "control.inp"});
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.status, bad.message != nullptr ? 2 : 0) << outcome.err;
    if (bad.message == nullptr) continue;
    const bool with_line = io::is_digit(bad.message[0]);
    EXPECT_EQ(outcome.err, std::string("zandor_gather: ") + bad.file + (with_line ? ":" : ": ") +
                               bad.message + "\n");
    for (const char* result : {"zandor-es.out", "vib.xyz", "vibp.xyz"}) {
      EXPECT_FALSE(fs::exists(result)) << outcome.err;
    }
  }
}

TEST(bad_input, of_an_image_that_a_derived_job_uses) {
  const support::TempFolder folder;
  fs::copy(good, ".");
  edit_file("files.out", "0003 T      3", "0003 F 4");
  edit_file("files.out", "6     2", "6 3");
  EXPECT_EQ(
      support::run({ZANDOR_GATHER, "control.inp"}).err,
      "zandor_gather: files.out:18: expected an atom within 1..2 as the image of atom 2 under "
      "operation 1, found 3\n");
}

TEST(bad_input, or_a_full_disk_leaves_the_results_of_yesterday) {
  const std::vector<std::string> results = {"zandor-es.out", "vib.xyz", "vibp.xyz"};
  for (const std::string& full : results) {
    const support::TempFolder folder;
    fs::copy(good, ".");
    for (const std::string& result : results) {
      if (result != full) write_file(result, "yesterday");
    }
    fs::create_symlink("/dev/full", full);
    const support::Outcome outcome = support::run({ZANDOR_GATHER, "control.inp"});
    EXPECT_EQ(outcome.err, "zandor_gather: " + full + ": cannot write: No space left on device\n");
    EXPECT_EQ(outcome.status, 2);
    for (const std::string& result : results) {
      if (result == full) continue;
      EXPECT_EQ(support::read_file(result), "yesterday");
    }
  }
}

TEST(bad_input, neither_hangs_at_pipes_nor_writes_messages_into_files) {
  const support::TempFolder folder;
  fs::copy(good, ".");
  write_file("coord-ref.log", "of no known kind\n");
  const std::string closed_output = std::string(ZANDOR_GATHER) + " control.inp >&-";
  EXPECT_EQ(support::run({"sh", "-c", closed_output}).err,
            "zandor_gather: standard output: cannot write: Bad file descriptor\n");
  EXPECT_EQ(support::read_file("result.log"), "");
  EXPECT_TRUE(fs::exists("zandor-es.out")) << "the warning that was lost is no reason to stop";
  fs::remove("vib.xyz");
  mkfifo("vib.xyz", 0600);
  EXPECT_EQ(support::run({"timeout", "20", ZANDOR_GATHER, "control.inp"}).err,
            "zandor_gather: vib.xyz: expected a file that can be written, found: No such device or "
            "address\n");
}

TEST(bad_input, ends_a_run_without_control_file_or_keyword) {
  const support::TempFolder folder;
  const support::Outcome none = support::run({ZANDOR_GATHER});
  EXPECT_EQ(none.err, "zandor_gather: no control file given (usage: zandor_gather CONTROLFILE)\n");
  EXPECT_EQ(none.status, 2);
  fs::copy(good, ".");
  edit_file("coord-ref.sgn", "NFC", "nfc");
  const support::Outcome missing = support::run({ZANDOR_GATHER, "control.inp"});
  EXPECT_EQ(missing.out, "Can not find keyword NFC stop!\n");
  EXPECT_EQ(missing.err, "zandor_gather: coord-ref.sgn: no line holds 'NFC' after line 6\n");
  EXPECT_EQ(missing.status, 1);
}

TEST(bad_input, that_rests_on_zeros_is_warned_of) {
  const support::TempFolder folder;
  fs::copy(good, ".");
  edit_file("files.out", "0003 T      3", "0003 F 0");
  edit_file("files.out", "0004 T      4", "0004 F 3");
  edit_file("files.out", "0005 T      5", "0005 F 5");
  const support::Outcome outcome = support::run({ZANDOR_GATHER, "control.inp"});
  const std::string zero = "zandor_gather: warning: files.out:";
  EXPECT_EQ(
      outcome.err,
      zero +
          "25: the forces of job 3 are zero: its source, job 0, holds none when it is derived\n" +
          zero +
          "27: the forces of job 5 are zero: its source, job 5, holds none when it is derived\n" +
          zero +
          "25: symm is false, but 3 jobs are derived: their transition dipoles are zero "
          "and the derivatives rest on them\n");
  EXPECT_EQ(outcome.status, 0);
}

// Any bytes in: a status and a message out, never a signal, a hang or half a report.
TEST(bad_input, of_any_bytes_ends_in_order) {
  const support::TempFolder folder;
  fs::copy(good, ".");
  std::mt19937 random(11);
  const char* const names[] = {"control.inp",   "files.out",     "coord-ref.sgn",
                               "coord-ref.com", "coord-ref.log", "coord-0005.sgn"};
  for (int round = 0; round < 240; ++round) {
    const char* const name = names[round % 6];
    const std::string whole = support::read_file(name);
    std::string text = whole;
    const std::size_t at = random() % text.size();
    const std::size_t size = 1 + random() % 12;
    switch (random() % 4) {
      case 0:
        text.resize(at);
        break;
      case 1:
        text.insert(at, text.substr(at / 2, size));
        break;
      case 2:
        text.erase(at, size);
        break;
      default:
        text[at] = static_cast<char>(random() % 256);
    }
    write_file(name, text);
    for (const char* result : {"zandor-es.out", "vib.xyz", "vibp.xyz"}) fs::remove(result);
    const support::Outcome outcome = support::run({"timeout", "20", ZANDOR_GATHER, "control.inp"});
    const std::string shown = std::string(name) + " in round " + std::to_string(round);
    EXPECT_TRUE(outcome.status == 0 || outcome.status == 1 || outcome.status == 2) << shown;
    EXPECT_EQ(fs::exists("zandor-es.out"), outcome.status == 0) << shown;
    if (outcome.status != 0) {
      EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
    }
    write_file(name, whole);
  }
}

}  // namespace
