// zandor_export: writes the vibrational analysis of a job directory for other programs and for
// eyes.
#include <cmath>

#include "html.hpp"
#include "io/process.hpp"
#include "io/units.hpp"
#include "json.hpp"
#include "load_results.hpp"
#include "molden.hpp"
#include "options.hpp"
#include "xyz.hpp"

const char* const io::program_name = "zandor_export";

namespace {

using exporting::ModeList;
using exporting::Results;

constexpr int unit = 13;
constexpr int fewest_frames = 4;  // show a mode at both of its turning points

// What the command line asks for.
struct Request {
  exporting::JobOptions job;
  std::vector<std::string> masses, isotopes;
  std::string output_name;  // empty: standard output
  bool unprojected = false;
  bool all_modes = false;
  double amplitude = 0.4;  // Angstrom
  std::size_t mode = 0;    // 0: all
  std::vector<int> movie;  // mode and number of frames; empty where none is wanted
};

using Writer = void (*)(const Request&, const Results&, io::OutputFile&);

struct Format {
  const char* name;
  const char* description;
  Writer write;
};

const ModeList& list_of(const Request& request, const Results& results) {
  return request.unprojected ? results.unprojected : results.projected;
}

void check_mode(std::size_t mode, const Results& results) {
  const std::size_t count = results.projected.frequencies.size();
  if (mode <= count) return;
  io::fatal_stop("expected a mode from 1 to " + std::to_string(count) + ", found " +
                 std::to_string(mode));
}

void write_frames(const Request& request, const Results& results, io::OutputFile& out) {
  const ModeList& list = list_of(request, results);
  if (!std::isfinite(request.amplitude) || request.amplitude <= 0.0) {
    io::fatal_stop("expected --amplitude above 0, found " + io::shown(request.amplitude));
  }
  if (request.movie.empty()) {
    check_mode(request.mode, results);
    exporting::write_xyz(results, list, request.amplitude, request.mode, out);
    return;
  }
  const auto mode = static_cast<std::size_t>(request.movie[0]);
  check_mode(mode, results);
  if (request.movie[1] < fewest_frames) {
    io::fatal_stop("expected --movie with at least " + std::to_string(fewest_frames) +
                   " frames, found " + std::to_string(request.movie[1]));
  }
  exporting::write_xyz_movie(results, list, request.amplitude, mode, request.movie[1], out);
}

constexpr Format formats[] = {
    {"json", "everything, in atomic units, for other programs",
     [](const Request&, const Results& results, io::OutputFile& out) {
       exporting::write_json(results, out);
     }},
    {"molden", "geometry, frequencies and displacements for viewers",
     [](const Request& request, const Results& results, io::OutputFile& out) {
       exporting::write_molden(results, list_of(request, results), request.all_modes, out);
     }},
    {"xyz", "one frame per mode in extended XYZ, or frames that play one mode", write_frames},
    {"html", "one page to look at the modes, without any network",
     [](const Request&, const Results& results, io::OutputFile& out) {
       exporting::write_html(results, out);
     }},
};

void add_common_options(CLI::App& format, Request& request) {
  format.add_option("CONTROLFILE", request.job.control_file, "control file of the job directory")
      ->required();
  format.add_option("-o,--output", request.output_name,
                    "file to write, completely or not at all (default: standard output)");
  format.add_option("--mass", request.masses, "another mass (u) of one atom, as 3=2.014101778")
      ->allow_extra_args(false)
      ->type_name("ATOM=MASS");
  format
      .add_option("--isotope", request.isotopes,
                  "another mass (u) of all atoms of an element, as H=2.014101778")
      ->allow_extra_args(false)
      ->type_name("SYMBOL=MASS");
  format
      .add_option(
          "--characters", request.job.dipoles.characters,
          "characters of the operations other than the identity, for the dipoles of derived "
          "jobs: --characters=+,-,- (default: found by their sum rules)")
      ->type_name("SIGNS");
  format.add_flag("--settle-signs", request.job.dipoles.settle_signs,
                  "turn back the signs of transition dipoles that have turned");
}

void add_mode_options(CLI::App& molden, CLI::App& xyz, Request& request) {
  for (CLI::App* const format : {&molden, &xyz}) {
    format->add_flag("--unprojected", request.unprojected,
                     "the modes as they stand instead of the projected ones");
  }
  molden.add_flag("--all", request.all_modes, "all modes, translations and rotations included");
  xyz.add_option("--amplitude", request.amplitude,
                 "displacement of the atom that moves farthest, Angstrom (default: 0.4)");
  CLI::Option* const mode = xyz.add_option("--mode", request.mode, "this mode only");
  mode->check(CLI::PositiveNumber);
  xyz.add_option("--movie", request.movie, "mode and number of frames: one period of its motion")
      ->expected(2)
      ->allow_extra_args(false)
      ->type_name("N FRAMES")
      ->check(CLI::Range(1, 100000))
      ->excludes(mode);
}

std::vector<analysis::MassChange> mass_changes(const Request& request) {
  std::vector<analysis::MassChange> changes;
  for (const std::string& text : request.isotopes) {
    changes.push_back(analysis::parse_isotope(text));
  }
  for (const std::string& text : request.masses) changes.push_back(analysis::parse_mass(text));
  return changes;
}

const Format& chosen_format(const CLI::App& app) {
  for (const Format& format : formats) {
    if (app.got_subcommand(format.name)) return format;
  }
  const std::vector<std::string> found = app.remaining();
  io::fatal_stop("expected a format (json, molden, xyz or html), found " +
                 (found.empty() ? "none" : io::quoted(found.front())) +
                 " (see zandor_export --help)");
}

void write_format(const Format& format, const Request& request) {
  // A name that cannot be written is to be found out before the work is done.
  if (request.output_name.empty()) {
    io::open_standard_output(unit);
  } else {
    io::open_replaced(unit, request.output_name);
  }
  const Results results = exporting::load_results(request.job);
  format.write(request, results, io::output(unit));
  io::close(unit);
}

int parse_and_export(int argc, char** argv) {
  CLI::App app(
      "Writes the vibrational analysis of a job directory for other programs and for eyes.",
      io::program_name);
  app.get_formatter()->label("SUBCOMMAND", "FORMAT");
  app.footer("zandor_export FORMAT --help tells the options of a format.");
  Request request;
  for (const Format& format : formats) {
    CLI::App* const sub = app.add_subcommand(format.name, format.description)->group("Formats");
    add_common_options(*sub, request);
  }
  add_mode_options(*app.get_subcommand("molden"), *app.get_subcommand("xyz"), request);
  app.require_subcommand(0, 1);
  app.allow_extras();
  if (!options::parse(app, argc, argv)) return 0;
  const Format& format = chosen_format(app);
  request.job.mass_changes = mass_changes(request);
  write_format(format, request);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  return io::run_program([&] { return parse_and_export(argc, argv); });
}
