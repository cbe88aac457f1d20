#include "flib/kernels.hpp"

namespace flib {

extern const Kernels kernels_base;
#ifdef FLIB_WIDE_KERNELS
extern const Kernels kernels_avx2;
extern const Kernels kernels_avx512;
#endif

namespace {

struct Usable {
  const Kernels* list[4] = {&kernels_base, nullptr, nullptr, nullptr};
  int count = 1;

  Usable() {
#ifdef FLIB_WIDE_KERNELS
    if (__builtin_cpu_supports("avx2")) list[count++] = &kernels_avx2;
    if (__builtin_cpu_supports("avx512f")) list[count++] = &kernels_avx512;
#endif
  }
};

const Usable& usable() {
  static const Usable kernels;
  return kernels;
}

}  // namespace

const Kernels& best_kernels() { return *usable().list[usable().count - 1]; }

const Kernels* const* usable_kernels() { return usable().list; }

}  // namespace flib
