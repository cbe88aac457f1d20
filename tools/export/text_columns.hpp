// Numbers of the text formats.
#pragma once

#include <string>

#include "io/output_file.hpp"

namespace exporting {

// The number with `decimals` digits behind the point, right-justified in `width` columns; one that
// is too wide for them takes what it needs, behind a blank. There is never an exponent.
std::string fixed_column(double value, int width, int decimals);

// The fields of OutputFile of these names, for formats whose readers count columns: a number with
// more digits than its column has, or with an exponent of three digits, is a fatal stop. One below
// 1e-99 is written as 0.
io::OutputFile& write_fixed(io::OutputFile& out, double value, int width, int decimals);
io::OutputFile& write_sci(io::OutputFile& out, double value, int width, int decimals);

}  // namespace exporting
