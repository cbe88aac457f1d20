// An option that prints jobs, by their names or by their numbers.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace options {

// Adds a flag that may have a value: `kind` is empty without it, "names" with it alone or with
// =names, "numbers" with =numbers.
CLI::Option* add_job_names(CLI::App& app, const std::string& name, std::string& kind,
                           const std::string& meaning);

}  // namespace options
