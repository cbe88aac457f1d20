#include "analysis/herzberg_teller.hpp"

#include <cmath>

#include "analysis/dipoles.hpp"
#include "flib/units_of_measure.hpp"

namespace analysis {

const double debye_per_angstrom_root_amu =
    flib::debye_per_angstrom_per_au * std::sqrt(flib::electron_masses_per_amu);

HerzbergTeller herzberg_teller(const zandor::RunData& run, const Eigen::Matrix3Xd& gradient,
                               const Eigenmodes& modes) {
  HerzbergTeller terms;
  terms.dmu_dQ = dipole_along_modes(run, gradient, modes.vectors);
  terms.dmu_dq = Eigen::Matrix3Xd::Zero(3, terms.dmu_dQ.cols());
  const Eigen::VectorXd spread = rounding_along_modes(run, modes.vectors);
  for (Eigen::Index k = 0; k < modes.frequency.size(); ++k) {
    const double omega = modes.frequency(k);
    if (omega > 0.0 && terms.dmu_dQ.col(k).norm() > rounding_floor * spread(k)) {
      terms.dmu_dq.col(k) = terms.dmu_dQ.col(k) / std::sqrt(omega);
    }
  }
  terms.strength = terms.dmu_dq.colwise().squaredNorm().transpose() / 2.0;
  return terms;
}

double thermal_factor(double omega, double kelvin) {
  if (kelvin == 0.0) return 1.0;
  return 1.0 / std::tanh(omega / (2.0 * flib::hartree_per_kelvin * kelvin));
}

double oscillator_strength(double energy, double dipole_square) {
  return 2.0 / 3.0 * energy * dipole_square;
}

}  // namespace analysis
