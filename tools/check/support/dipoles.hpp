// The transition dipoles at hand: their signs, the two steps against the reference's, and which
// job's does not fit.
#pragma once

#include <Eigen/Dense>
#include <optional>
#include <vector>

#include "analysis/characters.hpp"
#include "analysis/settle_signs.hpp"
#include "check/support/job_data.hpp"
#include "check/support/thresholds.hpp"

namespace check {

// The dipoles of a directory, and what they are held against.
struct Dipoles {
  Eigen::Matrix3Xd of_job;  // 3 x 0..n6, as read, derived jobs filled in
  Thresholds limits;
  bool all = false;          // every job has one: the sum rules can be looked at
  std::vector<char> looked;  // 1..n3: both jobs and the reference have dipoles
  // The next three only where every job has one.
  analysis::SettledSigns signs;     // how they are settled if they do not fit as they are
  analysis::Characters characters;  // of the operations; empty where no job is derived
  bool passes = true;  // derived dipoles pass through the reference's from one step to the other

  // Whether the sum rules are met.
  bool explain(const analysis::SumRuleResidual& residual) const;
};
Dipoles dipoles_at_hand(const JobData& jobs, const Thresholds& limits);

// The jobs whose signs have to be turned. Signs that cannot be settled are a fatal stop.
std::vector<int> signs_to_turn(const JobData& jobs, const Thresholds& limits);

// (mu(+) + mu(-)) / 2 - mu0 of every coordinate: dx**2 / 2 times a second derivative, and errors.
struct DipoleMeans {
  Eigen::VectorXd sizes;       // n3, atomic units; not_known where not looked at
  double limit = 0.0;          // atomic units
  std::vector<int> off;        // the coordinates above it
  bool reference_off = false;  // they have in common what stands far above their scatter
};
DipoleMeans dipole_means(const JobData& jobs, const Dipoles& at);

// Whether means and sum rules are met, the means within `limit`: that of the dipoles as read, since
// what is put right wrongly raises the median, too.
bool dipoles_fit(const JobData& jobs, const Dipoles& at, double limit);

// One job (0 is the reference) whose dipole, put right, makes everything fit.
struct WrongDipole {
  int job = 0;
  Eigen::Vector3d expected;  // atomic units
  int other = -1;            // another job that would do nearly as well; -1: none
};

// The least squares of the means and the sum rules, each over what one error makes of it, for each
// job in turn: three unknowns, the components of its dipole. Where coordinates stand out, jobs of
// these alone.
std::optional<WrongDipole> find_wrong_dipole(const JobData& jobs, const Dipoles& at,
                                             const DipoleMeans& means);

}  // namespace check
