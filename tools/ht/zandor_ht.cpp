// zandor_ht: Herzberg-Teller terms along the normal modes. Runs in the job directory, on the
// control file of zandor_gather, and writes to standard output only.
#include <cmath>

#include "analysis/rigid_motions.hpp"
#include "ht/output.hpp"
#include "io/process.hpp"
#include "io/units.hpp"
#include "options/options.hpp"

const char* const io::program_name = "zandor_ht";

namespace {

constexpr int unit = 13;

struct CommandLine {
  ht::Request request;
  bool as_json = false;
  bool as_csv = false;
};

bool parse(int argc, char** argv, CommandLine& line) {
  CLI::App app(
      "Herzberg-Teller terms along the normal modes, from a job directory of zandor_gather (run in "
      "that directory).",
      io::program_name);
  app.footer("Exit status: 0 done, 1 the reference sign file lacks a keyword, 2 anything else.");
  ht::Request& request = line.request;
  options::JobOptions job;
  std::string kind;
  double kelvin = 0.0, energy = 0.0;
  options::add_job_options(app, job);
  auto* const json = app.add_flag("--json", line.as_json, "write JSON");
  app.add_flag("--csv", line.as_csv, "write comma-separated values")->excludes(json);
  auto* const temperature =
      app.add_option("--temperature", kelvin, "thermal strengths at K kelvin");
  auto* const given_energy =
      app.add_option("--energy", energy, "electronic energy in eV, for oscillator strengths");
  auto* const given_kind =
      app.add_option("--energy-kind", kind, "what --energy is: vertical or 0-0");
  given_kind->check(CLI::IsMember({"vertical", "0-0"}))->needs(given_energy);
  given_energy->needs(given_kind);
  app.add_flag("--emission", request.emission, "oscillator strengths of emission, not absorption")
      ->needs(given_energy);
  if (!options::parse(app, argc, argv)) return false;
  if (temperature->count() > 0) request.kelvin = kelvin;
  if (given_energy->count() > 0) request.energy = energy;
  request.vertical = kind == "vertical";
  request.control_file = job.control_file;
  request.dipoles = {job.characters, job.settle_signs, {}, {}};
  request.masses = analysis::parse_mass_changes(job.isotopes, job.masses);
  return true;
}

void check(const ht::Request& request) {
  if (request.kelvin && !(std::isfinite(*request.kelvin) && *request.kelvin >= 0.0)) {
    io::fatal_stop("expected behind --temperature a number of 0 or more, found " +
                   io::shown(*request.kelvin));
  }
  if (request.energy && !(std::isfinite(*request.energy) && *request.energy > 0.0)) {
    io::fatal_stop("expected behind --energy a number above 0, found " +
                   io::shown(*request.energy));
  }
}

int run_and_write(int argc, char** argv) {
  CommandLine line;
  if (!parse(argc, argv, line)) return 0;
  check(line.request);
  const zandor::RunData run =
      analysis::load_job_directory(line.request.control_file, line.request.masses);
  const std::string turned = analysis::turned_geometry(run);
  if (!turned.empty()) io::warn({run.com_name.content()}, turned);
  line.request.dipoles.density = [&run] { return analysis::density_elements(run); };
  const analysis::PreparedDipoles dipoles = analysis::prepare_dipoles(run, line.request.dipoles);
  for (const std::string& warning : dipoles.warnings) io::warn({}, warning);
  if (!dipoles.refusal.empty()) io::fatal_stop(dipoles.refusal);
  const ht::Results results = ht::form_results(line.request, run, dipoles);
  const auto write = line.as_json ? ht::json : line.as_csv ? ht::csv : ht::table;
  io::open_standard_output(unit);
  io::output(unit).text(write(line.request, run, dipoles, results));
  io::close(unit);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  return io::run_program([&] { return run_and_write(argc, argv); });
}
