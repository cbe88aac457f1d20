// The program on input that is wrong in one place: one clear line, a status, no report.
#include <gtest/gtest.h>

#include <functional>
#include <random>

#include "support/support.hpp"

namespace {

namespace fs = std::filesystem;
using support::edit_file;
using support::write_file;

const fs::path good = fs::path(PROJECT_FOLDER) / "tests/zandor/cases/diatomic-dipoles";

struct BadInput {
  const char* name;
  std::function<void()> spoil;
  std::string message;  // behind "zandor_gather: "
};

const BadInput bad_inputs[] = {
    {"control_missing", [] { fs::remove("control.inp"); },
     "control.inp: expected a file that can be read, found: No such file or directory"},
    {"control_directory",
     [] {
       fs::remove("control.inp");
       fs::create_directory("control.inp");
     },
     "control.inp: expected a file that can be read, found: Is a directory"},
    {"unknown_key", [] { edit_file("control.inp", "symm", "sym"); },
     "control.inp:6: expected a key of the group (symm, qctype, fxyz, dx, task, std_orient, "
     "disp_mode, disp_a, disp_sign), found 'sym'"},
    {"list_missing", [] { fs::remove("files.out"); },
     "files.out: expected a file that can be read, found: No such file or directory"},
    {"atoms_malformed", [] { edit_file("files.out", "2\n", "2.0\n"); },
     "files.out:1: expected the number of atoms (integer), found '2.0'"},
    {"atoms_none", [] { edit_file("files.out", "2\n", "0\n"); },
     "files.out:1: expected a number of atoms from 1 to 357913941, found 0"},
    {"atoms_too_many", [] { edit_file("files.out", "2\n", "357913942\n"); },
     "files.out:1: expected a number of atoms from 1 to 357913941, found 357913942"},
    {"atoms_more_than_list", [] { edit_file("files.out", "2\n", "300000000\n"); },
     "files.out:21: expected the atomic number of atom 3 (integer), found 'Name'"},
    {"step_zero", [] { edit_file("files.out", "0.005", "0.000"); },
     "files.out:3: expected a displacement step other than 0, found 0"},
    {"step_infinite", [] { edit_file("files.out", "0.005", "inf 0"); },
     "files.out:3: expected the displacement step (finite number), found 'inf'"},
    {"marker_in_another_case", [] { edit_file("files.out", "Begin_zand", "begin_zand"); },
     "files.out: no line holds 'Begin_zand_info' in columns 1-15 after line 3"},
    {"operations_negative", [] { edit_file("files.out", "operations:    1", "operations: -1"); },
     "files.out:9: expected a number of operations of 0 or more, found -1"},
    {"operation_malformed", [] { edit_file("files.out", "1.000000", "1.00000x"); },
     "files.out:12: expected a matrix element of operation 1 (number), found '1.00000x'"},
    {"list_short", [] { edit_file("files.out", " 12 0012 T     12    1", ""); },
     "files.out:35: expected the computed flag of job 12 (T or F), found 'list'"},
    {"operation_out_of_range", [] { edit_file("files.out", "0003 T      3    1", "0003 F 4 2"); },
     "files.out:25: expected an operation within 1..1 for the derived job 3, found 2"},
    {"source_out_of_range", [] { edit_file("files.out", "0003 T      3    1", "0003 F 13 1"); },
     "files.out:25: expected a source job within 0..12 for the derived job 3, found 13"},
    {"source_null", [] { edit_file("files.out", "0003 T      3    1", "0003 F,,1"); },
     "files.out:25: expected a source job and an operation for the derived job 3, found no value "
     "between separators"},
    {"image_out_of_range",
     [] {
       edit_file("files.out", "0003 T      3", "0003 F 4");
       edit_file("files.out", "6     2", "6 3");
     },
     "files.out:18: expected an atom within 1..2 as the image of atom 2 under operation 1, found "
     "3"},
    {"sign_file_missing", [] { fs::remove("coord-0007.sgn"); },
     "coord-0007.sgn: expected a file that can be read, found: No such file or directory"},
    {"sign_file_of_other_size", [] { edit_file("coord-ref.sgn", "natom =    2", "natom = 3"); },
     "coord-ref.sgn: expected natom = 2 as in files.out, found 3"},
    {"log_missing", [] { fs::remove("coord-ref.log"); },
     "coord-ref.log: expected a file that can be read, found: No such file or directory"},
    {"log_empty", [] { write_file("coord-ref.log", ""); },
     "coord-ref.log:1: expected the first line of the file, found an empty file"},
    {"geometry_header_changed",
     [] { edit_file("coord-ref.sgn", "Center  Atomic", "Center Atomic"); },
     "coord-ref.sgn: no line holds 'Center  Atomic  Atomic    Atomic            Coordinates "
     "(Angstroms)' after line 0 (job 0)"},
    {"mass_negative", [] { edit_file("coord-ref.sgn", " 1.00783", "-1.00783"); },
     "coord-ref.sgn:14: expected a mass above 0 for atom 1, found -1.007830"},
    {"mass_infinite", [] { edit_file("coord-ref.sgn", " 1.00783", " Infinity"); },
     "coord-ref.sgn:14: expected the mass of atom 1 (finite number), found 'Infinity'"},
    {"input_without_digit", [] { write_file("coord-ref.com", "# opt\n\n-1 1\n H 0. 0. 0.\n"); },
     "coord-ref.com:5: expected a line that begins with a digit (charge and multiplicity), found "
     "the end of the file"},
    {"dipole_null", [] { edit_file("coord-0001.sgn", "0.45436779", ",,"); },
     "coord-0001.sgn:18: expected the transition dipole of job 1 (number), found no value "
     "between separators"},
    {"forces_missing", [] { edit_file("coord-0007.sgn", "Hartrees/Bohr", "hartrees/Bohr"); },
     "coord-0007.sgn: no line holds 'Center Atomic Forces (Hartrees/Bohr)' after line 18 (job 7)"},
    {"force_not_a_number", [] { edit_file("coord-0001.sgn", "0.0010067879", "NaN"); },
     "coord-0001.sgn:21: expected the force on atom 1 (finite number), found 'NaN'"},
    {"force_with_nul",
     [] {
       edit_file("coord-0001.sgn", "0.0010067879",
                 std::string("1\0"
                             "2",
                             3));
     },
     "coord-0001.sgn:21: expected the force on atom 1 (number), found '1\\x002'"},
    {"forces_short", [] { edit_file("coord-0001.sgn", "-0.0014159685\n End\n", ""); },
     "coord-0001.sgn:23: expected the force on atom 2 (number), found the end of the file"},
    {"job_name_with_nul",
     [] {
       edit_file("files.out", "1 0001",
                 "1 " + std::string("0\0"
                                    "1",
                                    3));
     },
     "coord-0\\x001.sgn: expected a file that can be read, found: No such file or directory"},
    {"report_on_full_disk", [] { fs::create_symlink("/dev/full", "zandor-es.out"); },
     "zandor-es.out: cannot write: No space left on device"},
    {"animation_unwritable", [] { fs::create_directory("vib.xyz"); },
     "vib.xyz: expected a file that can be written, found: Is a directory"},
};

TEST(bad_input, is_named_in_one_line) {
  for (const BadInput& bad : bad_inputs) {
    const support::TempFolder folder;
    fs::copy(good, ".");
    bad.spoil();
    const support::Outcome outcome = support::run({ZANDOR_GATHER, "control.inp"});
    EXPECT_EQ(outcome.err, "zandor_gather: " + bad.message + "\n") << bad.name;
    EXPECT_EQ(outcome.out, "") << bad.name;
    EXPECT_EQ(outcome.status, 2) << bad.name;
    if (bad.name != std::string("animation_unwritable")) {
      EXPECT_FALSE(fs::is_regular_file("zandor-es.out")) << bad.name;
      EXPECT_FALSE(fs::exists("vib.xyz")) << bad.name;
    }
    EXPECT_FALSE(fs::exists("vibp.xyz")) << bad.name;
  }
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
