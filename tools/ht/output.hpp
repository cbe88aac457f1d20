// The outputs of zandor_ht: a table to read, JSON and CSV. All say molecule, conventions, and what
// was changed or chosen.
#pragma once

#include <string>
#include <vector>

#include "ht/results.hpp"

namespace ht {

// The lines above the table and, behind "# ", above the CSV.
std::vector<std::string> head_lines(const Request& request, const zandor::RunData& run,
                                    const analysis::PreparedDipoles& dipoles,
                                    const Results& results);

// Symbols and numbers of the atoms, carbon and hydrogen first, then by the alphabet: "CH2O".
std::string formula(const zandor::RunData& run);

// "7", or "7+8" of degenerate modes.
std::string shown_modes(const Line& line);

std::string table(const Request& request, const zandor::RunData& run,
                  const analysis::PreparedDipoles& dipoles, const Results& results);
std::string json(const Request& request, const zandor::RunData& run,
                 const analysis::PreparedDipoles& dipoles, const Results& results);
std::string csv(const Request& request, const zandor::RunData& run,
                const analysis::PreparedDipoles& dipoles, const Results& results);

}  // namespace ht
