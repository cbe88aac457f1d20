// Where the output of a job lies.
#pragma once

#include <string>
#include <vector>

#include "collect/readers/readers.hpp"

namespace collect {

inline constexpr const char* usual_suffixes[] = {".log", ".out", ".fchk", ".json"};

struct FoundOutput {
  std::string file;                // empty: none
  const Reader* reader = nullptr;  // null: of no known kind
};

// Of the files coord-NAME with one of these suffixes, and the only such file in the folder
// coord-NAME, the newest of a known kind; if there is none of a known kind, the newest. A .log that
// was written for the run (log_text) is no output.
FoundOutput find_output(const std::string& job_name, const std::vector<std::string>& suffixes);

// What stands in coord-REF.log where the program's output has another name.
std::string log_text(const std::string& source, const std::string& program);

}  // namespace collect
