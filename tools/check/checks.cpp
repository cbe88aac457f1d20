#include "check/checks.hpp"

#include <algorithm>
#include <functional>

#include "check/support/force_constants.hpp"
#include "check/support/net_force.hpp"
#include "check/support/projected_modes.hpp"
#include "io/process.hpp"

namespace check {

namespace {

constexpr NamedCheck list[] = {
    {"names", check_names},           {"files", check_files},
    {"columns", check_columns},       {"symbols", check_symbols},
    {"masses", check_masses},         {"geometry", check_geometry},
    {"input", check_input},           {"derived", check_derived},
    {"duplicate", check_duplicate},   {"stationary", check_stationary},
    {"asymmetry", check_asymmetry},   {"net-force", check_net_force},
    {"dipole-sum", check_dipole_sum}, {"header", check_header},
    {"frame", check_frame},           {"noise", check_noise},
};

// What reads a file that the list gives wrongly is mended in the list, unless the file is bad.
void drop_wrong_names(const JobData& jobs, Report& report) {
  const std::vector<char> wrong = listed_wrongly(jobs);
  for (Finding& finding : report.findings) {
    if (finding.check == "files") continue;
    std::erase_if(finding.rerun, [&](int i) { return wrong[static_cast<std::size_t>(i)] != 0; });
  }
}

// `usable` looks at the wrong images.
void build_context(JobData& jobs, const Thresholds& limits, bool with_modes) {
  jobs.context.wrong_images = find_wrong_images(jobs, limits);
  jobs.context.raw = difference_forces(jobs);
  jobs.context.sums = sum_forces(jobs);
  if (!with_modes) return;
  const auto stop = io::collect([&] { jobs.context.modes = project_modes(jobs); });
  if (stop) jobs.context.modes.missing = stop->message;
}

}  // namespace

std::span<const NamedCheck> all_checks() { return list; }

Report run_checks(JobData& jobs, const Thresholds& limits, const std::vector<std::string>& only) {
  const auto wanted = [&](std::string_view name) {
    return only.empty() || std::find(only.begin(), only.end(), name) != only.end();
  };
  Report report;
  const auto look = [&](const char* name, const std::function<void()>& at) {
    report.check = name;
    if (const auto stop = io::collect(at)) {
      report.note({stop->file, stop->line}, "not looked at: " + stop->message);
    }
  };
  build_context(jobs, limits, wanted("frame") || wanted("noise"));
  for (const NamedCheck& check : list) {
    if (wanted(check.name)) look(check.name, [&] { check.look(jobs, limits, report); });
  }
  drop_wrong_names(jobs, report);
  std::stable_sort(report.findings.begin(), report.findings.end(),
                   [](const Finding& a, const Finding& b) { return a.job < b.job; });
  return report;
}

}  // namespace check
