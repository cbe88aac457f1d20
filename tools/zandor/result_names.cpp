#include "zandor/result_names.hpp"

#include <sys/stat.h>

#include <algorithm>
#include <iterator>
#include <string>

namespace zandor {

namespace {

constexpr const char* result_names[] = {animation_name, projected_animation_name, report_name};

using Status = struct ::stat;

bool same_file(const Status& a, const Status& b) {
  return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

// Whether a name leads to a file that may have another name too.
bool leads_elsewhere(const char* name) {
  Status link{}, status{};
  if (::lstat(name, &link) != 0 || ::stat(name, &status) != 0) return false;
  return S_ISREG(status.st_mode) && (S_ISLNK(link.st_mode) || status.st_nlink > 1);
}

std::vector<std::string> other_results(const std::string& result) {
  std::vector<std::string> others(std::begin(result_names), std::end(result_names));
  std::erase(others, result);
  return others;
}

}  // namespace

std::vector<std::string> input_names(const RunData& run) {
  const Job& reference = run.jobs[0];
  std::vector<std::string> names = {std::string(run.control_name.content()), job_list_name};
  for (const io::Line& name : {reference.sgn_name, run.com_name, reference.log_name}) {
    names.emplace_back(name.content());
  }
  for (std::size_t i = 1; i < run.jobs.size(); ++i) {
    if (run.jobs[i].is_calc) names.emplace_back(run.jobs[i].sgn_name.content());
  }
  return names;
}

std::string input_behind(const std::string& name, const std::vector<std::string>& inputs) {
  Status status{}, of_input{};
  const bool exists = ::stat(name.c_str(), &status) == 0;
  const auto found = std::find_if(inputs.begin(), inputs.end(), [&](const std::string& input) {
    return name == input ||
           (exists && ::stat(input.c_str(), &of_input) == 0 && same_file(status, of_input));
  });
  return found == inputs.end() ? "" : *found;
}

void check_result_names(const RunData& run) {
  const std::string control(run.control_name.content());
  for (const char* const result : result_names) {
    if (!input_behind(result, {control}).empty()) {
      io::fatal_stop({result}, "expected a name for a result alone, found the control file ",
                     io::printable(control));
    }
    if (!leads_elsewhere(result)) continue;
    const std::string input = input_behind(result, input_names(run));
    const std::string other = input_behind(result, other_results(result));
    if (input.empty() && other.empty()) continue;
    io::fatal_stop({result}, "expected a file for the results alone, found a link to the ",
                   input.empty() ? "result " + other : "input " + io::printable(input));
  }
}

}  // namespace zandor
