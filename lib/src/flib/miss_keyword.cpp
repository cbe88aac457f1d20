#include "flib/miss_keyword.hpp"

#include <cstdlib>
#include <string>

#include "io/fatal.hpp"
#include "io/text.hpp"

namespace flib {

void miss_keyword(std::string_view word) {
  io::print_line("Can not find keyword " + std::string(io::trimmed(word)) + " stop!");
  std::exit(1);
}

}  // namespace flib
