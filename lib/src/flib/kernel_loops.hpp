// The loops behind kernels.hpp. Included by one source file per register width, which defines
// KERNEL_LANES (doubles in a register), KERNEL_NAME and KERNEL_TITLE. Nothing but <cstddef> is
// included: an inline function of a header, compiled here for wide registers, could be linked into
// the whole program.

#include "flib/kernels.hpp"

namespace flib {

namespace {

using Index = std::ptrdiff_t;

constexpr Index lanes = KERNEL_LANES;
constexpr int width = KERNEL_LANES * sizeof(double);

typedef double Register __attribute__((vector_size(width)));
typedef double Unaligned __attribute__((vector_size(width), aligned(8), may_alias));

#define KERNEL_INLINE inline __attribute__((always_inline))

KERNEL_INLINE Register load(const double* from) {
  return *reinterpret_cast<const Unaligned*>(from);
}
KERNEL_INLINE void store(double* to, const Register& value) {
  *reinterpret_cast<Unaligned*>(to) = value;
}

// ---- reduction_pass ----------------------------------------------------------------------------

// Columns that are taken through a pass together.
constexpr Index block = lanes == 2 ? 4 : 8;

// Turns lanes x lanes numbers: element k of column c becomes element c of row k.
KERNEL_INLINE void transpose(Register (&a)[lanes]) {
#if KERNEL_LANES == 2
  const Register t = __builtin_shufflevector(a[0], a[1], 0, 2);
  a[1] = __builtin_shufflevector(a[0], a[1], 1, 3);
  a[0] = t;
#elif KERNEL_LANES == 4
  Register t[4];
  for (int c = 0; c < 4; c += 2) {
    t[c] = __builtin_shufflevector(a[c], a[c + 1], 0, 4, 2, 6);
    t[c + 1] = __builtin_shufflevector(a[c], a[c + 1], 1, 5, 3, 7);
  }
  for (int c = 0; c < 2; ++c) {
    a[c] = __builtin_shufflevector(t[c], t[c + 2], 0, 1, 4, 5);
    a[c + 2] = __builtin_shufflevector(t[c], t[c + 2], 2, 3, 6, 7);
  }
#else
  Register s[8], t[8];
  for (int c = 0; c < 8; c += 2) {
    t[c] = __builtin_shufflevector(a[c], a[c + 1], 0, 8, 2, 10, 4, 12, 6, 14);
    t[c + 1] = __builtin_shufflevector(a[c], a[c + 1], 1, 9, 3, 11, 5, 13, 7, 15);
  }
  for (int c = 0; c < 8; c += 4) {
    for (int p = 0; p < 2; ++p) {
      s[c + p] = __builtin_shufflevector(t[c + p], t[c + p + 2], 0, 1, 8, 9, 4, 5, 12, 13);
      s[c + p + 2] = __builtin_shufflevector(t[c + p], t[c + p + 2], 2, 3, 10, 11, 6, 7, 14, 15);
    }
  }
  for (int c = 0; c < 4; ++c) {
    a[c] = __builtin_shufflevector(s[c], s[c + 4], 0, 1, 2, 3, 8, 9, 10, 11);
    a[c + 4] = __builtin_shufflevector(s[c], s[c + 4], 4, 5, 6, 7, 12, 13, 14, 15);
  }
#endif
}

// The rows [from, to] of column j, element by element; `sum` goes on as the product's element j.
template <bool update, bool multiply>
KERNEL_INLINE double pass_elements(double* column, Index j, Index from, const double* u,
                                   const double* q, const double* v, double* product, double sum) {
  for (Index k = from; k <= j; ++k) {
    if constexpr (update) column[k] = (column[k] - u[j] * q[k]) - q[j] * u[k];
    if constexpr (multiply) {
      sum += column[k] * v[k];
      if (k < j) product[k] += column[k] * v[j];
    }
  }
  return sum;
}

// The rows above a block of columns: lanes rows of all its columns at a time.
template <bool update, bool multiply>
KERNEL_INLINE void pass_rows_above(double* z, Index nm, Index j0, const double* u, const double* q,
                                   const double* v, double* product, double (&sums)[block]) {
  constexpr Index groups = block / lanes;
  Register sum[groups] = {};
  for (Index k = 0; k < j0; k += lanes) {
    Register a[groups][lanes];
    Register qk = {}, uk = {}, pk = {};
    if constexpr (update) {
      qk = load(q + k);
      uk = load(u + k);
    }
    if constexpr (multiply) pk = load(product + k);
    for (int c = 0; c < block; ++c) {
      double* const at = z + (j0 + c) * nm + k;
      Register x = load(at);
      if constexpr (update) {
        x = (x - u[j0 + c] * qk) - q[j0 + c] * uk;
        store(at, x);
      }
      if constexpr (multiply) pk += x * v[j0 + c];
      a[c / lanes][c % lanes] = x;
    }
    if constexpr (multiply) {
      store(product + k, pk);
      for (int g = 0; g < groups; ++g) {
        transpose(a[g]);
        for (int r = 0; r < lanes; ++r) sum[g] += a[g][r] * v[k + r];
      }
    }
  }
  for (int c = 0; c < block; ++c) sums[c] = sum[c / lanes][c % lanes];
}

template <bool update, bool multiply>
void pass(double* z, Index nm, Index n, const double* u, const double* q, const double* v,
          double* product) {
  Index j = 0;
  for (; j + block <= n; j += block) {
    double sums[block];
    pass_rows_above<update, multiply>(z, nm, j, u, q, v, product, sums);
    for (int c = 0; c < block; ++c) {
      const double sum =
          pass_elements<update, multiply>(z + (j + c) * nm, j + c, j, u, q, v, product, sums[c]);
      if constexpr (multiply) product[j + c] = sum;
    }
  }
  for (; j < n; ++j) {
    const double sum = pass_elements<update, multiply>(z + j * nm, j, 0, u, q, v, product, 0.0);
    if constexpr (multiply) product[j] = sum;
  }
}

void reduction_pass(double* z, Index nm, Index n, const double* u, const double* q, const double* v,
                    double* product) {
  if (u != nullptr && v != nullptr) {
    pass<true, true>(z, nm, n, u, q, v, product);
  } else if (u != nullptr) {
    pass<true, false>(z, nm, n, u, q, v, product);
  } else if (v != nullptr) {
    pass<false, true>(z, nm, n, u, q, v, product);
  }
}

// ---- reflect_columns ---------------------------------------------------------------------------

// Registers that hold one row of a panel.
constexpr Index panel_columns = reflection_columns;
constexpr Index panel_registers = panel_columns / lanes;

// Turns lanes rows of lanes columns of z, which lie nm apart, into lanes rows of the panel.
KERNEL_INLINE void pack_square(const double* z, Index nm, double* panel) {
  Register a[lanes];
  for (int c = 0; c < lanes; ++c) a[c] = load(z + c * nm);
  transpose(a);
  for (int k = 0; k < lanes; ++k) store(panel + k * panel_columns, a[k]);
}

KERNEL_INLINE void unpack_square(double* z, Index nm, const double* panel) {
  Register a[lanes];
  for (int k = 0; k < lanes; ++k) a[k] = load(panel + k * panel_columns);
  transpose(a);
  for (int c = 0; c < lanes; ++c) store(z + c * nm, a[c]);
}

void pack_columns(const double* z, Index nm, Index count, Index rows, double* panel) {
  const Index squares = count == panel_columns ? rows - rows % lanes : 0;
  for (Index c = 0; c < panel_columns; c += lanes) {
    for (Index k = 0; k < squares; k += lanes) {
      pack_square(z + c * nm + k, nm, panel + k * panel_columns + c);
    }
  }
  for (Index k = squares; k < rows; ++k) {
    for (Index c = 0; c < panel_columns; ++c) {
      panel[k * panel_columns + c] = c < count ? z[c * nm + k] : 0.0;
    }
  }
}

void unpack_columns(double* z, Index nm, Index count, Index rows, const double* panel) {
  const Index squares = count == panel_columns ? rows - rows % lanes : 0;
  for (Index c = 0; c < panel_columns; c += lanes) {
    for (Index k = 0; k < squares; k += lanes) {
      unpack_square(z + c * nm + k, nm, panel + k * panel_columns + c);
    }
  }
  for (Index k = squares; k < rows; ++k) {
    for (Index c = 0; c < count; ++c) z[c * nm + k] = panel[k * panel_columns + c];
  }
}

// Finishes a reflection (with w: its products are in g) and begins the next (with u: g becomes its
// products), in one pass; the next one has one row more.
template <bool update, bool multiply>
KERNEL_INLINE void reflect_pass(double* panel, Index rows, const double* w, const double* u,
                                Register (&g)[panel_registers]) {
  Register sum[panel_registers] = {};
  for (Index k = 0; k < rows; ++k) {
    for (int r = 0; r < panel_registers; ++r) {
      double* const at = panel + k * panel_columns + r * lanes;
      Register x = load(at);
      if constexpr (update) {
        x -= g[r] * w[k];
        store(at, x);
      }
      if constexpr (multiply) sum[r] += x * u[k];
    }
  }
  if constexpr (multiply) {
    for (int r = 0; r < panel_registers; ++r) {
      g[r] = sum[r] + load(panel + rows * panel_columns + r * lanes) * u[rows];
    }
  }
}

void reflect_panel(double* panel, Index rows, const double* const* u, const double* const* w,
                   int steps) {
  Register g[panel_registers] = {};
  for (int b = 0; b <= steps; ++b) {
    // Reflection b - 1 spans rows + b - 1 rows.
    const bool finishes = b > 0 && u[b - 1] != nullptr;
    const bool begins = b < steps && u[b] != nullptr;
    const Index spanned = rows + b - 1;
    if (finishes && begins) {
      reflect_pass<true, true>(panel, spanned, w[b - 1], u[b], g);
    } else if (finishes) {
      reflect_pass<true, false>(panel, spanned, w[b - 1], nullptr, g);
    } else if (begins) {
      reflect_pass<false, true>(panel, spanned, nullptr, u[b], g);
    }
  }
}

void reflect_columns(double* z, Index nm, Index count, Index rows, const double* const* u,
                     const double* const* w, int steps, double* panel) {
  for (Index j = 0; j < count; j += panel_columns) {
    const Index columns = count - j < panel_columns ? count - j : panel_columns;
    pack_columns(z + j * nm, nm, columns, rows + steps - 1, panel);
    reflect_panel(panel, rows, u, w, steps);
    unpack_columns(z + j * nm, nm, columns, rows + steps - 1, panel);
  }
}

// ---- rotate_columns ----------------------------------------------------------------------------

// Rows of a panel: the same element of all of them fills `row_registers` registers.
constexpr Index panel_rows = lanes == 2 ? 4 : 2 * lanes;
constexpr Index row_registers = panel_rows / lanes;
// Neighbouring sweeps that go through a panel together, each one column behind the one before.
constexpr Index wave = lanes == 8 ? 8 : 4;

struct Column {
  Register part[row_registers];
};

KERNEL_INLINE Column load_column(const double* panel, Index i) {
  Column column;
  for (int r = 0; r < row_registers; ++r) {
    column.part[r] = load(panel + i * panel_rows + r * lanes);
  }
  return column;
}

KERNEL_INLINE void store_column(double* panel, Index i, const Column& column) {
  for (int r = 0; r < row_registers; ++r) {
    store(panel + i * panel_rows + r * lanes, column.part[r]);
  }
}

// Turns the columns i (left) and i + 1 (right).
KERNEL_INLINE void rotate(const double* pair, Column& left, Column& right) {
  const double c = pair[0];
  const double s = pair[1];
  for (int r = 0; r < row_registers; ++r) {
    const Register h = right.part[r];
    right.part[r] = s * left.part[r] + c * h;
    left.part[r] = c * left.part[r] - s * h;
  }
}

// The rotations [to, from] of one sweep, downwards.
KERNEL_INLINE void rotate_alone(double* panel, const double* pairs, Index from, Index to) {
  if (from < to) return;
  Column carried = load_column(panel, from + 1);
  for (Index i = from; i >= to; --i) {
    Column left = load_column(panel, i);
    rotate(pairs + 2 * i, left, carried);
    store_column(panel, i + 1, carried);
    carried = left;
  }
  store_column(panel, to, carried);
}

// `wave` sweeps together: at step t, sweep b of them turns the columns t + b and t + b + 1, which
// the sweep before has just left.
KERNEL_INLINE void rotate_wave(double* panel, const Sweeps& sweeps, int b0) {
  const double* pairs[wave];
  Index top = sweeps.last[b0] - 1;
  Index bottom = sweeps.first[b0];
  for (int b = 0; b < wave; ++b) {
    pairs[b] = sweeps.pairs + 2 * sweeps.stride * (b0 + b);
    if (sweeps.last[b0 + b] - 1 - b < top) top = sweeps.last[b0 + b] - 1 - b;
    if (sweeps.first[b0 + b] - b > bottom) bottom = sweeps.first[b0 + b] - b;
  }
  if (top < bottom) top = bottom - 1;  // no step at which all of them turn something
  for (int b = 0; b < wave; ++b) {
    rotate_alone(panel, pairs[b], sweeps.last[b0 + b] - 1, top + b + 1);
  }
  if (top >= bottom) {
    Column carried[wave];
    for (int b = 0; b < wave; ++b) carried[b] = load_column(panel, top + b + 1);
    for (Index t = top; t >= bottom; --t) {
      Column moving = load_column(panel, t);
      for (int b = 0; b < wave; ++b) {
        rotate(pairs[b] + 2 * (t + b), moving, carried[b]);
        const Column left = moving;
        moving = carried[b];
        carried[b] = left;
      }
      store_column(panel, t + wave, moving);
    }
    for (int b = 0; b < wave; ++b) store_column(panel, bottom + b, carried[b]);
  }
  for (int b = 0; b < wave; ++b) {
    const Index last = sweeps.last[b0 + b] - 1;
    const Index from = bottom + b - 1 < last ? bottom + b - 1 : last;
    rotate_alone(panel, pairs[b], from, sweeps.first[b0 + b]);
  }
}

// Rows row..row+rows-1 of the columns first..last, into panels of panel_rows rows.
void pack_rows(const double* z, Index nm, Index n, Index first, Index last, Index row, Index rows,
               double* panels) {
  for (Index i = first; i <= last; ++i) {
    const double* const column = z + i * nm + row;
    double* const to = panels + i * panel_rows;
    if (rows == rotation_rows) {
      for (Index k = 0; k < rotation_rows; k += panel_rows) {
        for (int r = 0; r < panel_rows; r += lanes) store(to + k * n + r, load(column + k + r));
      }
    } else {
      for (Index k = 0; k < rotation_rows; ++k) {
        to[k / panel_rows * panel_rows * n + k % panel_rows] = k < rows ? column[k] : 0.0;
      }
    }
  }
}

// The way back.
void unpack_rows(double* z, Index nm, Index n, Index first, Index last, Index row, Index rows,
                 const double* panels) {
  for (Index i = first; i <= last; ++i) {
    double* const column = z + i * nm + row;
    const double* const from = panels + i * panel_rows;
    if (rows == rotation_rows) {
      for (Index k = 0; k < rotation_rows; k += panel_rows) {
        for (int r = 0; r < panel_rows; r += lanes) store(column + k + r, load(from + k * n + r));
      }
    } else {
      for (Index k = 0; k < rows; ++k) {
        column[k] = from[k / panel_rows * panel_rows * n + k % panel_rows];
      }
    }
  }
}

void rotate_panel(double* panel, const Sweeps& sweeps) {
  int b = 0;
  for (; b + wave <= sweeps.count; b += wave) rotate_wave(panel, sweeps, b);
  for (; b < sweeps.count; ++b) {
    rotate_alone(panel, sweeps.pairs + 2 * sweeps.stride * b, sweeps.last[b] - 1, sweeps.first[b]);
  }
}

void rotate_columns(double* z, Index nm, Index n, const Sweeps& sweeps, double* panels) {
  Index first = n;
  Index last = 0;
  for (int b = 0; b < sweeps.count; ++b) {
    if (sweeps.first[b] < first) first = sweeps.first[b];
    if (sweeps.last[b] > last) last = sweeps.last[b];
  }
  for (Index row = 0; row < n; row += rotation_rows) {
    const Index rows = n - row < rotation_rows ? n - row : rotation_rows;
    pack_rows(z, nm, n, first, last, row, rows, panels);
    for (Index k = 0; k < rows; k += panel_rows) rotate_panel(panels + k * n, sweeps);
    unpack_rows(z, nm, n, first, last, row, rows, panels);
  }
}

// ---- multiply ----------------------------------------------------------------------------------

// A tile of the product stays in registers while the inner index runs.
constexpr Index tile_registers = 2;
constexpr Index tile_rows = tile_registers * lanes;
constexpr Index tile_columns = 4;

template <Index columns>
KERNEL_INLINE void multiply_tile(Index n, const double* panel, const double* b, double* product,
                                 Index rows) {
  Register sum[columns][tile_registers] = {};
  for (Index k = 0; k < n; ++k) {
    for (int c = 0; c < columns; ++c) {
      for (int r = 0; r < tile_registers; ++r) {
        sum[c][r] += load(panel + k * tile_rows + r * lanes) * b[c * n + k];
      }
    }
  }
  for (int c = 0; c < columns; ++c) {
    for (Index i = 0; i < rows; ++i) product[c * n + i] = sum[c][i / lanes][i % lanes];
  }
}

void multiply(Index n, const double* a, const double* b, double* product, double* panel) {
  for (Index row = 0; row < n; row += tile_rows) {
    const Index rows = n - row < tile_rows ? n - row : tile_rows;
    for (Index k = 0; k < n; ++k) {
      for (Index i = 0; i < tile_rows; ++i) {
        panel[k * tile_rows + i] = i < rows ? a[k * n + row + i] : 0.0;
      }
    }
    Index j = 0;
    for (; j + tile_columns <= n; j += tile_columns) {
      multiply_tile<tile_columns>(n, panel, b + j * n, product + j * n + row, rows);
    }
    for (; j < n; ++j) multiply_tile<1>(n, panel, b + j * n, product + j * n + row, rows);
  }
}

}  // namespace

extern const Kernels KERNEL_NAME;
const Kernels KERNEL_NAME = {KERNEL_TITLE, reduction_pass, reflect_columns, rotate_columns,
                             multiply};

}  // namespace flib
