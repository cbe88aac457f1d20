// The formula of a molecule.
#pragma once

#include <string>
#include <vector>

#include "zandor/run_data.hpp"

namespace analysis {

// The symbols of the atoms as texts show them: printable, and X where there is none.
std::vector<std::string> symbols(const zandor::RunData& run);

// Element symbols and how many atoms they stand for by turns, carbon and hydrogen first, then by
// the alphabet: "C", "", "H", "2", "O", "". One atom is an empty text.
std::vector<std::string> formula_parts(const std::vector<std::string>& symbols);

}  // namespace analysis
