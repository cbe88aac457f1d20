// Files that are missing, short or malformed, and forces that are all zero.
#include "check/checks.hpp"

namespace check {

namespace {

// A job is to be run again for its sign file and its output, not for its input.
void report_faults(const JobData& jobs, int i, Severity severity, const std::vector<Fault>& faults,
                   Findings& findings) {
  for (const Fault& fault : faults) {
    const bool of_job =
        fault.file == jobs.sign_name(i) || fault.file == jobs.job(i).log_name.content();
    findings.add(severity, {fault.file, fault.line},
                 {i, of_job ? std::vector{i} : std::vector<int>{}}, fault.message);
  }
}

}  // namespace

void check_files(const JobData& jobs, const Thresholds&, Findings& findings) {
  for (const Fault& warning : jobs.list.warnings) {
    // Those that belong to a job of the list have a check of their own.
    if (warning.file == zandor::job_list_name && warning.line >= jobs.job(0).list_line) continue;
    findings.warn({warning.file, warning.line}, {}, warning.message);
  }
  int unusable = 0;
  for (int i = 0; i <= jobs.run.n6; ++i) {
    const JobReading& reading = jobs.reading(i);
    report_faults(jobs, i, Severity::warning, reading.warnings, findings);
    report_faults(jobs, i, Severity::error, reading.faults, findings);
    unusable += reading.failed ? 1 : 0;
  }
  const auto computed = static_cast<int>(jobs.computed.size());
  if (jobs.run.symm && computed == jobs.run.n6) {
    findings.note(
        {jobs.run.control_name.content()},
        "symm is true, as it is when left out: the report gets no dipole sections, although "
        "every job is computed; set symm = .false. for them");
  }
  findings.figure("computed jobs", computed);
  findings.figure("jobs that cannot be used", unusable);
}

}  // namespace check
