// Output fields: numbers and text in a fixed number of columns, right-justified. A value too wide
// for its field shows as asterisks. Every function writes exactly `width` characters to `out` and
// returns the place behind them.
#pragma once

#include <string_view>

namespace io {

// The widest field of the fixed and scientific forms.
inline constexpr int widest_field = 64;

// Fixed point with `decimals` digits after the point and at least one before it. Rounded to nearest
// from the exact value, ties to even; a negative value that rounds to zero keeps its sign. NaN,
// Infinity or Inf as the width allows.
char* fixed_field(char* out, double value, int width, int decimals);

// One non-zero digit before the point, `decimals` digits after it, exponent E+dd; an exponent of
// three digits takes the place of the letter (1.000000-120). Zero keeps its sign.
char* sci_field(char* out, double value, int width, int decimals);

char* int_field(char* out, long long value, int width);

// How many values were too wide for their fields since the program began.
long long overfull_fields();

// Text longer than the field shows its first `width` characters.
char* text_field(char* out, std::string_view text, int width);

}  // namespace io
