// The kernels for registers of 8 doubles.
#define KERNEL_LANES 8
#define KERNEL_NAME kernels_avx512
#define KERNEL_TITLE "AVX-512"
#include "flib/kernel_loops.hpp"
