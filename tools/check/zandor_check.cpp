// zandor_check: says whether a job directory can be trusted, and which jobs to run again. Runs in
// the job directory and takes the control file of zandor_gather.
#include <algorithm>
#include <set>

#include "checks.hpp"
#include "io/process.hpp"
#include "options.hpp"
#include "output.hpp"
#include "projected_modes.hpp"

const char* const io::program_name = "zandor_check";

namespace {

using namespace check;

struct NamedCheck {
  const char* name;
  Check* look;
};

constexpr NamedCheck checks[] = {
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

struct Options {
  std::string control_file;
  std::vector<std::string> only;
  bool as_list = false;
  bool as_json = false;
  Thresholds limits;

  bool wants(const std::string& name) const {
    return only.empty() || std::find(only.begin(), only.end(), name) != only.end();
  }
};

void add_options(CLI::App& app, Options& options) {
  std::set<std::string> names;
  for (const NamedCheck& check : checks) names.insert(check.name);
  app.footer("Exit status: 0 nothing above a note, 1 errors or warnings, 2 could not check.");
  app.add_option("CONTROLFILE", options.control_file, "the control file of zandor_gather")
      ->required();
  auto* const list =
      app.add_flag("--list", options.as_list, "print only the names of the jobs to run again");
  app.add_flag("--json", options.as_json, "print one JSON document")->excludes(list);
  app.add_option("--only", options.only, "the checks to run, separated by commas")
      ->delimiter(',')
      ->check(CLI::IsMember(names));
  for (const ThresholdName& threshold : threshold_names()) {
    if (*threshold.meaning == '\0') continue;
    app.add_option("--" + std::string(threshold.name), options.limits.*threshold.value,
                   std::string(threshold.meaning) + " (" + threshold.unit + ")")
        ->group("Thresholds")
        ->check(CLI::NonNegativeNumber)
        ->capture_default_str();
  }
}

Report look_at(JobData& jobs, const Options& options) {
  if (options.wants("frame") || options.wants("noise")) {
    jobs.has_modes = analyse_projected_modes(jobs);
  }
  Report report;
  for (const NamedCheck& check : checks) {
    report.check = check.name;
    if (options.wants(check.name)) check.look(jobs, options.limits, report);
  }
  sort_findings(report);
  return report;
}

int parse_and_check(int argc, char** argv) {
  CLI::App app("Says whether the job directory in which it runs can be trusted.", io::program_name);
  Options options;
  add_options(app, options);
  if (!options::parse(app, argc, argv)) return 0;
  JobData jobs;
  read_job_data(options.control_file, jobs);
  const Report report = look_at(jobs, options);
  if (options.as_json) {
    print_json(options.control_file, jobs, options.limits, report);
  } else if (options.as_list) {
    print_list(jobs, report);
  } else {
    print_text(jobs, report);
  }
  return exit_status(report);
}

}  // namespace

int main(int argc, char** argv) {
  return io::run_program([&] { return parse_and_check(argc, argv); });
}
