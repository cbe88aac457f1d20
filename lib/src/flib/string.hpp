// Letter case of blank-padded strings.
#pragma once

#include <string>
#include <string_view>

namespace flib {

// `input` with the 26 capital letters A-Z turned into small ones; same length, no locale.
std::string strlowcase(std::string_view input);

}  // namespace flib
