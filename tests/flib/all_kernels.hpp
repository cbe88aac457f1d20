// The kernels that this processor can run; those for 8 doubles among them even where there are no
// registers that wide.
#pragma once

#include <vector>

#include "flib/kernels.hpp"

namespace flib {
extern const Kernels kernels_8_by_avx2;
}

namespace support {

inline std::vector<const flib::Kernels*> all_kernels() {
  std::vector<const flib::Kernels*> all;
  const flib::Kernels* const* kernels = flib::usable_kernels();
  while (*kernels != nullptr) all.push_back(*kernels++);
#ifdef KERNELS_8_BY_AVX2
  if (__builtin_cpu_supports("avx2")) all.push_back(&flib::kernels_8_by_avx2);
#endif
  return all;
}

}  // namespace support
