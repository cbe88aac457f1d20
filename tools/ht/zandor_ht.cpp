// zandor_ht: Herzberg-Teller terms along the normal modes. Runs in the job directory, on the
// control file of zandor_gather, and writes to standard output only.
#include <cmath>

#include "analysis/vibrations.hpp"
#include "ht/output.hpp"
#include "io/process.hpp"
#include "io/units.hpp"
#include "options/options.hpp"

const char* const io::program_name = "zandor_ht";

namespace {

constexpr int unit = 13;

struct CommandLine {
  ht::Request request;
  options::JobOptions job;
  bool as_json = false;
  bool as_csv = false;
  // What the parser fills and the request holds in another form.
  std::string energy_kind, shape = "gauss";
  ht::Spectrum spectrum;
  std::vector<double> range;  // of the spectrum: low, high, step
};

void add_energy_options(CLI::App& app, CommandLine& line) {
  ht::Request& request = line.request;
  app.add_option("--temperature", request.kelvin, "thermal strengths at K kelvin");
  auto* const energy = app.add_option("--energy", request.energy,
                                      "electronic energy in eV, for oscillator strengths");
  auto* const kind =
      app.add_option("--energy-kind", line.energy_kind, "what --energy is: vertical or 0-0");
  kind->check(CLI::IsMember({"vertical", "0-0"}))->needs(energy);
  energy->needs(kind);
  app.add_flag("--emission", request.emission,
               "oscillator strengths and spectrum of emission, not absorption");
}

void add_spectrum_options(CLI::App& app, CommandLine& line) {
  ht::Spectrum& spectrum = line.spectrum;
  auto* const range = app.add_option("--spectrum", line.range,
                                     "the broadened strengths at these wavenumbers, as CSV or JSON")
                          ->expected(3)
                          ->allow_extra_args(false)
                          ->type_name("MIN MAX STEP");
  auto* const width =
      app.add_option("--width", spectrum.width, "full width at half maximum of its lines, cm-1")
          ->needs(range);
  range->needs(width);
  app.add_option("--shape", line.shape, "shape of its lines")
      ->check(CLI::IsMember({"gauss", "lorentz"}))
      ->capture_default_str()
      ->needs(range);
  app.add_option("--origin", spectrum.origin, "wavenumber of the transition without quanta, cm-1")
      ->capture_default_str()
      ->needs(range);
}

bool parse(int argc, char** argv, CommandLine& line) {
  CLI::App app(
      "Herzberg-Teller terms along the normal modes, from a job directory of zandor_gather (run in "
      "that directory).",
      io::program_name);
  app.footer("Exit status: 0 done, 1 the reference sign file lacks a keyword, 2 anything else.");
  ht::Request& request = line.request;
  options::add_job_options(app, line.job);
  auto* const json = app.add_flag("--json", line.as_json, "write JSON");
  app.add_flag("--csv", line.as_csv, "write comma-separated values")->excludes(json);
  add_energy_options(app, line);
  auto* const other =
      app.add_option_function<std::string>(
             "--modes-of", [&request](const std::string& file) { request.modes_of = file; },
             "take the modes of another state, from a formatted checkpoint "
             "file, an ORCA .hess file or the JSON of zandor_export")
          ->type_name("FILE");
  app.add_option("--within", request.within,
                 "how far its geometry may be from that of the jobs, Angstrom, root mean square")
      ->capture_default_str()
      ->needs(other);
  add_spectrum_options(app, line);
  if (!options::parse(app, argc, argv)) return false;
  request.vertical = line.energy_kind == "vertical";
  if (!line.range.empty()) {
    line.spectrum.lorentz = line.shape == "lorentz";
    line.spectrum.low = line.range[0];
    line.spectrum.high = line.range[1];
    line.spectrum.step = line.range[2];
    request.spectrum = line.spectrum;
  }
  request.control_file = line.job.control_file;
  request.dipoles = {line.job.characters, line.job.settle_signs, {}, {}};
  request.masses = analysis::parse_mass_changes(line.job.isotopes, line.job.masses);
  return true;
}

// Whether the number behind an option is above 0, or at least 0.
void check(const char* option, const std::optional<double>& number, bool zero_too) {
  if (!number || (std::isfinite(*number) && (zero_too ? *number >= 0.0 : *number > 0.0))) return;
  io::fatal_stop({}, "expected behind ", option,
                 zero_too ? " a number of 0 or more, found " : " a number above 0, found ",
                 *number);
}

void check(const ht::Request& request) {
  constexpr double most_points = 1e6;
  check("--temperature", request.kelvin, true);
  check("--energy", request.energy, false);
  check("--within", request.within, true);
  if (request.emission && !request.energy && !request.spectrum) {
    io::fatal_stop("expected --energy or --spectrum beside --emission, found neither");
  }
  if (!request.spectrum) return;
  const auto& [low, high, step, width, lorentz, origin] = *request.spectrum;
  if (!(step > 0.0 && high > low && (high - low) / step < most_points && std::isfinite(origin))) {
    io::fatal_stop(
        {},
        "expected behind --spectrum MIN below MAX and a STEP above 0 with at most 1000000 points, "
        "behind --origin a number, found ",
        low, " ", high, " ", step, " and ", origin);
  }
  check("--width", width, false);
  if (step > width) {
    io::warn({}, io::joined("the points of the spectrum are ", step,
                            " cm-1 apart, further than its "
                            "lines are wide: lines may fall between them"));
  }
}

int run_and_write(int argc, char** argv) {
  CommandLine line;
  if (!parse(argc, argv, line)) return 0;
  check(line.request);
  zandor::RunData run =
      analysis::load_job_directory(line.request.control_file, line.request.masses);
  const std::string turned = analysis::turned_geometry(run);
  if (!turned.empty()) io::warn({run.com_name.content()}, turned);
  line.request.dipoles.density = [&run] { return analysis::density_elements(run); };
  std::optional<ht::Fit> fit;
  if (line.request.modes_of) {
    fit = ht::take_modes(*line.request.modes_of, line.request.within, line.request.masses, run);
    line.request.dipoles.directions = [&run] {
      return analysis::vibration_directions(run, analysis::mass_weighted_force_constants(run));
    };
  }
  const analysis::PreparedDipoles dipoles = analysis::prepare_dipoles(run, line.request.dipoles);
  for (const std::string& warning : dipoles.warnings) io::warn({}, warning);
  if (!dipoles.refusal.empty()) io::fatal_stop(dipoles.refusal);
  ht::Results results = ht::form_results(line.request, run, dipoles);
  results.fit = fit;
  const bool as_csv = line.as_csv || line.request.spectrum;
  const auto write = line.as_json ? ht::json : as_csv ? ht::csv : ht::table;
  io::open_standard_output(unit);
  io::output(unit).text(write({line.request, run, dipoles, results}));
  io::close(unit);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  return io::run_program([&] { return run_and_write(argc, argv); });
}
