// Files that are missing, short or malformed, and forces that are all zero.
#include <algorithm>

#include "checks.hpp"

namespace check {

namespace {

bool all_zero(const double* forces, int count) {
  return std::all_of(forces, forces + count, [](double force) { return force == 0.0; });
}

// Warnings of the readers. Those that belong to a line of the job list have a check of their own.
void pass_on_warnings(const JobData& jobs, Report& report) {
  for (const Fault& warning : jobs.list_warnings) {
    if (warning.file == zandor::job_list_name && warning.line >= jobs.job(0).list_line) continue;
    report.add(Severity::warning, warning.place(), warning.text);
  }
  for (int i = 0; i <= jobs.run.n6; ++i) {
    for (const Fault& warning : jobs.job_warnings[static_cast<std::size_t>(i)]) {
      report.add(Severity::warning, warning.place(), warning.text, i, {i});
    }
  }
}

}  // namespace

void check_files(const JobData& jobs, const Thresholds&, Report& report) {
  pass_on_warnings(jobs, report);
  for (const Fault& fault : jobs.reference_faults) {
    const bool from_run = fault.file == jobs.job(0).sgn_name.content();
    report.add(Severity::error, fault.place(), fault.text, 0,
               from_run ? std::vector<int>{0} : std::vector<int>{});
  }
  int computed = 0;
  int unusable = 0;
  for (int i = 1; i <= jobs.run.n6; ++i) {
    if (!jobs.job(i).is_calc) continue;
    ++computed;
    const auto& fault = jobs.job_faults[static_cast<std::size_t>(i)];
    if (fault) {
      ++unusable;
      report.add(Severity::error, fault->place(), fault->text, i, {i});
    } else if (all_zero(jobs.run.force.column(1, i), jobs.run.n3)) {
      report.add(Severity::error, place_of(jobs, i),
                 "all forces of " + job_text(jobs, i) + " are exactly zero", i, {i});
    }
  }
  report.figure("computed jobs", computed);
  report.figure("jobs that cannot be used", unusable);
}

}  // namespace check
