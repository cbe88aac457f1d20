#include "zandor/phases.hpp"

#include <utility>

#include "zandor/doubts.hpp"
#include "zandor/job_list.hpp"
#include "zandor/job_results.hpp"
#include "zandor/report.hpp"
#include "zandor/result_names.hpp"
#include "zandor/run_control.hpp"
#include "zandor/vibrational_analysis.hpp"

namespace zandor {

void read_phases(const io::Line& control_name, RunData& run, bool writes_results) {
  read_control_file(control_name, run);
  // With symm the list has no such warning.
  const bool symm = std::exchange(run.symm, run.symm || !writes_results);
  read_job_list(run);
  run.symm = symm;
  if (writes_results) check_result_names(run);
  allocate_run_arrays(run);
  read_job_results(run);
}

void analyse_phases(RunData& run) {
  differentiate_transition_dipoles(run);
  analyse_vibrations(run);
}

void run_phases(int argc, const char* const* argv) {
  open_run_log();
  RunData run;
  read_phases(control_file_name(argc, argv), run);
  analyse_phases(run);
  warn_of_doubts(run);
  write_results(run);
  close_run_log();
}

}  // namespace zandor
