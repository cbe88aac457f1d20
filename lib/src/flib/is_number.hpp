// Test for an unsigned decimal integer.
#pragma once

#include <span>

namespace flib {

// True if the content of `a` is a run of the digits 0-9, at least one. Left-justifies `a` in place.
bool is_number(std::span<char> a);

}  // namespace flib
