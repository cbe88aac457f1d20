// Two computed jobs with the same forces, or one with the reference's, digit for digit.
#include <algorithm>
#include <cmath>
#include <string_view>
#include <unordered_map>

#include "check/checks.hpp"
#include "check/support/force_constants.hpp"

namespace check {

namespace {

// The columns other than those of the two jobs.
std::vector<int> other_columns(const RawForceConstants& raw, int i, int j) {
  std::vector<int> others;
  for (const int c : raw.columns) {
    if (c != (i + 1) / 2 && c != (j + 1) / 2) others.push_back(c);
  }
  return others;
}

// Whether, by the other columns, the steps of the two jobs change the forces alike, as those of
// opposite steps of the two atoms of a diatomic do.
bool same_by_symmetry(const JobData& jobs, const RawForceConstants& raw, int i, int j,
                      const std::vector<int>& others) {
  return std::all_of(others.begin(), others.end(), [&](int c) {
    const double difference = step_sign(jobs.run, i) * raw.h((i + 1) / 2, c) -
                              step_sign(jobs.run, j) * raw.h((j + 1) / 2, c);
    return std::fabs(difference) <= 4.0 * raw.rounding[static_cast<std::size_t>(c - 1)];
  });
}

// Whether, by the other columns, the step of a job changes no force.
bool changes_nothing(const RawForceConstants& raw, int i) {
  const int ih = (i + 1) / 2;
  return std::all_of(raw.columns.begin(), raw.columns.end(), [&](int c) {
    return c == ih ||
           std::fabs(raw.h(ih, c)) <= 4.0 * raw.rounding[static_cast<std::size_t>(c - 1)];
  });
}

void report_repeated_reference(const JobData& jobs, const RawForceConstants& raw, int i,
                               Report& report) {
  if (raw.columns.size() > 1 && changes_nothing(raw, i)) return;
  report.add(Severity::error, forces_place(jobs, i),
             "the forces of " + job_text(jobs, i) + " are those of the reference, digit for digit",
             i, {i});
}

void report_pair(const JobData& jobs, const RawForceConstants& raw, int i, int j, Report& report) {
  const std::vector<int> others = other_columns(raw, i, j);
  if (!others.empty() && same_by_symmetry(jobs, raw, i, j, others)) return;
  const std::vector<int> copies = single_out(jobs, raw, {i, j}, others);
  const int blamed = copies.size() == 1 ? copies.front() : j;
  const int other = blamed == i ? j : i;
  report.add(Severity::error, forces_place(jobs, blamed),
             "the forces of " + job_text(jobs, blamed) + " are those of " + job_text(jobs, other) +
                 ", digit for digit (" + std::string(jobs.job(other).sgn_name.content()) +
                 (copies.size() == 1 ? ")" : "); one of the two is a copy"),
             blamed, copies);
}

}  // namespace

void check_duplicate(const JobData& jobs, const Thresholds&, Report& report) {
  const zandor::RunData& run = jobs.run;
  const auto bytes_of = [&](const double* forces) {
    return std::string_view(reinterpret_cast<const char*>(forces),
                            sizeof(double) * static_cast<std::size_t>(run.n3));
  };
  std::unordered_map<std::string_view, int> first;
  const std::vector<double>& reference = jobs.reference_forces;
  if (!reference.empty()) first.emplace(bytes_of(reference.data()), 0);
  const RawForceConstants& raw = jobs.context.raw;
  int repeated = 0;
  int missing = 0;
  for (int i = 1; i <= run.n6; ++i) {
    if (!jobs.job(i).is_calc) continue;
    if (!jobs.usable(i)) {
      ++missing;
      continue;
    }
    const auto [known, is_new] = first.emplace(bytes_of(run.force.column(1, i)), i);
    if (is_new) continue;
    ++repeated;
    if (known->second == 0) {
      report_repeated_reference(jobs, raw, i, report);
    } else {
      report_pair(jobs, raw, known->second, i, report);
    }
  }
  report.figure("jobs whose forces repeat others", repeated);
  if (missing > 0) {
    report.note({zandor::job_list_name},
                "not looked at: " + counted(missing, "job") + " without forces that can be used");
  }
}

}  // namespace check
