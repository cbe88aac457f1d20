// The outputs of zandor_ht: a table to read, JSON and CSV. All say molecule, conventions, and what
// was changed or chosen.
#pragma once

#include <string>
#include <vector>

#include "ht/results.hpp"

namespace ht {

// What every output is made of.
struct Report {
  const Request& request;
  const zandor::RunData& run;
  const analysis::PreparedDipoles& dipoles;
  const Results& results;
};

// The lines above the table and, behind "# ", above the CSV; of a spectrum those that tell of it
// instead of the columns.
std::vector<std::string> head_lines(const Report& report);

// Symbols and numbers of the atoms, carbon and hydrogen first, then by the alphabet: "CH2O".
std::string formula(const zandor::RunData& run);

// "7", or "7+8" of degenerate modes.
std::string shown_modes(const Line& line);

std::string table(const Report& report);
// With the spectrum among the rest, where one was asked for.
std::string json(const Report& report);
// The modes, or the spectrum alone where one was asked for.
std::string csv(const Report& report);

}  // namespace ht
