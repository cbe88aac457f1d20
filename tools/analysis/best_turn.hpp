// The turn that brings one geometry nearest to another.
#pragma once

#include <Eigen/Dense>

namespace analysis {

// The turn (determinant +1) or mirror turn (-1) that brings `from` nearest to `to` (Kabsch, Acta
// Cryst. A 32, 922 (1976)). Places in columns, as many in both; both have their centre at the
// origin.
Eigen::Matrix3d best_turn(const Eigen::Matrix3Xd& from, const Eigen::Matrix3Xd& to,
                          double determinant);

}  // namespace analysis
