// Dot product.
#pragma once

namespace flib {

// The dot product of v1 and v2 (n values each), summed in index order from 0.0.
double sprod(const int& n, const double* v1, const double* v2);

}  // namespace flib
