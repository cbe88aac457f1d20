// Jobs that share a sign file, and a job list out of order.
#include <algorithm>
#include <map>

#include "check/checks.hpp"

namespace check {

namespace {

// The first job, of 0..n6, with the sign file of each computed one, the reference included.
std::map<int, int> first_with_same_file(const JobData& jobs) {
  std::map<int, int> found;
  std::map<std::string_view, int> first;
  for (int i = 0; i <= jobs.run.n6; ++i) {
    if (i == 0 || jobs.job(i).is_calc) found[i] = first.emplace(jobs.sign_name(i), i).first->second;
  }
  return found;
}

bool is_out_of_order(const JobData& jobs, int i) { return jobs.job(i).number.value_or(i) != i; }

}  // namespace

std::vector<char> listed_wrongly(const JobData& jobs) {
  std::vector<char> wrong(jobs.run.jobs.size(), 0);
  for (int i = 0; i <= jobs.run.n6; ++i) at(wrong, i) = is_out_of_order(jobs, i) ? 1 : 0;
  for (const auto& [i, first] : first_with_same_file(jobs)) {
    if (first != i) at(wrong, i) = at(wrong, first) = 1;
  }
  return wrong;
}

void check_names(const JobData& jobs, const Thresholds&, Findings& findings) {
  const std::vector<char> wrong = listed_wrongly(jobs);
  findings.figure("jobs listed wrongly",
                  static_cast<double>(std::count(wrong.begin(), wrong.end(), 1)));
  for (const auto& [i, first] : first_with_same_file(jobs)) {
    if (first == i) continue;
    findings.error(list_line(jobs, i), {i}, job_text(jobs, i), " reads the same sign file as ",
                   job_text(jobs, first), ": ", jobs.sign_name(i));
  }
  std::vector<int> unordered;
  for (int i = 0; i <= jobs.run.n6; ++i) {
    if (is_out_of_order(jobs, i)) unordered.push_back(i);
  }
  if (unordered.empty()) return;
  const int first = unordered.front();
  findings.error(list_line(jobs, first), {}, "expected job ", first, ", found the number ",
                 *jobs.job(first).number, ": jobs count in the order of the lines (",
                 counted(std::ssize(unordered), "line"), " out of order)");
}

}  // namespace check
