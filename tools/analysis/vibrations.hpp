// Vibrations with the rigid motions taken out exactly, and which modes of the report they are.
#pragma once

#include <Eigen/Dense>
#include <vector>

#include "analysis/rigid_motions.hpp"
#include "zandor/run_data.hpp"

namespace analysis {

// Modes whose frequencies differ by no more count as degenerate, cm-1.
inline constexpr double degenerate_within = 0.1;

// M^-1/2 hess M^-1/2, n3 x n3. Takes hess and sqtmass of the run.
Eigen::MatrixXd mass_weighted_force_constants(const zandor::RunData& run);

// Ascending frequencies (atomic units, imaginary ones negative: the root of |lambda| with the sign
// of lambda) and orthonormal eigenvectors in columns.
struct Eigenmodes {
  Eigen::VectorXd frequency;
  Eigen::MatrixXd vectors;
};

// Diagonalises symmetric mass-weighted force constants. Numbers too large for it are a fatal stop.
Eigenmodes eigenmodes(const Eigen::MatrixXd& weighted);

// The same within the space that is orthogonal to the rigid motions: n3 - rank of them, each vector
// with n3 components.
Eigenmodes modes_beside(const RigidMotions& rigid, Eigen::MatrixXd weighted);

// n = n3 - rank vibrations, by ascending frequency. What is left when the rigid motions are gone is
// a vibration, however small its frequency.
struct Vibrations {
  // n, as of Eigenmodes.
  Eigen::VectorXd frequency;
  // n3 x n: orthonormal mass-weighted eigenvectors L in columns, orthogonal to the rigid motions;
  // their signs are such that they point along the mode of the report.
  Eigen::MatrixXd modes;
  // n, from 1: the number of each in the report's list of projected frequencies. No number comes
  // twice; the pairs with the largest |L . cp| go first, and degenerate ones are put in order.
  std::vector<int> report_mode;
  // n, 0 to 1: the length of L in the space of that mode of the report and of those of the report
  // that are degenerate with it (they may be any mixture of each other). Small where the report's
  // projector, which is exact in principal axes only, has left rigid motion in its modes.
  Eigen::VectorXd overlap;
};

// Takes the modes of M^-1/2 hess M^-1/2 beside the rigid motions, and pairs them with the report's
// projected modes. Needs hess, sqtmass, cp and freqp of the run as analyse_vibrations leaves them.
// Numbers too large to be diagonalised are a fatal stop.
Vibrations exact_vibrations(const zandor::RunData& run, const RigidMotions& rigid);

// The positions (from 0) of vibrations that are degenerate, by groups of two or more: real
// frequencies, each within degenerate_within of the one before.
std::vector<std::vector<Eigen::Index>> degenerate_groups(const Vibrations& vibrations);

}  // namespace analysis
