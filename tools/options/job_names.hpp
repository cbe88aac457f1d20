// Jobs on standard output, by their names or as the indices of an array of tasks.
#pragma once

#include <CLI/CLI.hpp>
#include <set>
#include <string>

namespace options {

// Adds a flag that may have a value: `kind` is empty without it, "names" with it alone or with
// =names, "numbers" with =numbers.
CLI::Option* add_job_names(CLI::App& app, const std::string& name, std::string& kind,
                           const std::string& meaning);

// "4,8,15" in one line: the places of the jobs in files.out, the reference 0. Nothing for no job.
void print_array_indices(const std::set<int>& jobs);

}  // namespace options
