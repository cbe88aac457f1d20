#include "check/support/geometry_difference.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <set>

#include "analysis/best_turn.hpp"
#include "check/support/findings.hpp"

namespace check {

namespace {

using Geometry = Eigen::Matrix3Xd;
using Kind = GeometryDifference::Kind;

bool agree(const Geometry& a, const Geometry& b, double tolerance) {
  return (a - b).cwiseAbs().maxCoeff() <= tolerance;
}

// Whether the atoms stand at each other's places, and nowhere else.
bool reordered(const Geometry& x, const Geometry& reference, double tolerance,
               GeometryDifference& difference) {
  std::set<Eigen::Index> taken;
  for (Eigen::Index a = 0; a < x.cols(); ++a) {
    Eigen::Index b = 0;
    (reference.colwise() - x.col(a)).colwise().squaredNorm().minCoeff(&b);
    if (!taken.insert(b).second || !agree(x.col(a), reference.col(b), tolerance)) return false;
    if (a == b || difference.stands_for > 0) continue;
    difference.atom = static_cast<int>(a) + 1;
    difference.stands_for = static_cast<int>(b) + 1;
  }
  return true;
}

double angle_of(const Eigen::Matrix3d& turn) {
  const double cosine = std::clamp((turn.trace() - 1.0) / 2.0, -1.0, 1.0);
  return std::acos(cosine) * 180.0 / std::numbers::pi;
}

}  // namespace

GeometryDifference compare_geometries(const Geometry& a, const Geometry& b, double tolerance) {
  GeometryDifference difference;
  Eigen::Index row = 0, column = 0;
  difference.largest = (a - b).cwiseAbs().maxCoeff(&row, &column);
  difference.atom = static_cast<int>(column) + 1;
  difference.shift = a.rowwise().mean() - b.rowwise().mean();
  if (difference.largest <= tolerance) return difference;
  difference.kind = Kind::other;
  if (!std::isfinite(a.squaredNorm() + b.squaredNorm())) return difference;
  const Geometry centred_a = a.colwise() - a.rowwise().mean();
  const Geometry centred_b = b.colwise() - b.rowwise().mean();
  const Eigen::Matrix3d turn = analysis::best_turn(centred_b, centred_a, 1.0);
  if (agree(centred_a, centred_b, tolerance)) {
    difference.kind = Kind::shifted;
  } else if (reordered(a, b, tolerance, difference)) {
    difference.kind = Kind::reordered;
  } else if (agree(centred_a, turn * centred_b, tolerance)) {
    difference.kind = Kind::turned;
    difference.angle = angle_of(turn);
  } else if (agree(centred_a, analysis::best_turn(centred_b, centred_a, -1.0) * centred_b,
                   tolerance)) {
    difference.kind = Kind::mirrored;
  }
  return difference;
}

std::string describe(const GeometryDifference& difference) {
  const auto& shift = difference.shift;
  switch (difference.kind) {
    case Kind::none:
      return "agrees";
    case Kind::shifted:
      return io::joined("is shifted by ", rounded(shift(0)), ", ", rounded(shift(1)), ", ",
                        rounded(shift(2)), " Angstrom");
    case Kind::turned:
      return "is turned by " + rounded(difference.angle) + " degrees (distances agree)";
    case Kind::mirrored:
      return "is a mirror image (distances agree)";
    case Kind::reordered:
      return io::joined("has its atoms in another order: atom ", difference.atom,
                        " stands at the place of atom ", difference.stands_for);
    case Kind::other:
      break;
  }
  return io::joined("is another geometry: atom ", difference.atom, " is ",
                    rounded(difference.largest), " Angstrom away");
}

}  // namespace check
