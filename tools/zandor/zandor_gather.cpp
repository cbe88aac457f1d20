// zandor_gather: numerical vibrational analysis of an excited state from one gradient calculation
// per displaced geometry. Runs in the job directory; the first argument names the control file.
#include "io/process.hpp"
#include "zandor/dipole_derivatives.hpp"
#include "zandor/job_list.hpp"
#include "zandor/job_results.hpp"
#include "zandor/report.hpp"
#include "zandor/result_names.hpp"
#include "zandor/run_control.hpp"
#include "zandor/vibrational_analysis.hpp"

const char* const io::program_name = "zandor_gather";

namespace {

int run_phases(int argc, char** argv) {
  using namespace zandor;
  if (print_help_or_version(argc, argv)) return 0;
  open_run_log();
  RunData run;
  read_control_file(control_file_name(argc, argv), run);
  read_job_list(run);
  check_result_names(run);
  allocate_run_arrays(run);
  read_job_results(run);
  differentiate_transition_dipoles(run);
  analyse_vibrations(run);
  write_results(run);
  close_run_log();
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  return io::run_program([&] { return run_phases(argc, argv); });
}
