#include "flib/write_xyz_vib.hpp"

#include <cmath>

#include "flib/array.hpp"
#include "flib/get_free_fid.hpp"
#include "flib/units_of_measure.hpp"
#include "io/units.hpp"

namespace flib {

namespace {

constexpr double s = 2.0;  // largest displacement component in the file

double largest_component(const double* v, std::size_t size) {
  double vmax = 0.0;
  for (std::size_t i = 0; i < size; ++i) {
    if (std::fabs(v[i]) > vmax) vmax = std::fabs(v[i]);
  }
  return vmax;
}

}  // namespace

void write_xyz_vib(std::string_view fxyz, const int& n, const io::Text<2>* symbol, const double* x,
                   const double* v, const double* freq) {
  const int n3 = 3 * n;
  const ArrayView<const double, 2> coordinates(x, {3, n});
  const ArrayView<const double, 3> displacement(v, {3, n, n3});
  const ArrayView<const double, 1> frequency(freq, {n3});
  const double vmax = largest_component(v, displacement.size());
  int fid = 0;
  get_free_fid(fid);
  io::open_replaced(fid, fxyz);
  io::OutputFile& out = io::output(fid);
  for (int i = 1; i <= n3; ++i) {
    out.integer(n, 4).end_line();
    out.text(" freq = ").fixed(frequency(i) * wavenumbers_per_au, 11, 2).text(" cm^-1").end_line();
    for (int j = 1; j <= n; ++j) {
      out.text(symbol[j - 1].padded(), 4);
      for (int k = 1; k <= 3; ++k) out.fixed(coordinates(k, j) * angstrom_per_bohr, 16, 10);
      for (int k = 1; k <= 3; ++k) out.fixed(displacement(k, j, i) / vmax * s, 16, 10);
      out.end_line();
    }
  }
  io::close(fid);
}

}  // namespace flib
