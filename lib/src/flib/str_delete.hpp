// Removal of a substring.
#pragma once

#include <span>
#include <string_view>

namespace flib {

// Removes occurrences of `sub` (its trailing blanks not counted) from `string`, ignoring letter
// case, in place; blanks fill up the end. Deliberate limits: of two occurrences back to back only
// the first goes, and characters behind an occurrence that ends fewer than the length of `sub`
// before the end of the content go with it.
void str_delete(std::span<char> string, std::string_view sub);

}  // namespace flib
