// Removal of blanks.
#pragma once

#include <span>

namespace flib {

// Removes every blank (code 32, not tabs) from `a`, in place; blanks fill up its end.
void del_space(std::span<char> a);

}  // namespace flib
