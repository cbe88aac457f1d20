// Two computed jobs with the same forces, or one with the reference's, digit for digit.
#include <algorithm>
#include <string_view>
#include <unordered_map>

#include "check/checks.hpp"

namespace check {

namespace {

// Whether what a step changes of the forces by other columns, `change` (n3), is no more than print
// rounding makes of it.
bool is_rounding(const RawForceConstants& raw, const Eigen::VectorXd& change,
                 const std::vector<int>& others) {
  // The difference of two elements has two of them, and what two steps change alike another two.
  constexpr double roundings = 4.0;
  return (change(others).array().abs() <= roundings * raw.rounding(others).array()).all();
}

std::vector<int> columns_without(const RawForceConstants& raw, int i, int j) {
  std::vector<int> others = raw.columns;
  std::erase_if(others, [&](int k) { return k == (i - 1) / 2 || k == (j - 1) / 2; });
  return others;
}

// Nothing is said where, by the other columns, the step changes no force.
void report_repeated_reference(const JobData& jobs, int i, Findings& findings) {
  const RawForceConstants& raw = jobs.context.raw;
  const std::vector<int> others = columns_without(raw, i, i);
  if (!others.empty() && is_rounding(raw, raw.h.row((i - 1) / 2), others)) return;
  findings.error(forces_place(jobs, i), {i, {i}}, "the forces of ", job_text(jobs, i),
                 " are those of the reference, digit for digit");
}

// Nothing is said where, by the other columns, the two steps change the forces alike, as opposite
// steps of the two atoms of a diatomic do.
void report_pair(const JobData& jobs, int i, int j, Findings& findings) {
  const RawForceConstants& raw = jobs.context.raw;
  const std::vector<int> others = columns_without(raw, i, j);
  const double sign = jobs.step(i) == jobs.step(j) ? 1.0 : -1.0;
  if (!others.empty() &&
      is_rounding(raw, raw.h.row((i - 1) / 2) - sign * raw.h.row((j - 1) / 2), others)) {
    return;
  }
  const std::vector<int> copies = single_out(jobs, {i, j}, others);
  const int blamed = copies.size() == 1 ? copies.front() : j;
  const int other = blamed == i ? j : i;
  findings.error(forces_place(jobs, blamed), {blamed, copies}, "the forces of ",
                 job_text(jobs, blamed), " are those of ", job_text(jobs, other),
                 ", digit for digit (", jobs.sign_name(other),
                 copies.size() == 1 ? ")" : "); one of the two is a copy");
}

}  // namespace

void check_duplicate(const JobData& jobs, const Thresholds&, Findings& findings) {
  std::unordered_map<std::string_view, int> first;  // by the bytes of the forces
  const auto first_with_forces_of = [&](int i) {
    const auto forces = jobs.forces(i);
    return first
        .emplace(std::string_view(reinterpret_cast<const char*>(forces.data()),
                                  sizeof(double) * static_cast<std::size_t>(forces.size())),
                 i)
        .first->second;
  };
  first_with_forces_of(0);
  int repeated = 0;
  for (const int i : jobs.read) {
    const int known = first_with_forces_of(i);
    if (known == i) continue;
    ++repeated;
    if (known == 0) {
      report_repeated_reference(jobs, i, findings);
    } else {
      report_pair(jobs, known, i, findings);
    }
  }
  findings.figure("jobs whose forces repeat others", repeated);
  if (const auto missing = std::ssize(jobs.computed) - std::ssize(jobs.read); missing > 0) {
    findings.note(whole_list, "not looked at: ", counted(missing, "job"),
                  " without forces that can be used");
  }
}

}  // namespace check
