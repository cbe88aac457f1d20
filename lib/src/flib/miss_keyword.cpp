#include "flib/miss_keyword.hpp"

#include <string>

#include "io/fatal.hpp"
#include "io/text.hpp"

namespace flib {

void miss_keyword(std::string_view word) {
  io::print_line("Can not find keyword " + std::string(io::trimmed(word)) + " stop!");
  io::silent_stop(1);
}

}  // namespace flib
