// zandor_displace: makes a job directory from a molecule and a template of a program's input, with
// the fewest jobs that its symmetry leaves; and tells which jobs of a directory are still to be
// run.
#include <cmath>
#include <filesystem>

#include "analysis/isotopes.hpp"
#include "analysis/job_directory.hpp"
#include "displace/folder.hpp"
#include "displace/missing.hpp"
#include "displace/output.hpp"
#include "flib/units_of_measure.hpp"
#include "io/process.hpp"
#include "io/values.hpp"
#include "options/array_indices.hpp"
#include "options/options.hpp"

const char* const io::program_name = "zandor_displace";

namespace {

using namespace displace;

struct Options {
  std::string geometry, input, folder, name, missing, axes = "fewest";
  double step = 0.005;
  double tolerance = 1e-3;
  int charge = 0, multiplicity = 1;
  bool has_charge = false, has_multiplicity = false;
  std::vector<std::string> isotopes, masses;
  bool no_symmetry = false, force = false, as_list = false, as_json = false;
};

// A number above 0 and up to a limit.
CLI::Validator up_to(double limit) {
  const auto complaint = [limit](const std::string& text) {
    double value = 0.0;
    const bool is_good = io::parse_real(text, value) && value > 0.0 && value <= limit;
    return is_good ? std::string()
                   : "expected a number above 0, at most " + io::shown(limit) + ", found " +
                         io::quoted(text);
  };
  return {complaint, "UP TO " + io::shown(limit)};
}

void add_options(CLI::App& app, Options& options) {
  app.footer(
      "Degenerate electronic states break the symmetry of the forces: use --no-symmetry for them.\n"
      "Exit status: 0 done, 2 could not.");
  app.add_option("GEOMETRY", options.geometry,
                 "the molecule: .xyz, or an input .com or .gjf; with --missing the control file "
                 "(default: control.inp)");
  app.add_option("TEMPLATE", options.input, "an input with {{name}} and {{geometry}} to fill");
  app.add_option("-o,--output", options.folder, "the job directory to make")->type_name("FOLDER");
  app.add_flag("--force", options.force,
               "write again into a folder that it wrote; results that are there are kept");
  app.add_option("--step", options.step, "displacement (Angstrom)")
      ->check(up_to(1.0))
      ->capture_default_str();
  app.add_option("--name", options.name, "head of the names of the jobs (default: GEOMETRY's)");
  app.add_option("--charge", options.charge, "charge (default: GEOMETRY's, or 0)");
  app.add_option("--multiplicity", options.multiplicity, "multiplicity (default: GEOMETRY's, or 1)")
      ->check(CLI::PositiveNumber);
  app.add_option("--mass", options.masses,
                 "another mass (amu) of one atom, as 3=2.014101778, for the axes of inertia")
      ->allow_extra_args(false)
      ->type_name("ATOM=MASS");
  app.add_option("--isotope", options.isotopes, "another mass (amu) of all atoms of an element")
      ->allow_extra_args(false)
      ->type_name("SYMBOL=MASS");
  app.add_option("--axes", options.axes, "how the molecule is turned before it is displaced")
      ->check(CLI::IsMember({"fewest", "principal", "keep"}))
      ->capture_default_str();
  app.add_flag("--no-symmetry", options.no_symmetry, "derive no jobs");
  app.add_option("--tolerance", options.tolerance,
                 "how far atoms may be from symmetric places (Angstrom)")
      ->check(up_to(0.1))
      ->capture_default_str();
  auto* const list = app.add_flag("--list", options.as_list, "print only the names of the jobs");
  app.add_flag("--json", options.as_json, "print one JSON document")->excludes(list);
  ::options::add_job_names(app, "--missing", options.missing,
                           "in a job directory: the names of the jobs without a sign file; "
                           "--missing=numbers: their numbers");
}

// The head of the names of the jobs.
std::string checked_name(std::string name, int natom) {
  const auto fits = [](char c) {
    return io::is_digit(c) || (io::lowered(c) >= 'a' && io::lowered(c) <= 'z') || c == '.' ||
           c == '_' || c == '+' || c == '-';
  };
  // "coord-" before it, "-", number, sign, axis and ".sgn" behind it.
  const std::size_t most =
      io::line_capacity - 13 - std::max<std::size_t>(2, std::to_string(natom).size());
  if (!name.empty() && name.size() <= most && std::all_of(name.begin(), name.end(), fits)) {
    return name;
  }
  io::fatal_stop("expected a name of at most " + std::to_string(most) +
                 " letters, digits and . _ + - (see --name), found " + io::quoted(name));
}

Eigen::VectorXd masses_of(const Molecule& molecule, const Options& options) {
  zandor::RunData run;
  run.natom = static_cast<int>(molecule.x.cols());
  run.mass = {"mass", {run.natom}};
  run.sqtmass = {"sqtmass", {3 * run.natom}};
  for (int a = 1; a <= run.natom; ++a) {
    const int number = molecule.numbers[static_cast<std::size_t>(a - 1)];
    run.symbol.emplace_back(molecule.symbols[static_cast<std::size_t>(a - 1)]);
    const double usual = analysis::usual_mass(number);
    // Only the axes rest on it: of heavy elements without a usual isotope, about what they weigh.
    run.mass(a) = usual > 0.0 ? usual : 2.5 * number;
    run.mass(a) *= flib::electron_masses_per_amu;
  }
  analysis::change_masses(analysis::parse_mass_changes(options.isotopes, options.masses), run);
  return Eigen::Map<const Eigen::VectorXd>(run.mass.data(), run.natom) /
         flib::electron_masses_per_amu;
}

void check_multiplicity(const Molecule& molecule) {
  int electrons = -molecule.charge;
  for (const int number : molecule.numbers) electrons += number;
  const int unpaired = molecule.multiplicity - 1;
  if (unpaired >= 0 && unpaired <= electrons && (electrons - unpaired) % 2 == 0) return;
  io::fatal_stop("expected a multiplicity that " + std::to_string(electrons) +
                 " electrons can have (see --multiplicity), found " +
                 std::to_string(molecule.multiplicity));
}

int make_directory(const Options& options) {
  if (options.geometry.empty() || options.input.empty() || options.folder.empty()) {
    io::fatal_stop("expected GEOMETRY, TEMPLATE and -o FOLDER (see zandor_displace --help)");
  }
  Molecule molecule = read_geometry(options.geometry);
  if (options.has_charge) molecule.charge = options.charge;
  if (options.has_multiplicity) molecule.multiplicity = options.multiplicity;
  const Template input = read_template(options.input);
  if (input.asks_multiplicity) check_multiplicity(molecule);
  const std::string name = checked_name(
      options.name.empty() ? std::filesystem::path(options.geometry).stem().string() : options.name,
      static_cast<int>(molecule.x.cols()));
  Request request{.axes = options.axes == "keep"        ? Axes::keep
                          : options.axes == "principal" ? Axes::principal
                                                        : Axes::fewest,
                  .symmetry = !options.no_symmetry,
                  .tolerance = options.tolerance,
                  .masses = masses_of(molecule, options)};
  const Plan plan = make_plan(molecule, orient(molecule, request), name, options.step);
  write_folder(options.folder, contents_of(plan, input), options.force);
  if (options.as_json) {
    print_json(plan);
    return 0;
  }
  if (!options.as_list) io::print_line(summary_of(plan));
  for (const int i : jobs_to_run(plan.run)) io::print_line(plan.names[static_cast<std::size_t>(i)]);
  return 0;
}

int print_missing(const Options& options) {
  if (!options.input.empty() || !options.folder.empty()) {
    io::fatal_stop("expected the control file alone with --missing (see zandor_displace --help)");
  }
  zandor::RunData run;
  const std::vector<int> missing =
      missing_jobs(options.geometry.empty() ? "control.inp" : options.geometry, run);
  if (options.missing == "numbers") {
    ::options::print_array_indices({missing.begin(), missing.end()});
    return 0;
  }
  for (const int i : missing) {
    const std::string_view name = run.jobs[static_cast<std::size_t>(i)].sgn_name.content();
    io::print_line(name.substr(6, name.size() - 10));  // without coord- and .sgn
  }
  return 0;
}

int run(int argc, char** argv) {
  CLI::App app("Makes a job directory from a molecule and a template of a program's input.",
               io::program_name);
  Options options;
  add_options(app, options);
  if (!::options::parse(app, argc, argv)) return 0;
  options.has_charge = app.count("--charge") > 0;
  options.has_multiplicity = app.count("--multiplicity") > 0;
  return options.missing.empty() ? make_directory(options) : print_missing(options);
}

}  // namespace

int main(int argc, char** argv) {
  return io::run_program([&] { return run(argc, argv); });
}
