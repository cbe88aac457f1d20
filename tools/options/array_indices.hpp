// Jobs as the indices of an array of tasks.
#pragma once

#include <set>
#include <string>

#include "io/fatal.hpp"

namespace options {

// Prints "4,8,15" in one line: the places of the jobs in files.out, the reference 0. Nothing for no
// job.
inline void print_array_indices(const std::set<int>& jobs) {
  std::string text;
  for (const int job : jobs) text += (text.empty() ? "" : ",") + std::to_string(job);
  if (!text.empty()) io::print_line(text);
}

}  // namespace options
