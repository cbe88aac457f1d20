#include "result_names.hpp"

#include <sys/stat.h>

#include <string>

namespace zandor {

namespace {

constexpr const char* names[] = {animation_name, projected_animation_name, report_name};

using Status = struct ::stat;

bool same_file(const Status& a, const Status& b) {
  return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

// Whether a name leads to a file that may have another name too.
bool leads_elsewhere(const char* name, Status& status) {
  Status link{};
  if (::lstat(name, &link) != 0 || ::stat(name, &status) != 0) return false;
  return S_ISREG(status.st_mode) && (S_ISLNK(link.st_mode) || status.st_nlink > 1);
}

[[noreturn]] void stop_at(const char* name, const std::string& found) {
  io::fatal_stop({name}, "expected a file for the results alone, found a link to " + found);
}

void check_input(const char* result, const Status& status, const std::string& input) {
  Status of_input{};
  if (::stat(input.c_str(), &of_input) == 0 && same_file(status, of_input)) {
    stop_at(result, "the input " + io::printable(input));
  }
}

void check_inputs(const char* result, const Status& status, const RunData& run) {
  check_input(result, status, std::string(run.control_name.content()));
  check_input(result, status, job_list_name);
  check_input(result, status, std::string(run.com_name.content()));
  check_input(result, status, std::string(run.jobs[0].log_name.content()));
  for (int i = 0; i <= run.n6; ++i) {
    const Job& job = run.jobs[static_cast<std::size_t>(i)];
    if (i == 0 || job.is_calc) check_input(result, status, std::string(job.sgn_name.content()));
  }
}

}  // namespace

void check_result_names(const RunData& run) {
  for (const char* const result : names) {
    Status status{};
    if (!leads_elsewhere(result, status)) continue;
    check_inputs(result, status, run);
    for (const char* const other : names) {
      Status of_other{};
      if (other != result && ::stat(other, &of_other) == 0 && same_file(status, of_other)) {
        stop_at(result, std::string("the result ") + other);
      }
    }
  }
}

}  // namespace zandor
