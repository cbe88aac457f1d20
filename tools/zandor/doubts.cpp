#include "zandor/doubts.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <numeric>
#include <string>
#include <vector>

#include "flib/com.hpp"
#include "flib/ddiag.hpp"
#include "flib/formtrm1.hpp"
#include "flib/units_of_measure.hpp"

namespace zandor {

namespace {

// Geometries that were optimised have 5e-4 at most; those of another state 5e-2 and more.
constexpr double largest_force = 1e-3;  // Hartree/Bohr
// In principal axes the projection leaves 1e-4 cm-1, and the diagonalisation adds about 1. Axes
// that were turned leave 200 cm-1 and more, an angle of 5 degrees 250.
constexpr double largest_left = 30.0;  // cm-1
// Of the vibrations. Sound directories have up to two thirds; where every force has the wrong sign,
// those at a minimum have all, and formaldehyde at its saddle point 5 of 6.
constexpr double most_imaginary = 0.75;
constexpr const char* more = " (see zandor_check)";

// The rotations in the geometry of the projection, and the largest |frequency| (cm-1) of the block
// of the projected force constants among them.
struct Rotations {
  int count = 0;
  double left = 0.0;
};

double wavenumber(double eigenvalue) { return std::sqrt(eigenvalue) * flib::wavenumbers_per_au; }

// Makes the rotations orthonormal, columns 4 to 6 of v, and gives their number; what is left of one
// that the others make up is zero.
int orthonormalise(int n3, const flib::ArrayView<double, 2>& v) {
  constexpr double dependent = 1e-4;  // of a length of 1
  int count = 0;
  for (int k = 4; k <= 6; ++k) {
    double* const vector = v.column(k);
    for (int l = 4; l < k; ++l) {
      const double* const other = v.column(l);
      const double overlap = std::inner_product(other, other + n3, vector, 0.0);
      for (int i = 0; i < n3; ++i) vector[i] -= overlap * other[i];
    }
    const double length = std::sqrt(std::inner_product(vector, vector + n3, vector, 0.0));
    const double factor = length > dependent ? 1.0 / length : 0.0;
    std::for_each(vector, vector + n3, [factor](double& value) { value *= factor; });
    if (factor > 0.0) ++count;
  }
  return count;
}

Rotations rotations(const RunData& run) {
  const int n3 = run.n3;
  int info = 0;
  flib::Array<double, 2> centred("centred geometry", {3, run.natom});
  std::copy_n(run.x.data(), run.x.size(), centred.data());
  flib::com(run.natom, run.mass.data(), centred.data(), info);
  flib::Array<double, 2> v("rigid motions", {n3, 6});
  flib::formtrm1(run.natom, run.mass.data(), centred.data(), v.data());
  Rotations found;
  found.count = orthonormalise(n3, v);
  const double* const first = v.column(4);
  std::vector<double> image(static_cast<std::size_t>(n3));
  double block[9];
  for (int k = 0; k < 3; ++k) {
    const double* const vector = first + static_cast<std::ptrdiff_t>(k) * n3;
    for (int j = 1; j <= n3; ++j) {
      const double* const row = run.mhessp.column(j);
      image[static_cast<std::size_t>(j - 1)] = std::inner_product(row, row + n3, vector, 0.0);
    }
    for (int l = 0; l < 3; ++l) {
      const double* const other = first + static_cast<std::ptrdiff_t>(l) * n3;
      block[3 * k + l] = std::inner_product(other, other + n3, image.begin(), 0.0);
    }
  }
  // The root of the sum of the squares of the eigenvalues is no less than the largest.
  const double bound = std::sqrt(std::inner_product(block, block + 9, block, 0.0));
  if (wavenumber(bound) < largest_left) return found;
  double eigenvalues[3], work[3], vectors[9];
  flib::tred2e(3, 3, block, eigenvalues, work, vectors);
  flib::tql2e(3, 3, eigenvalues, work, vectors, info);
  for (const double value : eigenvalues) {
    found.left = std::max(found.left, wavenumber(std::fabs(value)));
  }
  return found;
}

std::string rounded(double value) {
  char text[32];
  return {text, std::to_chars(text, text + sizeof text, value, std::chars_format::general, 3).ptr};
}

}  // namespace

void warn_of_doubts(const RunData& run) {
  if (run.reference_force > largest_force) {
    io::warn({run.jobs[0].sgn_name.content()},
             "the reference is not a stationary point: a force of " + rounded(run.reference_force) +
                 " Hartree/Bohr acts on an atom" + more);
  }
  const Rotations found = rotations(run);
  if (found.left > largest_left && !run.layered) {
    io::warn({run.com_name.content()},
             "the axes are not the principal axes of inertia: rotations stay in the projected "
             "frequencies with up to " +
                 rounded(found.left) + " cm-1" + more);
  }
  const int vibrations = run.n3 - 3 - found.count;
  auto imaginary = std::count_if(run.freqp.data(), run.freqp.data() + run.n3, [](double frequency) {
    return frequency * flib::wavenumbers_per_au < -largest_left;
  });
  if (found.left > largest_left) imaginary -= found.count;  // rotations, perhaps
  if (static_cast<double>(imaginary) > most_imaginary * vibrations) {
    io::warn({}, std::to_string(imaginary) + " of " + std::to_string(vibrations) +
                     " vibrations are imaginary: gradients for forces, or the order of the jobs?" +
                     more);
  }
}

}  // namespace zandor
