// What the dipoles of two steps and of images demand of the signs of jobs, whatever the sum rules
// say: (mu(+) + mu(-)) / 2 - mu0 and mu(to) - image mu(from) have to vanish.
#pragma once

#include <Eigen/Dense>
#include <array>
#include <vector>

#include "zandor/run_data.hpp"

namespace analysis {

// mu(to) = image mu(from) for two jobs, or one and the same, 0 included.
struct ImageRelation {
  int from = 0, to = 0;
  Eigen::Matrix3d image;
};

// The length of what has to vanish for two computed jobs (perhaps the same), for each pair of signs
// against the reference's, at [sign of a is -][sign of b is -]. Atomic units.
struct SignDemand {
  int a = 0, b = 0;
  std::array<std::array<double, 2>, 2> length{};

  double smallest() const;
};

struct SignDemands {
  std::vector<SignDemand> all;
  double rounding = 0.0;  // the largest print rounding of a component of a dipole, atomic units
  // The error of a component of a dipole, atomic units: print rounding, or the scatter of what has
  // to vanish with the signs that suit best. Unlike dipole_noise it takes the images in and leaves
  // out what print rounding explains, most of a dark state with symmetry; it is never zero.
  double noise = 0.0;
  double floor = 0.0;  // the same of the length of what has to vanish
};

// dipoles: 3 x 0..n6, derived jobs filled in.
SignDemands sign_demands(const zandor::RunData& run, const Eigen::Matrix3Xd& dipoles,
                         const std::vector<ImageRelation>& images);

// Which jobs have signs that are known against each other: all with the same root, which is the
// reference where it is one of them. Per job 0..n6.
struct TiedSigns {
  explicit TiedSigns(int n6);
  Eigen::VectorXi root;
  Eigen::VectorXi sign;  // +1 or -1, against the root's

  // Adds that sign(a) sign(b) = product. False where that contradicts what is known.
  bool tie(int a, int b, int product);
};

// Ties what the demands leave no choice about. The result is one that nothing meets, if any.
const SignDemand* tie_demands(const SignDemands& demands, TiedSigns& signs);

}  // namespace analysis
