// Jobs that share a sign file, and a job list out of order.
#include <algorithm>
#include <map>

#include "check/checks.hpp"

namespace check {

std::vector<char> listed_wrongly(const JobData& jobs) {
  std::vector<char> wrong(jobs.run.jobs.size(), 0);
  std::map<std::string_view, int> first;
  for (int i = 0; i <= jobs.run.n6; ++i) {
    const auto place = static_cast<std::size_t>(i);
    if (jobs.list.jobs[place].value_or(i) != i) wrong[place] = 1;
    if (i > 0 && !jobs.job(i).is_calc) continue;
    const auto [known, is_new] = first.emplace(jobs.job(i).sgn_name.content(), i);
    if (!is_new) wrong[place] = wrong[static_cast<std::size_t>(known->second)] = 1;
  }
  return wrong;
}

void check_names(const JobData& jobs, const Thresholds&, Report& report) {
  std::map<std::string_view, int> first;
  const std::vector<char> wrong = listed_wrongly(jobs);
  report.figure("jobs listed wrongly",
                static_cast<double>(std::count(wrong.begin(), wrong.end(), 1)));
  for (int i = 0; i <= jobs.run.n6; ++i) {
    const zandor::Job& job = jobs.job(i);
    if (i > 0 && !job.is_calc) continue;
    const auto [known, is_new] = first.emplace(job.sgn_name.content(), i);
    if (is_new) continue;
    report.add(Severity::error, {zandor::job_list_name, job.list_line},
               job_text(jobs, i) + " reads the same sign file as " + job_text(jobs, known->second) +
                   ": " + std::string(known->first),
               i);
  }
  int unordered = 0;
  int worst = 0;
  for (int i = jobs.run.n6; i >= 0; --i) {
    const auto& number = jobs.list.jobs[static_cast<std::size_t>(i)];
    if (!number || *number == i) continue;
    ++unordered;
    worst = i;
  }
  if (unordered == 0) return;
  report.add(Severity::error, {zandor::job_list_name, jobs.job(worst).list_line},
             "expected job " + std::to_string(worst) + ", found the number " +
                 std::to_string(*jobs.list.jobs[static_cast<std::size_t>(worst)]) +
                 ": jobs count in the order of the lines (" + counted(unordered, "line") +
                 " out of order)");
}

}  // namespace check
