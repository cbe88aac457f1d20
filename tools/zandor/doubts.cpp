#include "zandor/doubts.hpp"

#include <algorithm>
#include <cmath>

#include "flib/com.hpp"
#include "flib/ddiag.hpp"
#include "flib/formtrm1.hpp"
#include "flib/sprod.hpp"
#include "flib/units_of_measure.hpp"
#include "flib/vscal.hpp"

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

// Makes the rotations orthonormal, columns 4 to 6 of v, and gives their number; what is left of one
// that the others make up is zero.
int orthonormalise(int n3, const flib::ArrayView<double, 2>& v) {
  constexpr double dependent = 1e-4;  // of a length of 1
  int count = 0;
  for (int k = 4; k <= 6; ++k) {
    double* const vector = v.column(k);
    for (int l = 4; l < k; ++l) {
      const double* const other = v.column(l);
      const double overlap = flib::sprod(n3, other, vector);
      for (int i = 0; i < n3; ++i) vector[i] -= overlap * other[i];
    }
    const double length = std::sqrt(flib::sprod(n3, vector, vector));
    const bool is_new = length > dependent;
    flib::vscal(n3, is_new ? 1.0 / length : 0.0, vector);
    if (is_new) ++count;
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
  flib::Array<double, 1> image("image of a rotation", {n3});
  flib::Array<double, 2> block("projected rotations", {3, 3}), vectors("vectors", {3, 3});
  for (int k = 1; k <= 3; ++k) {
    for (int j = 1; j <= n3; ++j) {
      image(j) = flib::sprod(n3, run.mhessp.column(j), v.column(3 + k));
    }
    for (int l = 1; l <= 3; ++l) block(l, k) = flib::sprod(n3, v.column(3 + l), image.data());
  }
  double eigenvalues[3], work[3];
  flib::tred2e(3, 3, block.data(), eigenvalues, work, vectors.data());
  flib::tql2e(3, 3, eigenvalues, work, vectors.data(), info);
  const double largest = std::max(std::fabs(eigenvalues[0]), std::fabs(eigenvalues[2]));
  found.left = std::sqrt(largest) * flib::wavenumbers_per_au;
  return found;
}

}  // namespace

void warn_of_doubts(const RunData& run) {
  if (run.reference_force > largest_force) {
    io::warn({run.jobs[0].sgn_name.content()},
             io::joined("the reference is not a stationary point: a force of ",
                        io::rounded(run.reference_force), " Hartree/Bohr acts on an atom", more));
  }
  const Rotations found = rotations(run);
  const bool is_turned = found.left > largest_left;
  if (is_turned && !run.layered) {
    io::warn({run.com_name.content()},
             io::joined("the axes are not the principal axes of inertia: rotations stay in the "
                        "projected frequencies with up to ",
                        io::rounded(found.left), " cm-1", more));
  }
  const int vibrations = run.n3 - 3 - found.count;
  auto imaginary = std::count_if(run.freqp.data(), run.freqp.data() + run.n3, [](double frequency) {
    return frequency * flib::wavenumbers_per_au < -largest_left;
  });
  if (is_turned) imaginary -= found.count;  // rotations, perhaps
  if (static_cast<double>(imaginary) > most_imaginary * vibrations) {
    io::warn({}, io::joined(imaginary, " of ", vibrations, " vibrations are imaginary: gradients ",
                            "for forces, or the order of the jobs?", more));
  }
}

}  // namespace zandor
