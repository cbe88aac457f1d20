// The inner loops of the eigensolver and the projector, for the vector registers that the processor
// has. Each element sees the same operations in the same order whatever the width: the results are
// the same bit for bit. Indices and rows count from 0 here; matrices are stored by columns.
#pragma once

#include <cstddef>

namespace flib {

// Sweeps of plane rotations that are applied together. rotation(b, i) = (c, s) stands at
// pairs + 2 * (b * stride + i); sweep b runs from i = last[b] - 1 down to first[b] and turns the
// columns i and i + 1.
struct Sweeps {
  const double* pairs;
  std::ptrdiff_t stride;
  const std::ptrdiff_t* first;
  const std::ptrdiff_t* last;
  int count;
};

struct Kernels {
  const char* name;

  // One pass of the Householder reduction over the upper triangle of the leading n x n block of z.
  // It subtracts u q^T + q u^T: z(k,j) = (z(k,j) - u(j) q(k)) - q(j) u(k), and gives product = A v
  // of the symmetric matrix that the triangle then stands for, each sum in the order of the index.
  void (*reduction_pass)(double* z, std::ptrdiff_t nm, std::ptrdiff_t n, const double* u,
                         const double* q, const double* v, double* product);

  // Takes the first `count` columns of z through the reflections of a batch: step b spans the rows
  // 0 to rows + b - 1, where column = column - w(b) (u(b)^T column). The vectors stand in columns
  // of `stride` elements, in the order in which they are needed: zeros, u(0), w(0), u(1), w(1) and
  // so on to w(steps - 1) and one more that does not count. Each w(b) has a zero behind it. `panel`
  // has reflection_columns doubles for each of rows + steps rows.
  void (*reflect_columns)(double* z, std::ptrdiff_t nm, std::ptrdiff_t count, std::ptrdiff_t rows,
                          const double* vectors, std::ptrdiff_t stride, std::ptrdiff_t steps,
                          double* panel);

  // Applies the rotations to every row of z (n x n). `panel` has rotation_rows doubles for each of
  // the n columns.
  void (*rotate_columns)(double* z, std::ptrdiff_t nm, std::ptrdiff_t n, const Sweeps& sweeps,
                         double* panel);

  // product = a b for n x n matrices with n rows, each element summed over the inner index in
  // increasing order from 0.0. `panel` has multiply_rows * n doubles.
  void (*multiply)(std::ptrdiff_t n, const double* a, const double* b, double* product,
                   double* panel);
};

// Sizes of the working storage, for the widest registers.
inline constexpr std::ptrdiff_t reflection_columns = 8;
inline constexpr std::ptrdiff_t rotation_rows = 32;
inline constexpr std::ptrdiff_t multiply_rows = 16;

// The kernels for the widest registers that this processor has.
const Kernels& best_kernels();

// All that this processor can run, from the narrowest to the widest; the list ends with a null.
const Kernels* const* usable_kernels();

}  // namespace flib
