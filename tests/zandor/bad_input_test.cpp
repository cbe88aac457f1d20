// The program on input that is wrong in one place: one clear line, a status, no report.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <functional>
#include <tuple>

#include "io/values.hpp"
#include "support/support.hpp"
#include "zandor/good_job.hpp"

namespace {

namespace fs = std::filesystem;
using support::edit_file;
using support::write_file;

const std::string program = "\"" ZANDOR_GATHER "\"";  // in a line for the shell

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
     "21: expected the atomic number of atom 3 (integer), found 'Name' (reading began at line 19)"},
    {"files.out", "0.005", "0.000",
     "3: expected a displacement step other than 0 that is finite in Bohr, found 0"},
    {"files.out", "Begin_zand", "begin_zand",
     "no line holds 'Begin_zand_info' in columns 1-15 after line 3"},
    {"files.out", "operations:    1", "operations: -1",
     "9: expected a number of operations of 0 or more, found -1"},
    {"files.out", "1.000000", "1.00000x",
     "12: expected a matrix element of operation 1 (number), found '1.00000x'"},
    {"files.out", " 12 0012 T     12    1", "",
     "35: expected the computed flag of job 12 (T or F), found 'list' (reading began at line 34)"},
    {"files.out", "0003 T      3    1", "0003 F,,1",
     "25: expected T, or a source job and an operation, for job 3, found no value between "
     "separators"},
    {"files.out", " 0003 T", " " + std::string(191, '3') + " T",
     "25: expected a job name of at most 190 characters, found "
     "'3333333333333333333333333333333333333333'..."},
    {"files.out", " 0003 T", " a/0003 T",
     "25: expected T, or a source job and an operation, for job 3, found a slash"},
    {"files.out", "6     2", "6 3", nullptr},  // an image that no derived job uses
    {"coord-ref.sgn", "natom =    2", "natom = 3",
     "2: expected natom = 2 as in files.out, found 3"},
    {"coord-ref.sgn", "Center  Atomic", "Center Atomic",
     "no line holds 'Center  Atomic  Atomic    Atomic            Coordinates (Angstroms)' after "
     "line 0 (job 0)"},
    {"coord-ref.sgn", " 1.00783", "-1e-9  ",
     "14: expected a mass above 0 for atom 1, found -1e-09"},
    {"coord-ref.sgn", " 1.00783", "0", "14: expected a mass above 0 for atom 1, found 0"},
    {"coord-ref.log", nullptr, "", "1: expected the first line of the file, found an empty file"},
    {"coord-ref.com", nullptr, "# opt\n\n-1 1\n H 0. 0. 0.\n",
     "5: expected a line that begins with a digit (charge and multiplicity), found the end of the "
     "file (a negative charge is written without its sign)"},
    {"coord-0001.sgn", "-0.0014159685\n End\n", "",
     "23: expected the force on atom 2 (number), found the end of the file (reading began at line "
     "22)"},
    {"coord-0001.sgn", "  0.0010067879", "",
     "24: expected the force on atom 2 (number), found the end of the file (reading began at line "
     "21)"},
    {"coord-ref.com", "T\n", "2 atoms\n",
     "5: expected the coordinates of atom 1 (number), found 'in' (reading began at line 4; line 3 "
     "was "
     "taken for charge and multiplicity)"},
    {"coord-0001.sgn", nullptr, "", "expected the results of job 1, found an empty file"},
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
    for (const char* result : results) EXPECT_FALSE(fs::exists(result)) << outcome.err;
  }
}

// Standard error of a run in a copy of a good directory, spoilt by `spoil_it`.
std::string errors_of(const fs::path& directory, int status,
                      const std::function<void()>& spoil_it) {
  const support::TempFolder folder;
  fs::copy(directory, ".");
  for (const char* result : results) write_file(result, "yesterday");
  spoil_it();
  const support::Outcome outcome = support::run({ZANDOR_GATHER, "control.inp"});
  EXPECT_EQ(outcome.status, status) << outcome.err;
  for (const char* result : results) {
    EXPECT_EQ(support::read_file(result) == "yesterday", status != 0) << result;
  }
  return without_axes_warning(outcome.err);
}

