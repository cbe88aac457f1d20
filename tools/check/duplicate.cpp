// Two computed jobs with the same forces, digit for digit.
#include <algorithm>
#include <cmath>
#include <string_view>
#include <unordered_map>

#include "checks.hpp"
#include "force_constants.hpp"

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

void report_pair(const JobData& jobs, const RawForceConstants& raw, int i, int j, Report& report) {
  const std::vector<int> others = other_columns(raw, i, j);
  if (!others.empty() && same_by_symmetry(jobs, raw, i, j, others)) return;
  const std::vector<int> copies = single_out(jobs, raw, {i, j}, others);
  const int blamed = copies.size() == 1 ? copies.front() : j;
  const int other = blamed == i ? j : i;
  report.add(Severity::error, place_of(jobs, blamed),
             "the forces of " + job_text(jobs, blamed) + " are those of " + job_text(jobs, other) +
                 ", digit for digit (" + std::string(jobs.job(other).sgn_name.content()) +
                 (copies.size() == 1 ? ")" : "); one of the two is a copy"),
             blamed, copies);
}

}  // namespace

void check_duplicate(const JobData& jobs, const Thresholds&, Report& report) {
  const zandor::RunData& run = jobs.run;
  std::unordered_map<std::string_view, int> first;
  RawForceConstants raw;
  for (int i = 1; i <= run.n6; ++i) {
    if (!jobs.job(i).is_calc || !jobs.usable(i)) continue;
    const double* const forces = run.force.column(1, i);
    const std::string_view bytes(reinterpret_cast<const char*>(forces),
                                 sizeof(double) * static_cast<std::size_t>(run.n3));
    const auto [known, is_new] = first.emplace(bytes, i);
    if (is_new) continue;
    if (raw.rounding.empty()) raw = difference_forces(jobs);
    report_pair(jobs, raw, known->second, i, report);
  }
}

}  // namespace check
