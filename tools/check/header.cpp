// The keyword headers of the displaced jobs against that of the reference.
#include <algorithm>
#include <cmath>

#include "analysis/prepared_dipoles.hpp"
#include "check/checks.hpp"

namespace check {

namespace {

constexpr std::size_t maxloc = SignHeader::size_count;
constexpr std::size_t maxval = maxloc + 1;

// A value of the header, in the spelling of messages; empty where it is not there.
std::string value_text(const SignHeader& header, std::size_t k) {
  if (k < maxloc) return header.sizes[k] ? std::to_string(*header.sizes[k]) : "";
  if (k == maxval) return header.tden_maxval ? io::shown(*header.tden_maxval) : "";
  if (!header.tden_maxloc) return {};
  return std::to_string((*header.tden_maxloc)[0]) + " " + std::to_string((*header.tden_maxloc)[1]);
}

// A value that differs from the reference's.
struct Difference {
  int job = 0;
  std::string found;
  std::string meaning;
};

// One value in all jobs that have it.
struct Comparison {
  std::size_t place = 0;  // in SignHeader::names
  int compared = 0;
  std::vector<Difference> different;

  // All jobs differ from the reference, and in the same way.
  bool all_alike() const {
    return compared > 1 && static_cast<int>(different.size()) == compared &&
           std::all_of(different.begin(), different.end(), [&](const Difference& d) {
             return place == maxval ? d.meaning == different.front().meaning
                                    : d.found == different.front().found;
           });
  }
};

// How far the largest element has moved against the reference's; 0 where that cannot be told.
double change_of_state(const SignHeader& header, const SignHeader& reference) {
  const bool comparable = header.tden_maxval && reference.tden_maxval &&
                          *reference.tden_maxval != 0.0 &&
                          (!header.tden_maxloc || !reference.tden_maxloc ||
                           *header.tden_maxloc == *reference.tden_maxloc);
  return comparable ? std::fabs(*header.tden_maxval / *reference.tden_maxval - 1.0) : 0.0;
}

void compare(const SignHeader& header, const SignHeader& reference, int job, double limit,
             Comparison& comparison) {
  const std::size_t k = comparison.place;
  const std::string found = value_text(header, k);
  const std::string expected = value_text(reference, k);
  if (found.empty() || expected.empty()) return;
  ++comparison.compared;
  if (k == maxval) {
    if (change_of_state(header, reference) <= limit) return;
    const bool turned = *header.tden_maxval * *reference.tden_maxval < 0.0;
    comparison.different.push_back(
        {job, found, turned ? "the sign of the state has turned" : "the state has changed"});
  } else if (found != expected) {
    comparison.different.push_back({job, found,
                                    k == maxloc ? "another state, or orbitals in another order"
                                                : "the job ran with other settings"});
  }
}

void report_value(const JobData& jobs, const Comparison& comparison, Report& report) {
  const std::size_t k = comparison.place;
  const std::string name = SignHeader::names[k];
  const SignHeader& reference = jobs.sign_file(0).header;
  const auto rerun = [&](int i) { return k < maxloc ? std::vector<int>{i} : std::vector<int>{}; };
  if (comparison.all_alike()) {
    const Difference& first = comparison.different.front();
    report.add(
        Severity::warning, {jobs.job(0).sgn_name.content(), reference.lines[k]},
        name + " is " + value_text(reference, k) + ", in all displaced sign files " +
            (k == maxval ? "other than that (" + first.found + " in the first)" : first.found) +
            ": in the reference " + first.meaning,
        0, rerun(0));
    return;
  }
  for (const Difference& d : comparison.different) {
    report.add(Severity::warning,
               {jobs.job(d.job).sgn_name.content(), jobs.sign_file(d.job).header.lines[k]},
               name + " is " + d.found + ", in the reference " + value_text(reference, k) + ": " +
                   d.meaning,
               d.job, rerun(d.job));
  }
}

bool has_any(const SignHeader& header) {
  return std::any_of(header.lines.begin(), header.lines.end(), [](long long l) { return l > 0; });
}

}  // namespace

void check_header(const JobData& jobs, const Thresholds& limits, Report& report) {
  const SignHeader& reference = jobs.sign_file(0).header;
  std::array<Comparison, SignHeader::names.size()> comparisons;
  for (std::size_t k = 0; k < comparisons.size(); ++k) comparisons[k].place = k;
  std::vector<int> without;
  double largest = not_known;
  for (int i = 1; i <= jobs.run.n6; ++i) {
    if (!jobs.job(i).is_calc || jobs.reading(i).fault) continue;
    const SignHeader& header = jobs.sign_file(i).header;
    if (!has_any(header)) without.push_back(i);
    for (Comparison& comparison : comparisons) {
      compare(header, reference, i, limits.header_change, comparison);
    }
    if (header.tden_maxval) largest = std::fmax(largest, change_of_state(header, reference));
  }
  for (const Comparison& comparison : comparisons) report_value(jobs, comparison, report);
  report.figure("largest relative change of tden_maxval (1)", largest);
  if (!has_any(reference)) {
    report.note(place_of(jobs, 0), "not looked at: the reference's sign file holds no header");
  } else if (!without.empty()) {
    report.note(
        {zandor::job_list_name},
        "not looked at: " + counted(static_cast<long long>(without.size()), "displaced sign file") +
            " without a header (" + analysis::job_names(jobs.run, without) + ")");
  }
}

}  // namespace check