TEST(bad_input, of_several_jobs_is_named_for_each) {
  const std::string head = "zandor_gather: coord-000";
  EXPECT_EQ(
      errors_of(good, 2,
                [] {
                  fs::remove("coord-0002.sgn");
                  write_file("coord-0003.sgn", "");
                  fs::resize_file("coord-0005.sgn", fs::file_size("coord-0005.sgn") - 40);
                  edit_file("coord-0006.sgn", "   2    ", "   2 *** ");
                  edit_file("coord-0007.sgn", "Hartrees/Bohr", "hartrees/Bohr");
                }),
      head + "2.sgn: " + no_file + "\n" + head +
          "3.sgn: expected the results of job 3, found an empty file\n" + head +
          "5.sgn:23: expected the force on atom 2 (number), found the end of the file (reading "
          "began at line 22)\n" +
          head + "6.sgn:22: expected the force on atom 2 (number), found '***'\n" + head +
          "7.sgn: no line holds 'Center Atomic Forces (Hartrees/Bohr)' after line 18 (job 7)\n");
  const std::string many = errors_of(good.parent_path() / "pentatomic-imaginary", 2, [] {
    for (const auto& entry : fs::directory_iterator(".")) {
      if (entry.path().extension() == ".sgn" && entry.path() != "./coord-c5h.S1-ref_0.sgn") {
        fs::remove(entry.path());
      }
    }
  });
  EXPECT_EQ(std::count(many.begin(), many.end(), '\n'), 21) << many;
  EXPECT_TRUE(many.ends_with("zandor_gather: ... and 10 more jobs\n")) << many;
}

TEST(bad_input, of_several_lines_of_the_job_list_is_named_for_each) {
  const std::string head = "zandor_gather: files.out:";
  EXPECT_EQ(errors_of(good, 2,
                      [] {
                        edit_file("files.out", "0003 T      3    1", "0003 F 4 2");
                        edit_file("files.out", "0004 T      4    1", "0004 F 13 1");
                      }),
            head + "25: expected an operation within 1..1 for the derived job 3, found 2\n" + head +
                "26: expected a source job within 0..12 for the derived job 4, found 13\n");
  EXPECT_EQ(errors_of(good, 2,
                      [] {
                        edit_file("files.out", "0003 T      3", "0003 F 4");
                        edit_file("files.out", "6     2", "6 3");
                      }),
            head +
                "18: expected an atom within 1..2 as the image of atom 2 under operation 1, "
                "found 3\n");
}

TEST(bad_input, or_results_that_lead_to_inputs_stop_the_run) {
  const support::TempFolder folder;
  fs::copy(good, ".");
  const std::string alone = ": expected a file for the results alone, found a link to the ";
  const std::tuple<const char*, const char*, const char*> links[] = {
      {"coord-0005.sgn", "vib.xyz", "input coord-0005.sgn"},
      {"files.out", "vibp.xyz", "input files.out"},
      {"vib.xyz", "zandor-es.out", "result zandor-es.out"},
  };
  for (const auto& [target, result, found] : links) {
    write_file("vib.xyz", "yesterday");
    fs::remove(result);
    fs::create_hard_link(target, result);
    const support::Outcome outcome = support::run({ZANDOR_GATHER, "control.inp"});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_NE(outcome.err.find(alone + found), std::string::npos) << outcome.err;
    fs::remove(result);
  }
  fs::rename("control.inp", "vib.xyz");
  EXPECT_NE(support::run({ZANDOR_GATHER, "vib.xyz"})
                .err.find("vib.xyz: expected a name for a result alone, found the control file"),
            std::string::npos);
  EXPECT_NE(support::read_file("vib.xyz").find("&control"), std::string::npos);
}

