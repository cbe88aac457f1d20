// First phase: the log file, the command line and the control file.
#pragma once

#include "zandor/run_data.hpp"

namespace zandor {

// Opens "result.log", created if absent and never emptied; it stays open for the whole run.
void open_run_log();
void close_run_log();

// Prints the help or the version on standard output where the first argument is -h, --help or
// --version and no file has that name. True when it did: there is nothing to run.
bool print_help_or_version(int argc, const char* const* argv);

// The control file's name: the first command-line argument. None, or a blank one, is a fatal
// stop; further ones are warned of.
io::Line control_file_name(int argc, const char* const* argv);

// Reads the control group: symm, disp_a (Angstrom in the file, Bohr afterwards) and disp_sign; the
// other keys are accepted and ignored, but for dx, which is compared with the job list's. Warns of
// an amplitude that leaves no displacements.
void read_control_file(const io::Line& name, RunData& run);

}  // namespace zandor
