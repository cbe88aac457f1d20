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

// The rows [from, j] of column j, element by element; `sum` goes on as the product's element j.
KERNEL_INLINE double pass_elements(double* column, Index j, Index from, const double* u,
                                   const double* q, const double* v, double* product, double sum) {
  const double uj = u[j], qj = q[j], vj = v[j];
  for (Index k = from; k <= j; ++k) {
    column[k] = (column[k] - uj * q[k]) - qj * u[k];
    sum += column[k] * v[k];
    if (k < j) product[k] += column[k] * vj;
  }
  return sum;
}

// The rows above a block of columns: lanes rows of all its columns at a time.
KERNEL_INLINE void pass_rows_above(double* z, Index nm, Index j0, const double* u, const double* q,
                                   const double* v, double* product, double (&sums)[block]) {
  constexpr Index groups = block / lanes;
  Register sum[groups] = {};
  for (Index k = 0; k < j0; k += lanes) {
    Register a[groups][lanes];
    const Register qk = load(q + k);
    const Register uk = load(u + k);
    Register pk = load(product + k);
    for (int c = 0; c < block; ++c) {
      double* const at = z + (j0 + c) * nm + k;
      const Register x = (load(at) - u[j0 + c] * qk) - q[j0 + c] * uk;
      store(at, x);
      pk += x * v[j0 + c];
      a[c / lanes][c % lanes] = x;
    }
    store(product + k, pk);
    for (int g = 0; g < groups; ++g) {
      transpose(a[g]);
      for (int r = 0; r < lanes; ++r) sum[g] += a[g][r] * v[k + r];
    }
  }
  for (int c = 0; c < block; ++c) sums[c] = sum[c / lanes][c % lanes];
}

void reduction_pass(double* z, Index nm, Index n, const double* u, const double* q, const double* v,
                    double* product) {
  Index j = 0;
  for (; j + block <= n; j += block) {
    double sums[block];
    pass_rows_above(z, nm, j, u, q, v, product, sums);
    for (int c = 0; c < block; ++c) {
      product[j + c] = pass_elements(z + (j + c) * nm, j + c, j, u, q, v, product, sums[c]);
    }
  }
  for (; j < n; ++j) product[j] = pass_elements(z + j * nm, j, 0, u, q, v, product, 0.0);
}

// ---- reflect_columns ---------------------------------------------------------------------------

// Registers that hold one row of a panel.
constexpr Index panel_columns = reflection_columns;
constexpr Index panel_registers = panel_columns / lanes;

// Copies columns of z to the columns of a panel, whose rows lie together, or back.
template <bool to_panel>
void copy_columns(double* const (&columns)[panel_columns], Index rows, double* panel) {
  for (Index k = 0; k < rows; ++k) {
    for (Index c = 0; c < panel_columns; ++c) {
      double* const in_panel = panel + k * panel_columns + c;
      *(to_panel ? in_panel : columns[c] + k) = *(to_panel ? columns[c] + k : in_panel);
    }
  }
}

// Finishes a reflection (with w: its products are in g) and begins the next (with u: g becomes its
// products), in one pass.
KERNEL_INLINE void reflect_pass(double* panel, Index rows, const double* w, const double* u,
                                Register (&g)[panel_registers]) {
  Register sum[panel_registers] = {};
  for (Index k = 0; k < rows; ++k) {
    const double wk = w[k], uk = u[k];
    for (int r = 0; r < panel_registers; ++r) {
      double* const at = panel + k * panel_columns + r * lanes;
      const Register x = load(at) - g[r] * wk;
      store(at, x);
      sum[r] += x * uk;
    }
  }
  for (int r = 0; r < panel_registers; ++r) g[r] = sum[r];
}

void reflect_columns(double* z, Index nm, Index count, Index rows, const double* vectors,
                     Index stride, Index steps, double* panel) {
  for (Index j = 0; j < count; j += panel_columns) {
    // The last column fills up its panel, and comes out of it several times alike.
    double* columns[panel_columns];
    for (Index c = 0; c < panel_columns; ++c) {
      columns[c] = z + (j + c < count ? j + c : count - 1) * nm;
    }
    copy_columns<true>(columns, rows + steps - 1, panel);
    Register g[panel_registers] = {};
    for (Index b = 0; b <= steps; ++b) {
      const double* const w = vectors + 2 * b * stride;
      reflect_pass(panel, rows + b, w, w + stride, g);
    }
    copy_columns<false>(columns, rows + steps - 1, panel);
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
