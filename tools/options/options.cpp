#include "options/options.hpp"

#include <algorithm>
#include <iostream>

#include "io/process.hpp"

namespace options {

namespace {

// Whether a name in brackets would be taken for a list of names.
bool takes_lists(const CLI::App& app) {
  return std::ranges::any_of(app.get_options(), [](const CLI::Option* option) {
    return option->get_positional() && option->get_allow_extra_args();
  });
}

// The arguments from the last to the first, as the parser wants them.
std::vector<std::string> arguments_backwards(const CLI::App& app, int argc,
                                             const char* const* argv) {
  std::vector<std::string> arguments(std::make_reverse_iterator(argv + argc),
                                     std::make_reverse_iterator(argv + std::min(argc, 1)));
  for (std::string& argument : arguments) {
    if (argument.starts_with('[') && takes_lists(app)) argument.insert(0, "./");
  }
  return arguments;
}

}  // namespace

bool parse(CLI::App& app, int argc, const char* const* argv) {
  const std::string program = io::program_name;
  io::end_at_closed_pipes();
  app.set_version_flag("--version", program + " " ZANDOR_VERSION);
  try {
    app.parse(arguments_backwards(app, argc, argv));
    return true;
  } catch (const CLI::ParseError& error) {
    // The parser has no other way to say that it printed the help, or that it did not understand.
    if (error.get_exit_code() != 0) {
      io::fatal_stop(std::string(error.what()) + " (see " + program + " --help)");
    }
    app.exit(error);
  }
  if (!std::cout.flush()) io::fatal_stop({"standard output"}, "cannot write");
  return false;
}

void add_directory_options(CLI::App& app, JobOptions& job) {
  app.add_option("CONTROLFILE", job.control_file, "control file of the job directory")->required();
  app.add_option("--mass", job.masses,
                 "another mass (amu) of one atom, as 3=2.014101778; overrides --isotope")
      ->allow_extra_args(false)
      ->type_name("ATOM=MASS");
  app.add_option("--isotope", job.isotopes,
                 "another mass (amu) of all atoms of an element, as H=2.014101778")
      ->allow_extra_args(false)
      ->type_name("SYMBOL=MASS");
}

void add_job_options(CLI::App& app, JobOptions& job) {
  add_directory_options(app, job);
  app.add_option_function<std::string>(
         "--characters", [&job](const std::string& signs) { job.characters = signs; },
         "characters of the operations other than the identity, for the dipoles of derived "
         "jobs: --characters=+,-,- (default: found from the dipoles)")
      ->type_name("SIGNS");
  app.add_flag("--settle-signs", job.settle_signs,
               "turn back the signs of transition dipoles that have turned");
}

CLI::Option* add_job_names(CLI::App& app, const std::string& name, std::string& kind,
                           const std::string& meaning) {
  const auto settle = [name](std::string& value) {
    if (value == "true") value = "names";  // as the parser has it where no value is given
    if (value == "names" || value == "numbers") return std::string();
    return "expected " + name + " alone or " + name + "=numbers, found " + io::quoted(value);
  };
  return app.add_flag(name, kind, meaning)->transform(CLI::Validator(settle, ""));
}

}  // namespace options
