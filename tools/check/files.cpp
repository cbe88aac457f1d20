// Files that are missing, short or malformed, and forces that are all zero.
#include "check/checks.hpp"

namespace check {

namespace {

// A job is to be run again for its sign file and its output, not for its input.
void report_fault(const JobData& jobs, int i, Severity severity, const Fault& fault,
                  Report& report) {
  const zandor::Job& job = jobs.job(i);
  const bool of_job = fault.file == job.sgn_name.content() || fault.file == job.log_name.content();
  report.add(severity, fault.place(), fault.text, i,
             of_job ? std::vector<int>{i} : std::vector<int>{});
}

// Warnings of the readers. Those that belong to a line of the job list have a check of their own.
void pass_on_warnings(const JobData& jobs, Report& report) {
  for (const Fault& warning : jobs.list.warnings) {
    if (warning.file == zandor::job_list_name && warning.line >= jobs.job(0).list_line) continue;
    report.add(Severity::warning, warning.place(), warning.text);
  }
  for (int i = 0; i <= jobs.run.n6; ++i) {
    for (const Fault& warning : jobs.reading(i).warnings) {
      report_fault(jobs, i, Severity::warning, warning, report);
    }
  }
}

}  // namespace

void check_files(const JobData& jobs, const Thresholds&, Report& report) {
  pass_on_warnings(jobs, report);
  for (const Fault& fault : jobs.reference_faults) {
    report_fault(jobs, 0, Severity::error, fault, report);
  }
  int computed = 0;
  int unusable = 0;
  for (int i = 1; i <= jobs.run.n6; ++i) {
    if (!jobs.job(i).is_calc) continue;
    ++computed;
    if (const auto& fault = jobs.reading(i).fault) {
      ++unusable;
      report_fault(jobs, i, Severity::error, *fault, report);
    }
    for (const Fault& fault : jobs.reading(i).other_faults) {
      report_fault(jobs, i, Severity::error, fault, report);
    }
  }
  if (jobs.run.symm && computed == jobs.run.n6) {
    report.note(
        {jobs.run.control_name.content()},
        "symm is true, as it is when left out: the report gets no dipole sections, although "
        "every job is computed; set symm = .false. for them");
  }
  report.figure("computed jobs", computed);
  report.figure("jobs that cannot be used", unusable);
}

}  // namespace check
