// The keyword headers of the displaced jobs against that of the reference.
#include <algorithm>
#include <cmath>

#include "checks.hpp"

namespace check {

namespace {

std::string place_text(const std::array<int, 2>& place) {
  return std::to_string(place[0]) + " " + std::to_string(place[1]);
}

void compare_sizes(const JobData& jobs, int i, Report& report) {
  const SignHeader& reference = jobs.sign_file(0).header;
  const SignHeader& header = jobs.sign_file(i).header;
  for (std::size_t k = 0; k < SignHeader::size_count; ++k) {
    if (!header.sizes[k] || !reference.sizes[k] || *header.sizes[k] == *reference.sizes[k]) {
      continue;
    }
    report.add(Severity::warning, {jobs.job(i).sgn_name.content(), header.lines[k]},
               std::string(SignHeader::names[k]) + " is " + std::to_string(*header.sizes[k]) +
                   ", in the reference " + std::to_string(*reference.sizes[k]) +
                   ": the job ran with other settings",
               i, {i});
  }
}

// How far the largest element has moved against the reference's; 0 where that cannot be told.
double compare_state(const JobData& jobs, int i, double limit, Report& report) {
  const SignHeader& reference = jobs.sign_file(0).header;
  const SignHeader& header = jobs.sign_file(i).header;
  const std::string_view name = jobs.job(i).sgn_name.content();
  if (header.tden_maxloc && reference.tden_maxloc &&
      *header.tden_maxloc != *reference.tden_maxloc) {
    report.add(Severity::warning, {name, header.lines[SignHeader::size_count]},
               "tden_maxloc is " + place_text(*header.tden_maxloc) + ", in the reference " +
                   place_text(*reference.tden_maxloc) +
                   ": another state, or orbitals in another order",
               i);
    return 0.0;
  }
  if (!header.tden_maxval || !reference.tden_maxval || *reference.tden_maxval == 0.0) return 0.0;
  const double change = std::fabs(*header.tden_maxval / *reference.tden_maxval - 1.0);
  if (change <= limit) return change;
  const bool turned = *header.tden_maxval * *reference.tden_maxval < 0.0;
  report.add(Severity::warning, {name, header.lines.back()},
             "tden_maxval is " + io::shown(*header.tden_maxval) + ", in the reference " +
                 io::shown(*reference.tden_maxval) +
                 (turned ? ": the sign of the state has turned" : ": the state has changed"),
             i);
  return change;
}

bool has_any(const SignHeader& header) {
  return std::any_of(header.lines.begin(), header.lines.end(), [](long long l) { return l > 0; });
}

}  // namespace

void check_header(const JobData& jobs, const Thresholds& limits, Report& report) {
  int without = 0;
  double largest = 0.0;
  for (int i = 1; i <= jobs.run.n6; ++i) {
    if (!jobs.job(i).is_calc || jobs.job_faults[static_cast<std::size_t>(i)]) continue;
    if (!has_any(jobs.sign_file(i).header)) ++without;
    compare_sizes(jobs, i, report);
    largest = std::max(largest, compare_state(jobs, i, limits.header_change, report));
  }
  report.figure("largest relative change of tden_maxval (1)", largest);
  if (!has_any(jobs.sign_file(0).header)) {
    report.note(place_of(jobs, 0), "not looked at: the reference's sign file holds no header");
  } else if (without > 0) {
    report.note({zandor::job_list_name},
                "not looked at: " + counted(without, "displaced sign file") + " without a header");
  }
}

}  // namespace check
