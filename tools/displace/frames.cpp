#include "displace/frames.hpp"

#include <algorithm>
#include <cmath>

namespace displace {

namespace {

using Eigen::Matrix3d;
using Eigen::Vector3d;

// The directions of the axes and mirror normals of a cube, one of each opposite pair.
std::vector<Vector3d> cube_directions() {
  std::vector<Vector3d> directions;
  for (int x = -1; x <= 1; ++x) {
    for (int y = -1; y <= 1; ++y) {
      for (int z = -1; z <= 1; ++z) {
        if (9 * x + 3 * y + z > 0) directions.push_back(Vector3d(x, y, z).normalized());
      }
    }
  }
  return directions;
}

// One of each kind: the others follow by turns of axes into axes.
const Vector3d kinds[] = {Vector3d(0, 0, 1), Vector3d(0, 1, 1).normalized(),
                          Vector3d(1, 1, 1).normalized()};

// The turn that brings u onto p and is nearest to none: of all turns about p behind one of them the
// one with the largest trace.
Matrix3d turn_onto(const Vector3d& u, const Vector3d& p) {
  const Matrix3d onto = Eigen::Quaterniond::FromTwoVectors(u, p).toRotationMatrix();
  const Vector3d& n = p;
  Matrix3d cross;
  cross << 0, -n.z(), n.y(), n.z(), 0, -n.x(), -n.y(), n.x(), 0;
  // trace(turn(angle) onto) = A + B cos(angle) + C sin(angle)
  const double b = ((Matrix3d::Identity() - n * n.transpose()) * onto).trace();
  const double c = (cross * onto).trace();
  return Eigen::AngleAxisd(std::atan2(c, b), n) * onto;
}

bool is_near(const Matrix3d& a, const Matrix3d& b) { return (a - b).cwiseAbs().maxCoeff() < 1e-3; }

void add(const Matrix3d& turn, std::vector<Matrix3d>& turns) {
  const Matrix3d nearest = nearest_turn(turn);
  const auto known = [&](const Matrix3d& other) { return is_near(nearest, other); };
  if (std::none_of(turns.begin(), turns.end(), known)) turns.push_back(nearest);
}

}  // namespace

Matrix3d frame_of(const Vector3d& a, const Vector3d& b) {
  Matrix3d frame;
  frame.col(0) = a.normalized();
  frame.col(2) = a.cross(b).normalized();
  frame.col(1) = frame.col(2).cross(frame.col(0));
  return frame;
}

Matrix3d nearest_turn(const Matrix3d& turn) {
  // The rows of a turn are where the new axes lie: which of them, with which sign, is called x, y
  // and z is free.
  Matrix3d best = turn;
  int axes[] = {0, 1, 2};
  do {
    for (int signs = 0; signs < 8; ++signs) {
      Matrix3d other;
      for (int k = 0; k < 3; ++k) {
        other.row(k) = ((signs >> k) % 2 == 0 ? 1.0 : -1.0) * turn.row(axes[k]);
      }
      if (other.determinant() > 0.0 && other.trace() > best.trace() + 1e-9) best = other;
    }
  } while (std::next_permutation(axes, axes + 3));
  return best;
}

std::vector<Matrix3d> frames(const std::vector<Vector3d>& directions, const Matrix3d& principal) {
  static const std::vector<Vector3d> cube = cube_directions();
  std::vector<Matrix3d> turns;
  add(principal, turns);
  for (const Vector3d& u : directions) {
    for (const Vector3d& p : kinds) {
      add(turn_onto(u, p), turns);
      for (const Vector3d& v : directions) {
        const double cosine = u.dot(v);
        if (std::abs(cosine) > 0.999) continue;
        for (const Vector3d& q : cube) {
          for (const double side : {1.0, -1.0}) {
            if (std::abs(side * p.dot(q) - cosine) > 5e-3 || std::abs(p.dot(q)) > 0.999) continue;
            add(frame_of(p, side * q) * frame_of(u, v).transpose(), turns);
          }
        }
      }
    }
  }
  return turns;
}

}  // namespace displace
