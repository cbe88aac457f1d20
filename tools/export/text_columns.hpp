// Numbers and symbols of the text formats.
#pragma once

#include <string>

#include "io/output_file.hpp"

namespace exporting {

// The shortest digits, 17 at most, that read back as the same number.
std::string shortest(double value);

// Writes the number with `decimals` digits behind the point, right-justified in `width` columns;
// one that is too wide for them takes what it needs, behind a blank. There is never an exponent.
void fixed_column(io::OutputFile& out, double value, int width, int decimals);

}  // namespace exporting
