#include "flib/write_xyz_vib.hpp"

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "flib/array.hpp"
#include "flib/get_free_fid.hpp"
#include "flib/units_of_measure.hpp"
#include "io/units.hpp"

namespace flib {

namespace {

constexpr double s = 2.0;  // largest displacement component in the file

// What every frame repeats: symbol and coordinates of each atom, as they are printed.
std::vector<std::string> atom_columns(int n, const io::Text<2>* symbol, const double* x) {
  std::vector<std::string> columns;
  columns.reserve(static_cast<std::size_t>(n));
  for (int j = 0; j < n; ++j) {
    char text[4 + 3 * 16];
    char* end = io::text_field(text, symbol[j].padded(), 4);
    for (int k = 0; k < 3; ++k) end = io::fixed_field(end, *x++ * angstrom_per_bohr, 16, 10);
    columns.emplace_back(text, end);
  }
  return columns;
}

}  // namespace

void write_xyz_vib(std::string_view fxyz, const int& n, const io::Text<2>* symbol, const double* x,
                   const double* v, const double* freq) {
  const int n3 = 3 * n;
  const std::vector<std::string> atoms = atom_columns(n, symbol, x);
  const ArrayView<const double, 3> displacement(v, {3, n, n3});
  const ArrayView<const double, 1> frequency(freq, {n3});
  double vmax = 0.0;
  for (std::size_t i = 0; i < displacement.size(); ++i) vmax = std::max(vmax, std::fabs(v[i]));
  int fid = 0;
  get_free_fid(fid);
  io::open_replaced(fid, io::trimmed(fxyz));
  io::OutputFile& out = io::output(fid);
  for (int i = 1; i <= n3; ++i) {
    out.integer(n, 4).end_line();
    out.text(" freq = ").fixed(frequency(i) * wavenumbers_per_au, 11, 2).text(" cm^-1").end_line();
    const double* component = displacement.column(1, i);
    for (const std::string& atom : atoms) {
      out.text(atom);
      for (int k = 1; k <= 3; ++k) out.fixed(*component++ / vmax * s, 16, 10);
      out.end_line();
    }
  }
  io::close(fid);
}

}  // namespace flib
