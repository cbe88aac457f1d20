// zandor_collect: takes forces and transition dipoles out of finished calculations and writes sign
// files. Runs in the job directory and takes the control file of zandor_gather.
#include "analysis/prepared_dipoles.hpp"
#include "collect/find_output.hpp"
#include "collect/settle.hpp"
#include "collect/summary.hpp"
#include "io/process.hpp"
#include "io/units.hpp"
#include "options/options.hpp"

const char* const io::program_name = "zandor_collect";

namespace {

using namespace collect;

constexpr int unit = 13;

struct CommandLine {
  Choices choices;
  bool as_list = false;
  bool as_json = false;
};

bool parse(int argc, char** argv, CommandLine& line) {
  CLI::App app(
      "Takes forces and transition dipoles out of the outputs coord-NAME.log, .out, .fchk or .json "
      "of a job directory (run in that directory), and writes the sign files.",
      io::program_name);
  app.footer(
      "Exit status: 0 every computed job has its sign file, 1 some not, or signs are not "
      "settled, 2 could not collect.");
  options::JobOptions job;
  options::add_directory_options(app, job);
  auto* const list =
      app.add_flag("--list", line.as_list, "print only the names of the jobs not taken");
  app.add_flag("--json", line.as_json, "print one JSON document")->excludes(list);
  app.add_option("--root", line.choices.root,
                 "the state, as the program counts (default: the one it followed)")
      ->check(CLI::Range(1, 1000000).description(""));
  app.add_option("--suffix", line.choices.suffixes,
                 "what stands behind coord-NAME of an output; may be repeated")
      ->allow_extra_args(false);
  if (!options::parse(app, argc, argv)) return false;
  line.choices.control_file = job.control_file;
  line.choices.masses = analysis::parse_mass_changes(job.isotopes, job.masses);
  if (line.choices.suffixes.empty()) {
    line.choices.suffixes.assign(std::begin(usual_suffixes), std::end(usual_suffixes));
  }
  return true;
}

std::string suffix_text(const std::vector<std::string>& suffixes) {
  std::string text;
  for (const std::string& suffix : suffixes) text += (text.empty() ? "" : ", ") + suffix;
  return text;
}

void report_faults(const Choices& choices, const Collection& all) {
  for (const CollectedJob& job : all.jobs) {
    if (job.fault) io::report(*job.fault);
    if (job.state != State::missing) continue;
    io::report({"coord-" + job.name}, "expected an output with the suffix " +
                                          suffix_text(choices.suffixes) + ", found none");
  }
  const std::vector<int> coarse = jobs_with_few_decimals(all);
  if (!coarse.empty()) {
    io::warn({}, "the forces of " + analysis::job_names(all.run, coarse) +
                     " have few decimals: six of them move frequencies by up to 1 cm-1");
  }
  const std::vector<int> other = jobs_with_other_files(all);
  if (!other.empty()) {
    io::warn({},
             "not what the outputs give, but newer, and so left alone (remove what is to be "
             "written): " +
                 analysis::job_names(all.run, other));
  }
  if (all.unsettled_jobs.empty()) return;
  io::report({}, "cannot settle the sign of the dipole of " +
                     analysis::job_names(all.run, all.unsettled_jobs) + ": " + all.unsettled);
}

int parse_and_collect(int argc, char** argv) {
  CommandLine line;
  if (!parse(argc, argv, line)) return 0;
  Collection all = collect_outputs(line.choices);
  write_sign_files(all);
  settle_other_signs(line.choices, all);
  write_sign_files(all);
  report_faults(line.choices, all);
  io::open_standard_output(unit);
  io::output(unit).text(line.as_json   ? json_text(all)
                        : line.as_list ? list_text(all)
                                       : summary_text(all));
  io::close(unit);
  return is_complete(all) ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  return io::run_program([&] { return parse_and_collect(argc, argv); });
}
