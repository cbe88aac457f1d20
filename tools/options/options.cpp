#include "options.hpp"

#include <iostream>
#include <string>
#include <vector>

#include "io/fatal.hpp"

namespace options {

namespace {

// The arguments from the last to the first, as the parser wants them. It would take a name in
// brackets for a list of names.
std::vector<std::string> arguments_backwards(int argc, const char* const* argv) {
  std::vector<std::string> arguments;
  for (int i = argc - 1; i > 0; --i) {
    const std::string argument = argv[i];
    arguments.push_back(argument.starts_with('[') ? "./" + argument : argument);
  }
  return arguments;
}

}  // namespace

bool parse(CLI::App& app, int argc, const char* const* argv) {
  const std::string program = io::program_name;
  app.set_version_flag("--version", program + " " ZANDOR_VERSION);
  try {
    app.parse(arguments_backwards(argc, argv));
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

}  // namespace options
