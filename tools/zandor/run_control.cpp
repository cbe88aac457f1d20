#include "run_control.hpp"

#include <string>

#include "flib/units_of_measure.hpp"
#include "io/control_group.hpp"
#include "io/units.hpp"

namespace zandor {

void open_run_log() { io::open_kept(log_unit, "result.log"); }

void close_run_log() { io::close(log_unit); }

io::Line control_file_name(int argc, const char* const* argv) {
  io::Line name;
  if (argc > 1) name = argv[1];
  if (name.content().empty()) {
    io::fatal_stop("no control file given (usage: " + std::string(io::program_name) +
                   " CONTROLFILE)");
  }
  return name;
}

void read_control_file(const io::Line& name, RunData& run) {
  double ignored_step = 0.0;  // the job list's step is the one that counts
  int disp_mode = 0;
  bool std_orient = false;
  io::Line ignored_text;
  const io::ControlKey keys[] = {
      {"symm", &run.symm},       {"qctype", &ignored_text}, {"fxyz", &ignored_text},
      {"dx", &ignored_step},     {"task", &ignored_text},   {"std_orient", &std_orient},
      {"disp_mode", &disp_mode}, {"disp_a", &run.disp_a},   {"disp_sign", &run.disp_sign},
  };
  io::open_existing(input_unit, name.content());
  io::read_control_group(input_unit, keys);
  io::close(input_unit);
  run.disp_a /= flib::angstrom_per_bohr;
}

}  // namespace zandor
