#include "zandor/run_control.hpp"

#include <unistd.h>

#include <cmath>
#include <string>
#include <string_view>

#include "flib/units_of_measure.hpp"
#include "io/control_group.hpp"
#include "io/units.hpp"

namespace zandor {

namespace {

constexpr std::string_view version_text = "zandor_gather " ZANDOR_VERSION;

constexpr std::string_view help_text =
    "Usage: zandor_gather CONTROLFILE\n"
    "\n"
    "Numerical vibrational analysis of an excited state. Run it in the job directory, which holds\n"
    "files.out (the job list), coord-NAME.sgn (one file per computed job), and the .com and .log\n"
    "files of the reference job. The control file holds a group with these keys, all optional:\n"
    "\n"
    "  &control\n"
    "   symm = .true.      ! symmetry was used: no transition dipoles in the report\n"
    "   disp_a = 1.0       ! amplitude of the modes, Angstrom\n"
    "   disp_sign = 1      ! 1: jobs are labelled negative step first\n"
    "  /\n"
    "\n"
    "Writes zandor-es.out (the report), vib.xyz and vibp.xyz (the modes as they stand, and with\n"
    "rigid motions projected out). Exit status: 0 all results are written, 1 the reference sign\n"
    "file lacks a keyword, 2 anything else. Messages name file and line.\n"
    "\n"
    "  -h,--help  this text\n"
    "  --version  the version";

}  // namespace

void open_run_log() { io::open_kept(log_unit, "result.log"); }

void close_run_log() { io::close(log_unit); }

bool print_help_or_version(int argc, const char* const* argv) {
  const std::string_view asked = argc > 1 ? argv[1] : "";
  // A control file of that name comes first.
  if (asked != "-h" && asked != "--help" && asked != "--version") return false;
  if (::access(argv[1], F_OK) == 0) return false;
  io::print_line(asked == "--version" ? version_text : help_text);
  return true;
}

io::Line control_file_name(int argc, const char* const* argv) {
  io::Line name;
  if (argc > 1) name = argv[1];
  if (name.content().empty()) {
    io::fatal_stop({}, "no control file given (usage: ", io::program_name, " CONTROLFILE)");
  }
  if (argc > 2) {
    io::warn({}, io::joined("expected one argument, found ", argc - 1,
                            ": only the first is read (see zandor_gather --help)"));
  }
  return name;
}

void read_control_file(const io::Line& name, RunData& run) {
  int disp_mode = 0;
  bool std_orient = false;
  io::Line ignored_text;
  const io::ControlKey keys[] = {
      {"symm", &run.symm},       {"qctype", &ignored_text}, {"fxyz", &ignored_text},
      {"dx", &run.control_dx},   {"task", &ignored_text},   {"std_orient", &std_orient},
      {"disp_mode", &disp_mode}, {"disp_a", &run.disp_a},   {"disp_sign", &run.disp_sign},
  };
  run.control_name = name;
  io::open_existing(input_unit, name.content(), io::joined("see ", io::program_name, " --help"));
  io::read_control_group(input_unit, keys);
  io::close(input_unit);
  if (run.disp_a == 0.0 || !std::isfinite(run.disp_a)) {
    io::warn({name.content()},
             io::joined("disp_a is ", run.disp_a, ": the animations hold NaN for displacements"));
  }
  run.disp_a /= flib::angstrom_per_bohr;
}

}  // namespace zandor
