#include "checks.hpp"

#include <algorithm>

#include "io/process.hpp"
#include "projected_modes.hpp"

namespace check {

namespace {

constexpr NamedCheck list[] = {
    {"names", check_names},
    {"files", check_files},
    {"columns", check_columns},
    {"header", check_header},
    {"symbols", check_symbols},
    {"masses", check_masses},
    {"geometry", check_geometry},
    {"input", check_input},
    {"derived", check_derived},
    {"duplicate", check_duplicate},
    {"stationary", check_stationary},
    {"asymmetry", check_asymmetry},
    {"net-force", check_net_force},
    {"dipole-sum", check_dipole_sum},
    {"dipole-jump", check_dipole_jump},
    {"frame", check_frame},
    {"noise", check_noise},
};

}  // namespace

std::span<const NamedCheck> all_checks() { return list; }

Report run_checks(JobData& jobs, const Thresholds& limits, const std::vector<std::string>& only) {
  const auto wanted = [&](std::string_view name) {
    return only.empty() || std::find(only.begin(), only.end(), name) != only.end();
  };
  mark_wrong_images(jobs, limits);
  if (wanted("frame") || wanted("noise")) jobs.has_modes = analyse_projected_modes(jobs);
  Report report;
  for (const NamedCheck& check : list) {
    report.check = check.name;
    if (!wanted(check.name)) continue;
    if (const auto stop = io::collect([&] { check.look(jobs, limits, report); })) {
      report.note({stop->file, stop->line}, "not looked at: " + stop->message);
    }
  }
  std::stable_sort(report.findings.begin(), report.findings.end(),
                   [](const Finding& a, const Finding& b) { return a.job < b.job; });
  return report;
}

}  // namespace check
