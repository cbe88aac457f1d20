#include "flib/del_space.hpp"

#include <algorithm>

namespace flib {

void del_space(std::span<char> a) {
  const auto kept = std::remove(a.begin(), a.end(), ' ');
  std::fill(kept, a.end(), ' ');
}

}  // namespace flib
