// The kernels for registers of 8 doubles, each made of two of 4.
#define KERNEL_LANES 8
#define KERNEL_NAME kernels_8_by_avx2
#define KERNEL_TITLE "8 doubles by AVX2"
#include "flib/kernel_loops.hpp"
