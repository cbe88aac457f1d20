// In which way a geometry differs from another one of as many atoms.
#pragma once

#include <Eigen/Dense>
#include <string>

namespace check {

struct GeometryDifference {
  enum class Kind { none, shifted, turned, mirrored, reordered, other };
  Kind kind = Kind::none;
  double largest = 0.0;                             // of all coordinates, Angstrom
  int atom = 0;                                     // the first to be elsewhere, from 1
  int stands_for = 0;                               // reordered: whose place it has
  double angle = 0.0;                               // turned: degrees
  Eigen::Vector3d shift = Eigen::Vector3d::Zero();  // of the centre of the atoms, Angstrom
};

// Coordinates in Angstrom, an atom a column. Two places within `tolerance` count as the same; a
// shift and a turn are taken out by the best fit.
GeometryDifference compare_geometries(const Eigen::Matrix3Xd& x, const Eigen::Matrix3Xd& reference,
                                      double tolerance);

// "is shifted by 0.1, 0, 0 Angstrom" and the like; what the difference is, in a sentence.
std::string describe(const GeometryDifference& difference);

}  // namespace check
