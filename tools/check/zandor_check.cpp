// zandor_check: says whether a job directory can be trusted, and which jobs to run again. Runs in
// the job directory and takes the control file of zandor_gather.
#include <cmath>
#include <set>

#include "check/checks.hpp"
#include "check/support/output.hpp"
#include "check/support/turn.hpp"
#include "io/process.hpp"
#include "io/units.hpp"
#include "io/values.hpp"
#include "options/options.hpp"

const char* const io::program_name = "zandor_check";

namespace {

using namespace check;

struct Options {
  std::string control_file;
  std::vector<std::string> only;
  std::string list;  // names or numbers
  bool as_json = false;
  std::string turn_to;
  Thresholds limits;
};

// Thresholds are finite numbers of 0 or more.
std::string complaint_about(const std::string& text) {
  double value = 0.0;
  const bool is_number = io::parse_real(text, value) && std::isfinite(value) && value >= 0.0;
  return is_number ? "" : "expected a number of 0 or more, found " + io::quoted(text);
}

void add_options(CLI::App& app, Options& options) {
  std::set<std::string> names;
  for (const NamedCheck& check : all_checks()) names.insert(check.name);
  app.footer("Exit status: 0 nothing above a note, 1 errors or warnings, 2 could not check.");
  app.add_option("CONTROLFILE", options.control_file, "the control file of zandor_gather")
      ->required();
  auto* const list = options::add_job_names(
      app, "--list", options.list,
      "print only the names of the jobs to run again; --list=numbers: their numbers");
  auto* const json = app.add_flag("--json", options.as_json, "print one JSON document");
  json->excludes(list);
  app.add_option("--turn", options.turn_to,
                 "write copies of the sign files whose sign has to be turned, turned, into this "
                 "folder, new or empty, and check nothing")
      ->type_name("FOLDER")
      ->excludes(list, json);
  app.add_option("--only", options.only, "the checks to run, separated by commas")
      ->delimiter(',')
      ->check(CLI::IsMember(names));
  for (const ThresholdName& threshold : threshold_names) {
    if (*threshold.meaning == '\0') continue;
    app.add_option("--" + std::string(threshold.name), options.limits.*threshold.value,
                   std::string(threshold.meaning) + " (" + threshold.unit + ")")
        ->group("Thresholds")
        ->check(CLI::Validator(complaint_about, "0 OR MORE"))
        ->capture_default_str();
  }
}

int parse_and_check(int argc, char** argv) {
  CLI::App app("Says whether the job directory in which it runs can be trusted.", io::program_name);
  Options options;
  add_options(app, options);
  if (!options::parse(app, argc, argv)) return 0;
  JobData jobs;
  read_job_data(options.control_file, jobs);
  if (!options.turn_to.empty()) {
    jobs.context.wrong_images = find_wrong_images(jobs, options.limits);
    constexpr int unit = 13;
    io::open_standard_output(unit);
    io::output(unit).text(write_turned(jobs, options.limits, options.turn_to) + "\n");
    io::close(unit);
    return 0;
  }
  const Findings findings = run_checks(jobs, options.limits, options.only);
  if (options.as_json) {
    print_json(options.control_file, jobs, options.limits, findings);
  } else if (!options.list.empty()) {
    options.list == "names" ? print_list(jobs, findings) : print_numbers(findings);
  } else {
    print_text(jobs, findings);
  }
  return exit_status(findings);
}

}  // namespace

int main(int argc, char** argv) {
  return io::run_program([&] { return parse_and_check(argc, argv); });
}
