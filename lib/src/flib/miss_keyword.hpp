// The stop for a keyword that a file must hold and does not.
#pragma once

#include <string_view>

namespace flib {

// Prints "Can not find keyword WORD stop!" on standard output (WORD without trailing blanks) and
// stops with exit status 1.
[[noreturn]] void miss_keyword(std::string_view word);

}  // namespace flib