TEST(bad_input, neither_hangs_at_pipes_nor_writes_messages_into_files) {
  const support::TempFolder folder;
  fs::copy(good, ".");
  write_file("coord-ref.log", "of no known kind\n");
  const std::string closed_output = program + " control.inp >&-";
  EXPECT_EQ(without_axes_warning(support::run({"sh", "-c", closed_output}).err),
            "zandor_gather: standard output: cannot write: Bad file descriptor\n");
  EXPECT_EQ(support::read_file("result.log"), "");
  EXPECT_TRUE(fs::exists("zandor-es.out")) << "the warning that was lost is no reason to stop";
  // A record that the look ahead has left behind moves when more comes through the pipe.
  write_file("long.inp", "&control\n" + std::string(132000, '!') + "\n qctype = 2*'a\nb' /" +
                             std::string(400000, ' '));
  const std::string piped = "cat long.inp | " + program + " /dev/stdin";
  EXPECT_EQ(support::run({"sh", "-c", piped}).err,
            "zandor_gather: /dev/stdin:3: expected a text in quotes for the key 'qctype', found "
            "'2*ab'\n");
  fs::remove("vib.xyz");
  mkfifo("vib.xyz", 0600);
  EXPECT_EQ(without_axes_warning(support::run({"timeout", "20", ZANDOR_GATHER, "control.inp"}).err),
            "zandor_gather: vib.xyz: expected a file that can be written, found: No such device or "
            "address\n");
}

#ifndef __SANITIZE_ADDRESS__  // which needs more memory itself
TEST(bad_input, that_takes_more_memory_than_there_is_is_refused) {
  const support::TempFolder folder;
  const std::string line =
      "yes ! | head -c 60000000 | (ulimit -v 60000; " + program + " /dev/stdin)";
  const support::Outcome outcome = support::run({"bash", "-c", line});
  EXPECT_EQ(outcome.err,
            "zandor_gather: expected memory for the input read so far, found none left\n");
  EXPECT_EQ(outcome.status, 2);
}
#endif

TEST(bad_input, ends_a_run_without_control_file_or_keyword) {
  const support::TempFolder folder;
  const support::Outcome none = support::run({ZANDOR_GATHER});
  EXPECT_EQ(none.err, "zandor_gather: no control file given (usage: zandor_gather CONTROLFILE)\n");
  EXPECT_EQ(none.status, 2);
  EXPECT_TRUE(support::run({ZANDOR_GATHER, "-h"}).out.starts_with("Usage: zandor_gather"));
  EXPECT_EQ(support::run({ZANDOR_GATHER, "my", "control.inp"}).err,
            "zandor_gather: warning: expected one argument, found 2: only the first is read (see "
            "zandor_gather --help)\nzandor_gather: my: expected a file that can be read, found: No "
            "such file or directory (see zandor_gather --help)\n");
  write_file("control.inp", "&control /\n");
  EXPECT_EQ(support::run({ZANDOR_GATHER, "control.inp"}).err,
            "zandor_gather: files.out: expected a file that can be read, found: No such file or "
            "directory (run it in the job directory)\n");
  fs::remove("control.inp");
  fs::copy(good, ".");
  edit_file("coord-ref.sgn", "NFC", "nfc");
  const support::Outcome missing = support::run({ZANDOR_GATHER, "control.inp"});
  EXPECT_EQ(missing.out, "Can not find keyword NFC stop!\n");
  EXPECT_EQ(missing.err, "zandor_gather: coord-ref.sgn: no line holds 'NFC' after line 6\n");
  EXPECT_EQ(missing.status, 1);
}

