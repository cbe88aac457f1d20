// A walk over one triangle of a square matrix that touches both triangles.
#pragma once

#include <algorithm>
#include <cstddef>

namespace flib {

// Calls visit(j, i) for every row j <= column i of an n x n matrix, indices from 0, tile by tile:
// the mirrored elements, which lie a column apart, then stay in the cache.
template <class Visit>
void for_each_in_upper_triangle(std::ptrdiff_t n, Visit visit) {
  constexpr std::ptrdiff_t tile = 32;
  for (std::ptrdiff_t i0 = 0; i0 < n; i0 += tile) {
    for (std::ptrdiff_t j0 = 0; j0 <= i0; j0 += tile) {
      for (std::ptrdiff_t i = i0; i < std::min(i0 + tile, n); ++i) {
        for (std::ptrdiff_t j = j0; j <= std::min(j0 + tile - 1, i); ++j) visit(j, i);
      }
    }
  }
}

}  // namespace flib
