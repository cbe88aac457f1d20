// What zandor_collect says in the end.
#pragma once

#include <string>

#include "collect/collect.hpp"

namespace collect {

// Names of the jobs that were not taken, one a line.
std::string list_text(const Collection& all);

// A few lines: jobs taken, missing, bad; energies; signs and axes turned.
std::string summary_text(const Collection& all);

// The same and every job, as one JSON document.
std::string json_text(const Collection& all);

// The jobs whose output gives forces with less than eight decimals.
std::vector<int> jobs_with_few_decimals(const Collection& all);

// The jobs whose sign file holds something else than the output would give, but is newer.
std::vector<int> jobs_with_other_files(const Collection& all);

// Whether every computed job has its sign file, with a sign that is settled.
bool is_complete(const Collection& all);

}  // namespace collect
