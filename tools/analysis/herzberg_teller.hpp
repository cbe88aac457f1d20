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
  // n: |mu|**2 of the transition 0 -> 1 in mode k, |dmu/dq_k|**2 / 2, e**2 Bohr**2.
  Eigen::VectorXd strength;
};

// gradient: 3 x n3, dmu/dx in e (dipoles.hpp).
HerzbergTeller herzberg_teller(const zandor::RunData& run, const Eigen::Matrix3Xd& gradient,
                               const Vibrations& vibrations);

// dmu/dq = (dmu/dQ) / sqrt(omega) of a mode; omega above 0 in atomic units.
Eigen::Vector3d along_dimensionless(const Eigen::Vector3d& dmu_dQ, double omega);

// |mu|**2 of the transition 0 -> 1: |dmu/dq|**2 / 2.
double strength(const Eigen::Vector3d& dmu_dq);

// By how much temperature raises the strength of a mode, absorption and emission of a quantum taken
// together: coth(omega / 2kT), 1 at 0 K. omega above 0 in atomic units, kelvin 0 or more.
double thermal_factor(double omega, double kelvin);

// Oscillator strength of a transition with energy E (Hartree) and |mu|**2 (e**2 Bohr**2): 2/3 E
// |mu|**2.
double oscillator_strength(double energy, double dipole_square);

}  // namespace analysis
