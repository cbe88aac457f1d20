// The transition dipoles of the jobs, how far their digits can be trusted, and their gradient along
// the true steps.
#pragma once

#include <Eigen/Dense>

#include "zandor/run_data.hpp"

namespace analysis {

// The two jobs of coordinate ih (1..n3) by what they hold: with a disp_sign other than 1 the job
// labelled positive, 2 ih, holds the negative step.
struct StepJobs {
  int plus = 0, minus = 0;
};
StepJobs step_jobs(const zandor::RunData& run, int ih);

// 3 x (n6 + 1), atomic units: column i is the transition dipole of job i, column 0 that of the
// reference. Zero for derived jobs, until derive_dipoles (characters.hpp) fills them.
Eigen::Matrix3Xd job_dipoles(const zandor::RunData& run);

// The computed job from whose results those of a job come: the job itself, or the end of its chain
// of sources. 0 where there is none: a source that is the reference or is derived later in the
// list.
int computed_source(const zandor::RunData& run, int job);

// n6 + 1, atomic units: the largest error that printing may have made in a component of each job's
// dipole, half a unit of its last printed digit (a derived job has that of its source). The digits
// are found from the numbers of all jobs: as many decimals as the finest number has, but no number
// has more significant digits than the longest one. At least 1e-15 of the largest component of the
// job; zero where all dipoles are zero.
Eigen::VectorXd print_rounding(const zandor::RunData& run);

// 3 x n3: column ih - 1 is dmu/dx_ih = (mu(plus) - mu(minus)) / (2 dx) with the true steps, e. The
// report's tddip takes the labels instead, and differs in sign when disp_sign is not 1.
Eigen::Matrix3Xd dipole_gradient(const zandor::RunData& run, const Eigen::Matrix3Xd& dipoles);

// 3 x n3: column ih - 1 is ((mu(plus) + mu(minus)) / 2 - mu0) / dx, e. Dipoles of one state give
// dx/2 times a second derivative, little beside the gradient; turned signs give numbers of its
// size.
Eigen::Matrix3Xd dipole_midpoints(const zandor::RunData& run, const Eigen::Matrix3Xd& dipoles);

// The two steps of each coordinate with the signs of mu(plus) and mu(minus) that bring their mean
// nearest to mu0: the same whatever signs the jobs have turned.
struct SignFreeSteps {
  Eigen::Matrix3Xd even;   // 3 x n3, atomic units: (mu(plus) + mu(minus)) / 2 - mu0
  Eigen::VectorXd change;  // n3, atomic units: |mu(plus) - mu(minus)|
};
SignFreeSteps sign_free_steps(const zandor::RunData& run, const Eigen::Matrix3Xd& dipoles);

// The noise of a component of a dipole, atomic units, from the median length of the even parts; 0
// where they are longer than noise makes them (most_dipole_noise).
double dipole_noise(const SignFreeSteps& steps);

// Loose convergence leaves 1e-4, second derivatives 4e-4 in sound jobs with steps of 0.01 Angstrom,
// a degenerate state 0.1.
inline constexpr double most_dipole_noise = 2e-3;

// The largest change that print rounding makes in an element of the gradient.
double gradient_rounding(const zandor::RunData& run);

// Whether the dipoles of two steps lie on either side of the reference's, as they must: the norm of
// dipole_midpoints is at most half that of the gradient, or print rounding explains it. Signs that
// make differences vanish would meet the sum rules for that alone. dipoles: 3 x 0..n6, derived jobs
// filled in.
bool goes_through_reference(const zandor::RunData& run, const Eigen::Matrix3Xd& dipoles);

// 3 x n: column k is dmu/dQ_k = sum_j dmu/dx_j L_jk / sqrt(m_j), e/sqrt(m_e), for mass-weighted
// eigenvectors L in the columns of modes (n3 x n).
Eigen::Matrix3Xd dipole_along_modes(const zandor::RunData& run, const Eigen::Matrix3Xd& gradient,
                                    const Eigen::Ref<const Eigen::MatrixXd>& modes);

// n: how far print rounding may spread a component of dmu/dQ_k, as a standard deviation,
// e/sqrt(m_e): half a last digit over root 3 per computed job. What comes from one job adds up, the
// jobs that are derived from it included; different jobs add by their squares.
Eigen::VectorXd rounding_along_modes(const zandor::RunData& run,
                                     const Eigen::Ref<const Eigen::MatrixXd>& modes);

}  // namespace analysis
