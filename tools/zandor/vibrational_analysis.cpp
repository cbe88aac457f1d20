#include "zandor/vibrational_analysis.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string>

#include "flib/ddiag.hpp"
#include "flib/fc_to_fcm.hpp"
#include "flib/projtrm_rot.hpp"
#include "flib/triangle.hpp"

namespace zandor {

namespace {

using Matrix = flib::ArrayView<double, 2>;
using Vector = flib::ArrayView<double, 1>;

// Added to the diagonal before and subtracted after the diagonalisation: part of the numerical
// procedure, published numbers rest on its exact value.
constexpr double diagonal_shift = 100000.0;

void differentiate_forces(RunData& run) {
  for (int ih = 1; ih <= run.n3; ++ih) {
    const int first = run.disp_sign == 1 ? 2 * ih : 2 * ih - 1;
    const int second = run.disp_sign == 1 ? 2 * ih - 1 : 2 * ih;
    const double* const f1 = run.force.column(1, first);
    const double* const f2 = run.force.column(1, second);
    double* const column = run.hess.column(ih);
    for (int jh = 0; jh < run.n3; ++jh) column[jh] = (f1[jh] - f2[jh]) / run.dx / 2.0;
  }
}

// Two coordinates and how far the force differences between them are from being symmetric.
struct Asymmetry {
  double difference = 0.0;  // Hartree/Bohr**2
  std::ptrdiff_t i = 0, j = 0;
};

// Both elements become the average, with its sign turned: forces become force constants. The result
// is the pair that differed most.
Asymmetry symmetrise_and_negate(double* hess, std::ptrdiff_t n) {
  Asymmetry worst;
  flib::for_each_in_upper_triangle(n, [&](std::ptrdiff_t j, std::ptrdiff_t i) {
    const double upper = hess[i * n + j];
    const double lower = hess[j * n + i];
    const double average = (upper + lower) / 2.0;
    hess[i * n + j] = -average;
    hess[j * n + i] = -average;
    const double difference = std::fabs(upper - lower);
    if (difference > worst.difference) worst = {difference, i + 1, j + 1};
  });
  return worst;
}

// "between coordinates 5 and 9 (jobs 9, 10, 17, 18)": where the numbers of an element come from.
std::string origin_of_element(std::ptrdiff_t i, std::ptrdiff_t j) {
  const auto [low, high] = std::minmax(i, j);
  const auto jobs = [](std::ptrdiff_t ih) { return io::joined(2 * ih - 1, ", ", 2 * ih); };
  return io::joined("between coordinates ", low, " and ", high, " (jobs ", jobs(low),
                    low < high ? ", " + jobs(high) : "", ")");
}

// Forces of one energy surface give differences that are symmetric but for the step and the digits
// printed: 2.9e-5 at a step of 0.005 Angstrom, 6.6e-4 at 0.01. Swapped or copied files give 1e-2
// and more.
void warn_of_asymmetry(const Asymmetry& worst) {
  constexpr double largest_expected = 1e-3;
  if (worst.difference <= largest_expected) return;
  io::warn({}, io::joined("the force differences are not symmetric: ",
                          io::rounded(worst.difference, std::chars_format::scientific, 1),
                          " Hartree/Bohr**2 ", origin_of_element(worst.i, worst.j)));
}

void require_finite(const flib::ArrayView<const double, 2>& matrix, int n3, const char* what) {
  for (int i = 1; i <= n3; ++i) {
    const double* const column = matrix.column(i);
    for (int j = 1; j <= n3; ++j) {
      if (std::isfinite(column[j - 1])) continue;
      io::fatal_stop({}, "expected finite ", what, ", found ", column[j - 1], " ",
                     origin_of_element(i, j));
    }
  }
}

void shift_diagonal(const Matrix& matrix, int n3, double shift) {
  for (int i = 1; i <= n3; ++i) matrix(i, i) += shift;
}

void diagonalise(const Matrix& matrix, int n3, const Vector& eval, const Vector& wk,
                 const Matrix& c, const char* what) {
  shift_diagonal(matrix, n3, diagonal_shift);
  flib::tred2e(n3, n3, matrix.data(), eval.data(), wk.data(), c.data());
  int ier = 0;
  flib::tql2e(n3, n3, eval.data(), wk.data(), c.data(), ier);
  if (ier != 0) {
    io::fatal_stop({}, "expected every ", what, " eigenvalue to converge, found number ", ier,
                   " not converged after 30 iterations");
  }
  shift_diagonal(matrix, n3, -diagonal_shift);
  for (int i = 1; i <= n3; ++i) {
    eval(i) -= diagonal_shift;
    if (!std::isfinite(eval(i))) {
      io::fatal_stop({}, "expected finite ", what, " eigenvalues, found ", eval(i), " for number ",
                     i);
    }
  }
}

void form_frequencies(const Vector& eval, const Vector& freq, int n3) {
  for (int i = 1; i <= n3; ++i) freq(i) = std::copysign(std::sqrt(std::fabs(eval(i))), eval(i));
}

// Cartesian displacements of every mode, its largest component scaled to disp_a. With disp_a = 0
// they are zeros.
void form_displacements(const RunData& run, const Matrix& c, double* disp) {
  const double* const root = run.sqtmass.data();
  for (int i = 1; i <= run.n3; ++i) {
    const double* const vector = c.column(i);
    double* const mode = disp + static_cast<std::size_t>(i - 1) * static_cast<std::size_t>(run.n3);
    double disp_max = 0.0;
    for (int j = 0; j < run.n3; ++j) {
      mode[j] = vector[j] / root[j];
      disp_max = std::max(disp_max, std::fabs(mode[j]));
    }
    for (int j = 0; j < run.n3; ++j) mode[j] = mode[j] * run.disp_a / disp_max;
  }
}

}  // namespace

void differentiate_transition_dipoles(RunData& run) {
  if (run.symm) return;
  for (int iatom = 1; iatom <= run.natom; ++iatom) {
    for (int ixyz = 1; ixyz <= 3; ++ixyz) {
      const int ih = 3 * (iatom - 1) + ixyz;
      for (int k = 1; k <= 3; ++k) {
        const double derivative = (run.tdip(k, 2 * ih) - run.tdip(k, 2 * ih - 1)) / run.dx / 2.0;
        if (!std::isfinite(derivative)) {
          io::fatal_stop({}, "expected finite transition dipole derivatives, found ", derivative,
                         " for coordinate ", ih, " (jobs ", 2 * ih - 1, ", ", 2 * ih, ")");
        }
        run.tddip(k, ixyz, iatom) = derivative;
      }
    }
  }
}

void assemble_force_constants(RunData& run) {
  differentiate_forces(run);
  const Asymmetry worst = symmetrise_and_negate(run.hess.data(), run.n3);
  require_finite(run.hess, run.n3, "force constants");
  warn_of_asymmetry(worst);
}

void analyse_vibrations(RunData& run) {
  const int n3 = run.n3;
  const int to_mass_weighted = 1;
  int info = 0;
  assemble_force_constants(run);
  flib::fc_to_fcm(n3, run.sqtmass.data(), run.hess.data(), run.mhess.data(), to_mass_weighted,
                  info);
  std::copy_n(run.mhess.data(), run.mhess.size(), run.mhessp.data());
  flib::projtrm_rot(run.natom, run.x.data(), run.mass.data(), run.mhessp.data(), info);
  require_finite(run.mhess, n3, "mass-weighted force constants");
  require_finite(run.mhessp, n3, "projected force constants");
  diagonalise(run.mhess, n3, run.eval, run.wk, run.c, "unprojected");
  diagonalise(run.mhessp, n3, run.evalp, run.wkp, run.cp, "projected");
  form_frequencies(run.eval, run.freq, n3);
  form_frequencies(run.evalp, run.freqp, n3);
  form_displacements(run, run.c, run.disp.data());
  form_displacements(run, run.cp, run.dispp.data());
}

}  // namespace zandor
