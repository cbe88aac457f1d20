// zandor_gather: numerical vibrational analysis of an excited state from one gradient calculation
// per displaced geometry. Runs in the job directory; the first argument names the control file.
#include "io/process.hpp"
#include "zandor/phases.hpp"
#include "zandor/run_control.hpp"

const char* const io::program_name = "zandor_gather";

int main(int argc, char** argv) {
  return io::run_program([&] {
    if (!zandor::print_help_or_version(argc, argv)) zandor::run_phases(argc, argv);
    return 0;
  });
}
