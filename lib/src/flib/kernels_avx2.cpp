// The kernels for registers of 4 doubles.
#define KERNEL_LANES 4
#define KERNEL_NAME kernels_avx2
#define KERNEL_TITLE "AVX2"
#include "flib/kernel_loops.hpp"
