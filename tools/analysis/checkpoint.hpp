// Formatted checkpoint files: records of a name and a number or an array.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace analysis {

// Values by the name of their record.
using CheckpointArrays = std::map<std::string, std::vector<double>, std::less<>>;

// Fills the arrays whose names are keys, from the unit's next line to the end of its file; an array
// that the file does not hold stays as it is. `check_size` is called with the name and the number
// of values that the file tells, and stops where that is too large: r*value repeats, so that a
// short file can hold many. A number that is missing, malformed or not finite is a fatal stop.
void read_checkpoint(int fid, CheckpointArrays& arrays,
                     const std::function<void(const std::string& name, int size)>& check_size);

}  // namespace analysis
