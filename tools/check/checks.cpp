#include "check/checks.hpp"

#include <algorithm>

#include "io/process.hpp"

namespace check {

namespace {

constexpr NamedCheck list[] = {
    {"names", check_names},
    {"files", check_files},
    {"columns", check_columns},
    {"symbols", check_symbols},
    {"masses", check_masses},
    {"geometry", check_geometry},
    {"input", check_input},
    {"derived", check_derived},
    {"duplicate", check_duplicate},
    {"stationary", check_stationary},
    {"state", check_state},
    {"asymmetry", check_asymmetry, true},
    {"net-force", check_net_force},
    {"force-constants", check_force_constants, true, true},
    {"precision", check_precision, true, true},
    {"dipole-sum", check_dipole_sum, true},
    {"header", check_header, true},
    {"frame", check_frame, true, true},
    {"noise", check_noise, true, true},
};

// Jobs that the list gives wrongly are mended in the list, and are not run again unless their file
// is bad.
void drop_wrong_names(const JobData& jobs, Findings& findings) {
  const std::vector<char> wrong = listed_wrongly(jobs);
  for (Finding& finding : findings.list) {
    if (finding.check == "files") continue;
    std::erase_if(finding.rerun, [&](int i) { return wrong[static_cast<std::size_t>(i)] != 0; });
  }
}

}  // namespace

std::span<const NamedCheck> all_checks() { return list; }

Findings run_checks(JobData& jobs, const Thresholds& limits, const std::vector<std::string>& only) {
  const auto wanted = [&](std::string_view name) {
    return only.empty() || std::ranges::find(only, name) != only.end();
  };
  Findings findings;
  jobs.context.wrong_images = find_wrong_images(jobs, limits);
  form_context(jobs, limits,
               std::any_of(std::begin(list), std::end(list), [&](const NamedCheck& check) {
                 return check.needs_modes && wanted(check.name);
               }));
  const bool touches = jobs.context.common_cause.is(CommonCause::Kind::degenerate);
  for (const NamedCheck& check : list) {
    if (!wanted(check.name) || (touches && check.needs_one_state)) continue;
    findings.check = check.name;
    if (const auto stop = io::collect([&] { check.look(jobs, limits, findings); })) {
      findings.note({stop->file, stop->line}, "not looked at: ", stop->message);
    }
  }
  drop_wrong_names(jobs, findings);
  std::ranges::stable_sort(findings.list,
                           [](const Finding& a, const Finding& b) { return a.job < b.job; });
  return findings;
}

}  // namespace check
