// The command line of the companions.
#pragma once

#include <CLI/CLI.hpp>

namespace options {

// Parses the command line with the options that the program has added; --help and --version are
// added here. False when one of these two was asked for and has been printed: the program is done.
// A command line that cannot be understood is a fatal stop.
bool parse(CLI::App& app, int argc, const char* const* argv);

}  // namespace options
