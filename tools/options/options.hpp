// The command line of the companions.
#pragma once

#include <CLI/CLI.hpp>
#include <optional>
#include <string>
#include <vector>

namespace options {

// Parses the command line with the options that the program has added; --help and --version are
// added here. False when one of these two was asked for and has been printed: the program is done.
// A command line that cannot be understood is a fatal stop. From now on a closed pipe ends the
// program (io::end_at_closed_pipes).
bool parse(CLI::App& app, int argc, const char* const* argv);

// What the programs that analyse a job directory are told about it, as the user writes it.
struct JobOptions {
  std::string control_file;
  std::vector<std::string> masses, isotopes;
  std::optional<std::string> characters;
  bool settle_signs = false;
};

// Adds CONTROLFILE, --mass and --isotope.
void add_directory_options(CLI::App& app, JobOptions& job);

// Adds CONTROLFILE, --mass, --isotope, --characters and --settle-signs.
void add_job_options(CLI::App& app, JobOptions& job);

// Adds a flag that prints jobs, by their names or by their numbers, and may have a value: `kind` is
// empty without it, "names" with it alone or with =names, "numbers" with =numbers.
CLI::Option* add_job_names(CLI::App& app, const std::string& name, std::string& kind,
                           const std::string& meaning);

}  // namespace options
