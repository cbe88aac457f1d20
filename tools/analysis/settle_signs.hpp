// The arbitrary signs of transition dipoles: every job's wave function, and with it its dipole, may
// come with either sign. What settles them, in this order:
//   1. the largest element of the transition density in the headers, where its sign tells;
//   2. within a coordinate mu(+) + mu(-) = 2 mu0, and images of jobs under operations;
//   3. the sum rules, for one sign per set of jobs that 1 and 2 have tied together.
// Choices that fit alike are accepted only when all give the same |dmu/dQ|**2: a wrong answer is
// worse than none.
#pragma once

#include <Eigen/Dense>
#include <array>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "analysis/sign_demands.hpp"
#include "analysis/sum_rules.hpp"
#include "zandor/run_data.hpp"

namespace analysis {

// tden_maxloc and tden_maxval of a header; no value where the header has none.
struct DensityElement {
  std::array<int, 2> place{};
  std::optional<double> value;
};

// Per job 0..n6: +1 or -1 where the sign of the element tells that of the job against the
// reference's, since it stands at the same place and agrees within 2 % in absolute value (the same
// state: 42 of 42 jobs; another one agrees in 3 %); else 0. elements: 0..n6.
std::vector<int> density_signs(const std::vector<DensityElement>& elements);

// Choices that leave no more than this times what noise makes of the sum rules, or than what the
// best choice leaves, stay in doubt. Of 4752 draws of noise in 14 directories 6 refuses 163 more;
// of 3168 with a wrong dipole 1.5 takes 40 more for right.
inline constexpr double in_doubt = 3.0;

struct SignEvidence {
  std::vector<int> density;  // as density_signs gives them; empty where there are no headers
  std::vector<ImageRelation> images;
  // n3 x n: L_jk / sqrt(m_j), the directions along which dmu/dQ is taken; asked for only where
  // several choices fit.
  std::function<Eigen::MatrixXd()> directions;
  ResidualLimits limits;
};

struct SettledSigns {
  SumRuleResidual as_read;
  bool fits_as_read = false;  // in every respect
  // Computed jobs (0 is the reference) whose dipoles, with those of the jobs derived from them,
  // have to be multiplied by -1, the fewest that do; an overall sign means nothing.
  std::vector<int> jobs;
  SumRuleResidual settled;  // with the signs of `jobs` turned
  // Why the signs are not settled, a clause; `jobs` is empty then.
  std::string refusal;
  bool nothing_fits = false;  // of the refusals: no choice does, rather than several

  bool found() const { return refusal.empty(); }
};

// dipoles: 3 x 0..n6, derived jobs filled in. Takes time of the number of jobs, apart from the
// search among signs that stay free (sign_search.hpp).
SettledSigns settle_signs(const zandor::RunData& run, const Eigen::Matrix3Xd& dipoles,
                          const SignEvidence& evidence);

// The same for signs that are known to be right as read: whether they fit.
SettledSigns signs_as_read(const zandor::RunData& run, const Eigen::Matrix3Xd& dipoles,
                           const SignEvidence& evidence);

// Multiplies the dipoles of these jobs, and of those derived from them, by -1.
void turn_signs(const zandor::RunData& run, const std::vector<int>& jobs,
                Eigen::Matrix3Xd& dipoles);

// Whether |dmu/dQ|**2 is the same for two gradients (3 x n3) along all directions, but for `noise`
// in the dipoles.
bool same_strengths(const zandor::RunData& run, const Eigen::Matrix3Xd& a,
                    const Eigen::Matrix3Xd& b, const Eigen::MatrixXd& directions, double noise);

}  // namespace analysis
