// Included by what computes: results are compared digit for digit, and one reordered sum can turn
// the sign of a whole mode. A compiler that is told to take liberties is refused.
#pragma once

#include <cfloat>

#if defined(__FAST_MATH__) || (defined(__FINITE_MATH_ONLY__) && __FINITE_MATH_ONLY__)
#error "results change under -ffast-math, -Ofast and -ffinite-math-only: leave them out of CXXFLAGS"
#endif

#if FLT_EVAL_METHOD != 0
#error "results change in registers wider than a double: compile with -msse2 -mfpmath=sse"
#endif