TEST(bad_input, that_the_program_can_tell_is_warned_of) {
  const std::string open_end = ", without a line end: it may have been cut inside the number\n";
  const std::string zeros = ", holds none when it is derived\n";
  const std::string rest_on_zeros =
      " derived: transition dipoles from symmetry are zero and the derivatives rest on them\n";
  const struct {
    std::vector<std::tuple<const char*, const char*, const char*>> edits;
    std::string warnings;  // each line without its head
  } cases[] = {
      {{{"files.out", "0003 T      3", "0003 F 0"},
        {"files.out", "0004 T      4", "0004 F 3"},
        {"files.out", "0005 T      5", "0005 F 5"}},
       "files.out:25: the forces of job 3 are zero: its source, job 0" + zeros +
           "files.out:26: the forces of job 4 are zero: its source, job 3" + zeros +
           "files.out:27: the forces of job 5 are zero: its source, job 5" + zeros +
           "files.out:25: symm is false, but 3 jobs are" + rest_on_zeros +
           "the force differences are not symmetric: 1.2e-01 Hartree/Bohr**2 between coordinates 2 "
           "and 5 (jobs 3, 4, 9, 10)\n"},
      {{{"files.out", "0009", "0010"}},
       "files.out:32: job 10 has the name of job 9 in line 31: both read coord-0010.sgn\n"
       "the force differences are not symmetric: 1.2e-01 Hartree/Bohr**2 between coordinates 2 and "
       "5 "
       "(jobs 3, 4, 9, 10)\n"},
      {{{"coord-0012.sgn", "\n End\n", ""},
        {"coord-ref.com", "-1.504455348\n\n\n", "-1.504455348"}},
       "coord-ref.com:8: the file ends right behind the coordinates of atom 2" + open_end +
           "coord-0012.sgn:22: the file ends right behind the force on atom 2" + open_end},
      {{{"files.out", " 12 0012 T     12    1\n End of list\n", " 12 0012 F      6    1"}},
       "files.out:34: the file ends right behind the operation of job 12" + open_end +
           "files.out:34: symm is false, but 1 job is" + rest_on_zeros +
           "the force differences are not symmetric: 1.7e-01 Hartree/Bohr**2 between coordinates 3 "
           "and 6 (jobs 5, 6, 11, 12)\n"},
      {{{"coord-ref.com", "-0.23", "-99999.23"}, {"coord-ref.com", "-1.45", "-100000.45"}},
       "4 numbers are too wide for the columns of the results, where asterisks stand for them\n"},
      {{{"coord-ref.sgn", "0.0000942708", "0.0012942708"}},
       "coord-ref.sgn: the reference is not a stationary point: a force of 0.00129 Hartree/Bohr "
       "acts "
       "on an atom (see zandor_check)\n"},
      {{{"control.inp", "disp_sign = 1!", "disp_sign=-1!"}},
       "1 of 1 vibrations are imaginary: gradients for forces, or the order of the jobs? (see "
       "zandor_check)\n"},
      {{{"control.inp", "disp_a = 1.0", "disp_a = 0"}},
       "control.inp: disp_a is 0: the animations hold NaN for displacements\n"},
      {{{"control.inp", "disp_a = 1.0", "disp_a = nan dx=0.005"}},
       "control.inp: disp_a is NaN: the animations hold NaN for displacements\n"},
      {{{"control.inp", "disp_a = 1.0", "dx=.01"}},
       "files.out:3: the step is 0.005 Angstrom, and not dx = 0.01 of the control file\n"},
  };
  for (const auto& test : cases) {
    const std::string errors = errors_of(good, 0, [&] {
      for (const auto& [file, from, to] : test.edits) edit_file(file, from, to);
    });
    std::string expected = "\n" + test.warnings;
    expected.pop_back();
    for (std::size_t at = 0; (at = expected.find('\n', at)) != std::string::npos; at += 2) {
      expected.insert(at + 1, "zandor_gather: warning: ");
    }
    EXPECT_EQ("\n" + errors, expected + "\n");
  }
}

}  // namespace
