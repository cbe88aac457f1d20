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

// Exchanges element k + step of a and element k of b, for every k that lacks the bit `step`.
template <int step, int... k>
KERNEL_INLINE void exchange(Register& a, Register& b) {
  if constexpr (sizeof...(k) < lanes) {
    exchange<step, k..., sizeof...(k)>(a, b);
  } else {
    const Register before = a;
    a = __builtin_shufflevector(before, b, (k & step ? lanes + k - step : k)...);
    b = __builtin_shufflevector(before, b, (k & step ? lanes + k : k + step)...);
  }
}

// Turns lanes x lanes numbers: element k of column c becomes element c of row k. First neighbours
// change places, then pairs, then groups of four.
template <int step = 1>
KERNEL_INLINE void transpose(Register (&a)[lanes]) {
  for (int c = 0; c < lanes; ++c) {
    if ((c & step) == 0) exchange<step>(a[c], a[c + step]);
  }
  if constexpr (2 * step < lanes) transpose<2 * step>(a);
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

// Transposes a square of lanes x lanes numbers from one matrix to another.
KERNEL_INLINE void transpose_square(const double* from, Index from_stride, double* to,
                                    Index to_stride) {
  Register a[lanes];
  for (int c = 0; c < lanes; ++c) a[c] = load(from + c * from_stride);
  transpose(a);
  for (int k = 0; k < lanes; ++k) store(to + k * to_stride, a[k]);
}

// Copies `count` columns of z to the columns of a panel, whose rows lie together, or back. What a
// panel holds in further columns is computed and dropped.
template <bool to_panel>
void copy_columns(double* z, Index nm, Index count, Index rows, double* panel) {
  const Index squares = count == panel_columns ? rows - rows % lanes : 0;
  for (Index c = 0; c < panel_columns; c += lanes) {
    for (Index k = 0; k < squares; k += lanes) {
      double* const in_z = z + c * nm + k;
      double* const in_panel = panel + k * panel_columns + c;
      if (to_panel) transpose_square(in_z, nm, in_panel, panel_columns);
      if (!to_panel) transpose_square(in_panel, panel_columns, in_z, nm);
    }
  }
  for (Index k = squares; k < rows; ++k) {
    for (Index c = 0; c < count; ++c) {
      double* const from = to_panel ? z + c * nm + k : panel + k * panel_columns + c;
      double* const to = to_panel ? panel + k * panel_columns + c : z + c * nm + k;
      *to = *from;
    }
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
    copy_columns<true>(z + j * nm, nm, columns, rows + steps - 1, panel);
    reflect_panel(panel, rows, u, w, steps);
    copy_columns<false>(z + j * nm, nm, columns, rows + steps - 1, panel);
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

// Copies the first `rows` rows of the columns first..last of z to panels of panel_rows rows, or
// back.
template <bool to_panel>
void copy_rows(double* z, Index nm, Index n, Index first, Index last, Index rows, double* panels) {
  for (Index i = first; i <= last; ++i) {
    double* const column = z + i * nm;
    double* const panel = panels + i * panel_rows;
    for (Index k = 0; k < rows; k += panel_rows) {
      double* const from = to_panel ? column + k : panel + k * n;
      double* const to = to_panel ? panel + k * n : column + k;
      if (rows == rotation_rows) {
        for (int r = 0; r < panel_rows; r += lanes) store(to + r, load(from + r));
      } else {
        for (Index r = 0; r < panel_rows && k + r < rows; ++r) to[r] = from[r];
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
    copy_rows<true>(z + row, nm, n, first, last, rows, panels);
    for (Index k = 0; k < rows; k += panel_rows) rotate_panel(panels + k * n, sweeps);
    copy_rows<false>(z + row, nm, n, first, last, rows, panels);
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
