// Turns of a molecule that bring its symmetry elements into the directions that they have in a
// cube.
#pragma once

#include <vector>

#include "displace/symmetry.hpp"

namespace displace {

// Proper rotations, each turned by what turns axes into axes until it is as small as can be, none
// twice. `principal`, the turn into principal axes of inertia, comes first.
std::vector<Eigen::Matrix3d> frames(const std::vector<Eigen::Vector3d>& directions,
                                    const Eigen::Matrix3d& principal);

// Three unit vectors at right angles, right-handed: along a, in the plane of a and b, across it.
Eigen::Matrix3d frame_of(const Eigen::Vector3d& a, const Eigen::Vector3d& b);

// The smallest turn that leaves a molecule in the same position towards the axes.
Eigen::Matrix3d nearest_turn(const Eigen::Matrix3d& turn);

}  // namespace displace
