// Numbers and symbols of the text formats.
#pragma once

#include <string>

namespace exporting {

// The number with `decimals` digits behind the point, right-justified in `width` columns; one that
// is too wide for them takes what it needs, behind a blank. There is never an exponent.
std::string fixed_column(double value, int width, int decimals);

// The number for a field with an exponent of two digits; 0 where it would need three, which would
// push the letter out of the field.
double with_short_exponent(double value);

// The symbol, right-justified in four columns.
std::string symbol_column(const std::string& symbol);

}  // namespace exporting
