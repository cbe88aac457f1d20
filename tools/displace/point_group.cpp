// Operations of any direction, and the name of the group that they are.
#include <algorithm>
#include <cmath>
#include <map>
#include <numbers>
#include <set>
#include <utility>

#include "analysis/best_turn.hpp"
#include "analysis/operations.hpp"
#include "displace/frames.hpp"
#include "displace/symmetry.hpp"

namespace displace {

namespace {

// Atoms that may be each other's image: of the same label, equally far from the origin.
std::vector<int> shells(const Shape& shape, double tolerance) {
  std::vector<int> shell(shape.labels.size(), -1);
  int count = 0;
  for (Eigen::Index a = 0; a < shape.x.cols(); ++a) {
    for (Eigen::Index b = 0; b < a && shell[static_cast<std::size_t>(a)] < 0; ++b) {
      const auto i = static_cast<std::size_t>(a);
      const auto j = static_cast<std::size_t>(b);
      const double difference = shape.x.col(a).norm() - shape.x.col(b).norm();
      if (shape.labels[i] == shape.labels[j] && std::abs(difference) <= tolerance) {
        shell[i] = shell[j];
      }
    }
    if (shell[static_cast<std::size_t>(a)] < 0) shell[static_cast<std::size_t>(a)] = count++;
  }
  return shell;
}

// Two atoms that fix a frame, of shells with as few members as can be.
struct Anchors {
  Eigen::Index first = 0, second = 0;
};

Anchors anchors_of(const Shape& shape, const std::vector<int>& shell) {
  std::map<int, int> members;
  for (const int s : shell) ++members[s];
  std::vector<Eigen::Index> order;
  for (Eigen::Index a = 0; a < shape.x.cols(); ++a) order.push_back(a);
  const auto size_at = [&](Eigen::Index a) { return members[shell[static_cast<std::size_t>(a)]]; };
  std::stable_sort(order.begin(), order.end(),
                   [&](Eigen::Index a, Eigen::Index b) { return size_at(a) < size_at(b); });
  constexpr double apart = 0.1;  // Angstrom from the origin, and sine of the angle
  Anchors anchors{-1, -1};
  for (const Eigen::Index a : order) {
    const Eigen::Vector3d place = shape.x.col(a);
    if (place.norm() < apart) continue;
    if (anchors.first < 0) {
      anchors.first = a;
    } else if (shape.x.col(anchors.first).normalized().cross(place.normalized()).norm() > apart) {
      anchors.second = a;
      return anchors;
    }
  }
  return {0, 0};
}

Eigen::Matrix3Xd permuted(const Eigen::Matrix3Xd& x, const std::vector<int>& images) {
  Eigen::Matrix3Xd sources(3, x.cols());
  for (Eigen::Index a = 0; a < x.cols(); ++a) {
    sources.col(a) = x.col(images[static_cast<std::size_t>(a)] - 1);
  }
  return sources;
}

// Adds the operation near `guess` if there is one that is not there yet.
void try_operation(const Shape& shape, const std::vector<int>& shell, const Eigen::Matrix3d& guess,
                   double tolerance, double reach, Group& group) {
  std::vector<int> images = analysis::images(shape.x, shell, guess, reach);
  if (images.empty()) return;
  const double determinant = guess.determinant();
  const auto is_same = [&](const Operation& known) {
    return known.images == images && known.matrix.determinant() * determinant > 0.0;
  };
  if (std::any_of(group.begin(), group.end(), is_same)) return;
  const Eigen::Matrix3Xd sources = permuted(shape.x, images);
  const Eigen::Matrix3d op = analysis::best_turn(sources, shape.x, determinant);
  if ((op * sources - shape.x).colwise().norm().maxCoeff() > tolerance) return;
  group.push_back({op, std::move(images)});
}

bool is_mirror(const Eigen::Matrix3d& op) {
  return op.determinant() < 0.0 && std::abs(op.trace() - 1.0) < 1e-2;
}

bool is_inversion(const Eigen::Matrix3d& op) { return op.trace() < -2.99; }

// The angle of the smallest turn that is a multiple of a proper one gives its order.
int order_of(const Eigen::Matrix3d& turn) {
  const double angle = std::acos(std::clamp((turn.trace() - 1.0) / 2.0, -1.0, 1.0));
  for (int n = 1; n < 1000; ++n) {
    if (std::abs(std::remainder(n * angle, 2.0 * std::numbers::pi)) < 0.02) return n;
  }
  return 1;
}

// The axis of a rotation, of an improper one that of its proper part; zero where there is none.
Eigen::Vector3d axis_of(const Eigen::Matrix3d& op) {
  const Eigen::Matrix3d turn = op.determinant() < 0.0 ? Eigen::Matrix3d(-op) : op;
  if (turn.trace() > 3.0 - 1e-6) return Eigen::Vector3d::Zero();
  // 2 (1 - cos) n n^T for the axis n.
  const Eigen::Matrix3d dyad =
      turn + turn.transpose() - (turn.trace() - 1.0) * Eigen::Matrix3d::Identity();
  Eigen::Index longest = 0;
  dyad.colwise().norm().maxCoeff(&longest);
  return dyad.col(longest).normalized();
}

bool parallel(const Eigen::Vector3d& a, const Eigen::Vector3d& b) {
  return a.cross(b).norm() < 1e-2;
}

void add_direction(const Eigen::Vector3d& axis, std::vector<Eigen::Vector3d>& directions) {
  const auto known = [&](const Eigen::Vector3d& other) { return parallel(axis, other); };
  if (axis.isZero() || std::any_of(directions.begin(), directions.end(), known)) return;
  directions.push_back(axis);
}

// What the name of a group rests on.
struct Census {
  int proper = 0, improper = 0, mirrors = 0, highest = 1;
  bool inversion = false, horizontal = false;   // a mirror across an axis of the highest order
  std::vector<Eigen::Vector3d> high;            // axes of order 3 and more
  std::vector<Eigen::Vector3d> principal = {};  // axes of the highest order
};

Census census_of(const Group& group) {
  Census census;
  for (const auto& [op, images] : group) {
    const bool is_proper = op.determinant() > 0.0;
    ++(is_proper ? census.proper : census.improper);
    census.inversion = census.inversion || is_inversion(op);
    census.mirrors += is_mirror(op) ? 1 : 0;
    if (!is_proper) continue;
    const int order = order_of(op);
    if (order >= 3) add_direction(axis_of(op), census.high);
    if (order > census.highest) census.principal.clear();
    census.highest = std::max(census.highest, order);
    if (order == census.highest) add_direction(axis_of(op), census.principal);
  }
  for (const auto& [op, images] : group) {
    if (!is_mirror(op)) continue;
    for (const Eigen::Vector3d& axis : census.principal) {
      census.horizontal = census.horizontal || parallel(axis, axis_of(op));
    }
  }
  return census;
}

std::string cubic_symbol(const Census& census) {
  if (census.proper > 24) return census.improper > 0 ? "Ih" : "I";
  if (census.proper > 12) return census.improper > 0 ? "Oh" : "O";
  if (census.improper == 0) return "T";
  return census.inversion ? "Th" : "Td";
}

Group all_operations(const Shape& shape, double tolerance) {
  Group group = only_identity(shape);
  const std::vector<int> shell = shells(shape, tolerance);
  const Anchors anchors = anchors_of(shape, shell);
  const Eigen::Vector3d first = shape.x.col(anchors.first), second = shape.x.col(anchors.second);
  if (anchors.first == anchors.second) return group;
  const Eigen::Matrix3d from = frame_of(first, second);
  // Where the two anchors are off by the tolerance, atoms farther out are off by more.
  const double lever = shape.x.colwise().norm().maxCoeff() /
                       std::min(first.norm(), first.normalized().cross(second).norm());
  const double reach = std::min(0.1, tolerance * (2.0 + 4.0 * lever));
  for (Eigen::Index a = 0; a < shape.x.cols(); ++a) {
    if (shell[static_cast<std::size_t>(a)] != shell[static_cast<std::size_t>(anchors.first)]) {
      continue;
    }
    for (Eigen::Index b = 0; b < shape.x.cols(); ++b) {
      const bool is_like =
          shell[static_cast<std::size_t>(b)] == shell[static_cast<std::size_t>(anchors.second)];
      const double stretch = (shape.x.col(a) - shape.x.col(b)).norm() - (first - second).norm();
      if (a == b || !is_like || std::abs(stretch) > 2.0 * tolerance) continue;
      const Eigen::Matrix3d to = frame_of(shape.x.col(a), shape.x.col(b));
      for (const double side : {1.0, -1.0}) {
        const Eigen::Matrix3d guess =
            to * Eigen::Vector3d(1, 1, side).asDiagonal() * from.transpose();
        try_operation(shape, shell, guess, tolerance, reach, group);
      }
    }
  }
  return group;
}

using Permutation = std::pair<bool, std::vector<int>>;  // whether proper, and the images

Permutation product(const Permutation& g, const Permutation& h) {
  Permutation result = {g.first == h.first, g.second};
  for (int& atom : result.second) atom = h.second[static_cast<std::size_t>(atom) - 1];
  return result;
}

bool is_group(const Group& group) {
  std::set<Permutation> all, made;
  for (const auto& [op, images] : group) all.insert({op.determinant() > 0.0, images});
  made.insert({true, group.front().images});
  for (const Permutation& h : all) {
    // What is closed under some is closed under what these make.
    if (made.count(h) > 0) continue;
    const auto stays = [&](const Permutation& g) { return all.count(product(g, h)) > 0; };
    if (!std::all_of(all.begin(), all.end(), stays)) return false;
    for (const Permutation& before : std::vector(made.begin(), made.end())) {
      Permutation next = product(before, h);
      while (made.insert(next).second) next = product(next, h);
    }
  }
  return true;
}

}  // namespace

Eigen::Vector3d line_of(const Shape& shape, double tolerance) {
  Eigen::Index farthest = 0;
  shape.x.colwise().norm().maxCoeff(&farthest);
  const Eigen::Vector3d line = shape.x.col(farthest).normalized();
  const Eigen::Matrix3Xd off = shape.x - line * (line.transpose() * shape.x);
  return off.colwise().norm().maxCoeff() <= tolerance ? line : Eigen::Vector3d::Zero();
}

Group symmetrise_all(Shape& shape, double tolerance) {
  Group group = all_operations(shape, tolerance);
  while (!is_group(group)) group = all_operations(shape, tolerance /= 2.0);
  // Each operation is fitted to the atoms, so that it becomes exact as they become symmetric.
  constexpr int rounds = 5;
  for (int i = 0; i < rounds && group.size() > 1; ++i) {
    for (Operation& op : group) {
      op.matrix =
          analysis::best_turn(permuted(shape.x, op.images), shape.x, op.matrix.determinant());
    }
    symmetrise(group, shape.x);
  }
  return group;
}

std::vector<Eigen::Vector3d> directions_of(const Group& group) {
  std::vector<Eigen::Vector3d> directions;
  for (const auto& [op, images] : group) add_direction(axis_of(op), directions);
  return directions;
}

std::string symbol_of(const Group& group) {
  const Census census = census_of(group);
  if (census.high.size() > 1) return cubic_symbol(census);
  const std::string n = std::to_string(census.highest);
  if (census.highest > 1 && census.proper > census.highest) {
    if (census.improper == 0) return "D" + n;
    return "D" + n + (census.horizontal ? "h" : "d");
  }
  if (census.improper == 0) return "C" + n;
  if (census.highest == 1) return census.mirrors > 0 ? "Cs" : "Ci";
  if (census.horizontal) return "C" + n + "h";
  return census.mirrors > 0 ? "C" + n + "v" : "S" + std::to_string(2 * census.highest);
}

std::string symbol_of_linear(const Shape& shape, double tolerance) {
  const Eigen::Matrix3d inversion = -Eigen::Matrix3d::Identity();
  return analysis::images(shape.x, shape.labels, inversion, tolerance).empty() ? "Cinfv" : "Dinfh";
}

}  // namespace displace
