// zandor_export: writes the vibrational analysis of a job directory for other programs and for
// eyes.
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <optional>
#include <string_view>

#include "analysis/job_directory.hpp"
#include "analysis/prepared_dipoles.hpp"
#include "export/formats.hpp"
#include "io/process.hpp"
#include "io/units.hpp"
#include "options/options.hpp"
#include "zandor/result_names.hpp"

const char* const io::program_name = "zandor_export";

namespace {

using exporting::Content;
using exporting::ModeList;

constexpr int unit = 13;
constexpr int fewest_frames = 4;  // show a mode at both of its turning points

// What the command line asks for.
struct Request {
  options::JobOptions job;
  std::string output_name;  // empty or "-": standard output
  bool unprojected = false;
  bool all_modes = false;
  double amplitude = 0.4;   // Angstrom
  std::optional<int> mode;  // all without it
  std::vector<int> movie;   // mode and number of frames; empty where none is wanted
};

using Writer = void (*)(const Request&, const Content&, io::OutputFile&);

struct Format {
  std::string_view name;
  const char* description;
  Writer write;
  bool both_lists = false;  // of modes; otherwise the one that was asked for
};

// For formats that have no options of their own.
template <void (*write)(const Content&, io::OutputFile&)>
void write_plain(const Request&, const Content& content, io::OutputFile& out) {
  write(content, out);
}

const ModeList& list_of(const Request& request, const Content& content) {
  return request.unprojected ? content.unprojected : content.projected;
}

std::size_t checked_mode(int mode, const Content& content) {
  const std::size_t count = 3 * content.symbols.size();
  if (mode >= 1 && static_cast<std::size_t>(mode) <= count) return static_cast<std::size_t>(mode);
  io::fatal_stop({}, "expected a mode from 1 to ", count, ", found ", mode);
}

void write_frames(const Request& request, const Content& content, io::OutputFile& out) {
  const ModeList& list = list_of(request, content);
  if (!std::isfinite(request.amplitude) || request.amplitude <= 0.0) {
    io::fatal_stop({}, "expected --amplitude above 0, found ", request.amplitude);
  }
  if (request.movie.empty()) {
    const std::size_t only = request.mode ? checked_mode(*request.mode, content) : 0;
    exporting::write_xyz(content, list, request.amplitude, only, out);
    return;
  }
  const std::size_t mode = checked_mode(request.movie[0], content);
  if (request.movie[1] < fewest_frames) {
    io::fatal_stop({}, "expected --movie with at least ", fewest_frames, " frames, found ",
                   request.movie[1]);
  }
  exporting::write_xyz_movie(content, list, request.amplitude, mode, request.movie[1], out);
}

constexpr Format formats[] = {
    {"json", "everything, in atomic units, for other programs", write_plain<exporting::write_json>,
     true},
    {"fchk", "formatted checkpoint: force constants, modes, transition dipole and its derivatives",
     write_plain<exporting::write_fchk>},
    {"hess", "force constants and modes as ORCA keeps them", write_plain<exporting::write_hess>},
    {"cjson", "Chemical JSON: geometry and vibrations for Avogadro",
     write_plain<exporting::write_cjson>},
    {"molden", "geometry, frequencies and displacements for viewers",
     [](const Request& request, const Content& content, io::OutputFile& out) {
       const ModeList& list = list_of(request, content);
       if (request.all_modes) return exporting::write_molden(content, list, out);
       exporting::write_molden(content, exporting::vibrations(list), out);
     }},
    {"xyz", "one frame per mode in extended XYZ, or frames that play one mode", write_frames},
    {"html", "one page to look at the modes, without any network",
     write_plain<exporting::write_html>, true},
};

void add_common_options(CLI::App& format, Request& request) {
  options::add_job_options(format, request.job);
  format.add_option("-o,--output", request.output_name,
                    "file to write, completely or not at all (default: standard output)");
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
  xyz.add_option("--movie", request.movie, "mode and number of frames: one period of its motion")
      ->expected(2)
      ->allow_extra_args(false)
      ->type_name("N FRAMES")
      ->check(CLI::Range(1, 100000))
      ->excludes(mode);
}

const Format* format_of(std::string_view name) {
  const Format* const found = std::ranges::find(formats, name, &Format::name);
  return found == std::end(formats) ? nullptr : found;
}

// The first argument is the format, unless it asks for a text. The parser would look for it among
// all, and take what stands before it for options of no format.
void check_first_argument(int argc, const char* const* argv) {
  const std::string first = argc > 1 ? argv[1] : "";
  if (first == "-h" || first == "--help" || first == "--version" || format_of(first) != nullptr) {
    return;
  }
  const char* const expected =
      first.starts_with('-') ? "expected options behind the format"
                             : "expected a format (json, fchk, hess, cjson, molden, xyz or html)";
  io::fatal_stop({}, expected, ", found ", argc > 1 ? io::quoted(first) : "none",
                 " (see zandor_export --help)");
}

void check_output(const std::string& name, const Content& content) {
  std::vector<std::string> files = content.input_files;
  files.insert(files.end(),
               {zandor::animation_name, zandor::projected_animation_name, zandor::report_name});
  const std::string found = zandor::input_behind(name, files);
  if (found.empty()) return;
  io::fatal_stop({name}, "expected a file that is no input or result of the job, found ",
                 io::printable(found));
}

void write_format(const Format& format, const Request& request) {
  const bool to_file = !request.output_name.empty() && request.output_name != "-";
  // A name that cannot be written is to be found out before the work is done.
  if (to_file) {
    io::open_replaced(unit, request.output_name);
  } else {
    // Nobody reads megabytes of a page on a screen; whoever wants them says so.
    if (request.output_name.empty() && format.write == write_plain<exporting::write_html> &&
        ::isatty(STDOUT_FILENO) == 1) {
      io::fatal_stop("expected -o FILE behind html, found a terminal (-o - writes the page to it)");
    }
    io::open_standard_output(unit);
  }
  const options::JobOptions& job = request.job;
  const Content content = exporting::load_content(
      job.control_file, analysis::parse_mass_changes(job.isotopes, job.masses),
      {job.characters, job.settle_signs, {}, {}},
      format.both_lists     ? exporting::Lists::both
      : request.unprojected ? exporting::Lists::unprojected
                            : exporting::Lists::projected);
  if (to_file) check_output(request.output_name, content);
  format.write(request, content, io::output(unit));
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
    CLI::App* const sub =
        app.add_subcommand(std::string(format.name), format.description)->group("Formats");
    add_common_options(*sub, request);
  }
  add_mode_options(*app.get_subcommand("molden"), *app.get_subcommand("xyz"), request);
  app.require_subcommand(1);
  check_first_argument(argc, argv);
  if (!options::parse(app, argc, argv)) return 0;
  write_format(*format_of(argv[1]), request);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  return io::run_program([&] { return parse_and_export(argc, argv); });
}
