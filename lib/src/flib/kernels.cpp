#include "flib/kernels.hpp"

#include <array>

namespace flib {

extern const Kernels kernels_base;
#ifdef FLIB_WIDE_KERNELS
extern const Kernels kernels_avx2;
extern const Kernels kernels_avx512;
#endif

const Kernels* const* usable_kernels() {
  static const auto list = [] {
    std::array<const Kernels*, 4> kernels = {&kernels_base};
#ifdef FLIB_WIDE_KERNELS
    std::size_t count = 1;
    if (__builtin_cpu_supports("avx2")) kernels[count++] = &kernels_avx2;
    if (__builtin_cpu_supports("avx512f")) kernels[count] = &kernels_avx512;
#endif
    return kernels;
  }();
  return list.data();
}

const Kernels& best_kernels() {
  const Kernels* const* best = usable_kernels();
  while (best[1] != nullptr) ++best;
  return **best;
}

}  // namespace flib
