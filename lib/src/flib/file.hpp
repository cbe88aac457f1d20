// Parts of file names. Only "/" separates directories.
#pragma once

#include <string>
#include <string_view>

namespace flib {

// The part of `name` behind its last "/", without surrounding blanks, padded to the length of
// `name`.
std::string name_base(std::string_view name);

// name_base without its last extension: run/c2h4-dx01.log gives c2h4-dx01, a.b.c gives a.b.
std::string name_main(std::string_view name);

}  // namespace flib
