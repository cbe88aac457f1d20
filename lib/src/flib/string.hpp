// Small routines on blank-padded strings; none knows a locale.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace flib {

// `input` with the 26 capital letters A-Z turned into small ones; same length.
std::string strlowcase(std::string_view input);

// Removes every blank (code 32, not tabs) from `a`, in place; blanks fill up its end.
void del_space(std::span<char> a);

// True if the content of `a` is a run of the digits 0-9, at least one. Left-justifies `a` in place.
bool is_number(std::span<char> a);

// Removes occurrences of `sub` (its trailing blanks not counted) from `string`, ignoring letter
// case, in place; blanks fill up the end. Deliberate limits: of two occurrences back to back only
// the first goes, and characters behind an occurrence that ends fewer than the length of `sub`
// before the end of the content go with it.
void str_delete(std::span<char> string, std::string_view sub);

}  // namespace flib
