#include "displace/missing.hpp"

#include <filesystem>

#include "zandor/job_list.hpp"
#include "zandor/run_control.hpp"

namespace displace {

std::vector<int> missing_jobs(const std::string& control_file, zandor::RunData& run) {
  zandor::read_control_file(io::Line(control_file), run);
  zandor::read_job_list(run);
  std::vector<int> missing;
  for (int i = 0; i <= run.n6; ++i) {
    const zandor::Job& job = run.jobs[static_cast<std::size_t>(i)];
    if (i > 0 && !job.is_calc) continue;
    if (!std::filesystem::exists(std::string(job.sgn_name.content()))) missing.push_back(i);
  }
  return missing;
}

}  // namespace displace
