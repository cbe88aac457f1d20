// The kernels for registers of 2 doubles.
#define KERNEL_LANES 2
#define KERNEL_NAME kernels_base
#define KERNEL_TITLE "128 bits"
#include "flib/kernel_loops.hpp"
