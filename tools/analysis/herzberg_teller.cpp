#include "analysis/herzberg_teller.hpp"

#include <cmath>

#include "analysis/dipoles.hpp"
#include "flib/units_of_measure.hpp"

namespace analysis {

const double debye_per_angstrom_root_amu =
    flib::debye_per_angstrom_per_au * std::sqrt(flib::electron_masses_per_amu);

HerzbergTeller herzberg_teller(const zandor::RunData& run, const Eigen::Matrix3Xd& gradient,
                               const Vibrations& vibrations) {
  HerzbergTeller terms;
  terms.dmu_dQ = dipole_along_modes(run, gradient, vibrations.modes);
  terms.dmu_dq = Eigen::Matrix3Xd::Zero(3, terms.dmu_dQ.cols());
  for (Eigen::Index k = 0; k < vibrations.frequency.size(); ++k) {
    const double omega = vibrations.frequency(k);
    if (omega > 0.0) terms.dmu_dq.col(k) = along_dimensionless(terms.dmu_dQ.col(k), omega);
  }
  terms.strength.resize(terms.dmu_dq.cols());
  for (Eigen::Index k = 0; k < terms.strength.size(); ++k) {
    terms.strength(k) = strength(terms.dmu_dq.col(k));
  }
  return terms;
}

Eigen::Vector3d along_dimensionless(const Eigen::Vector3d& dmu_dQ, double omega) {
  return dmu_dQ / std::sqrt(omega);
}

double strength(const Eigen::Vector3d& dmu_dq) { return dmu_dq.squaredNorm() / 2.0; }

double thermal_factor(double omega, double kelvin) {
  if (kelvin == 0.0) return 1.0;
  return 1.0 / std::tanh(omega / (2.0 * flib::hartree_per_kelvin * kelvin));
}

double oscillator_strength(double energy, double dipole_square) {
  return 2.0 / 3.0 * energy * dipole_square;
}

}  // namespace analysis
