// Herzberg-Teller terms: transition dipole, transition probabilities and oscillator strengths that
// the vibrations lend to an electronic transition, to first order and in the harmonic
// approximation, with the vibrations of the excited state.
#pragma once

#include <Eigen/Dense>

#include "analysis/vibrations.hpp"
#include "zandor/run_data.hpp"

namespace analysis {

// dmu/dQ: Debye/(Angstrom sqrt(amu)) per e/sqrt(m_e); 205.06.
extern const double debye_per_angstrom_root_amu;

// n vibrations, in the order of Vibrations. An imaginary mode has dmu/dQ only, the rest is zero.
struct HerzbergTeller {
  // 3 x n: dmu/dQ_k = sum_j (dmu/dx_j) L_jk / sqrt(m_j), e/sqrt(m_e).
  Eigen::Matrix3Xd dmu_dQ;
  // 3 x n: dmu/dq_k = (dmu/dQ_k) / sqrt(omega_k) with the dimensionless q_k = sqrt(omega_k) Q_k,
  // e Bohr.
  Eigen::Matrix3Xd dmu_dq;
  // n: |mu|**2 of the transition 0 -> 1 in mode k, |dmu/dq_k|**2 / 2, e**2 Bohr**2. It is zero, and
  // so is dmu/dq_k, where dmu/dQ_k is no more than what print rounding makes of dipoles that do not
  // change (rounding_floor).
  Eigen::VectorXd strength;
};

// The length of dmu/dQ, in the spread that rounding gives a component (rounding_along_modes), up to
// which it is taken for rounding alone: one mode in a thousand is beyond it by chance.
inline constexpr double rounding_floor = 4.0;

// gradient: 3 x n3, dmu/dx in e (dipoles.hpp).
HerzbergTeller herzberg_teller(const zandor::RunData& run, const Eigen::Matrix3Xd& gradient,
                               const Eigenmodes& modes);

// By how much temperature raises the strength of a mode, absorption and emission of a quantum taken
// together: coth(omega / 2kT), 1 at 0 K. omega above 0 in atomic units, kelvin 0 or more.
double thermal_factor(double omega, double kelvin);

// Oscillator strength of a transition with energy E (Hartree) and |mu|**2 (e**2 Bohr**2): 2/3 E
// |mu|**2.
double oscillator_strength(double energy, double dipole_square);

}  // namespace analysis
