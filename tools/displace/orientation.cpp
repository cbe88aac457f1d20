#include "displace/orientation.hpp"

#include <algorithm>
#include <tuple>

#include "displace/frames.hpp"

namespace displace {

namespace {

// Off-diagonal elements of the inertia tensor below this part of the largest one: far above what
// rounding leaves (1e-12), far below what a turn by 0.01 degrees makes of it (1e-4).
constexpr double principal_within = 1e-6;

Eigen::Vector3d centre_of_mass(const Eigen::Matrix3Xd& x, const Eigen::VectorXd& masses) {
  return x * masses / masses.sum();
}

Eigen::Matrix3d inertia_of(const Eigen::Matrix3Xd& x, const Eigen::VectorXd& masses) {
  const Eigen::Matrix3Xd r = x.colwise() - centre_of_mass(x, masses);
  const Eigen::Matrix3d second = r * masses.asDiagonal() * r.transpose();
  return second.trace() * Eigen::Matrix3d::Identity() - second;
}

Eigen::Matrix3d principal_turn(const Eigen::Matrix3Xd& x, const Eigen::VectorXd& masses) {
  const Eigen::SelfAdjointEigenSolver<Eigen::Matrix3d> solver(inertia_of(x, masses));
  Eigen::Matrix3d turn = solver.eigenvectors().transpose();
  if (turn.determinant() < 0.0) turn.row(2) *= -1.0;
  return turn;
}

bool lies_in_principal_axes(const Eigen::Matrix3Xd& x, const Eigen::VectorXd& masses) {
  const Eigen::Matrix3d inertia = inertia_of(x, masses);
  const Eigen::Vector3d off(inertia(0, 1), inertia(0, 2), inertia(1, 2));
  return off.cwiseAbs().maxCoeff() <= principal_within * inertia.diagonal().maxCoeff();
}

// Operations that turn axes into axes, and the geometry symmetrised over them.
Orientation symmetrised(const Shape& shape, const Request& request) {
  Orientation found;
  found.group = request.symmetry ? axis_operations(shape, request.tolerance) : only_identity(shape);
  found.x = shape.x;
  found.moved = symmetrise(found.group, found.x);
  found.to_run = jobs_to_run(found.group);
  found.principal = lies_in_principal_axes(found.x, request.masses);
  return found;
}

Shape centred(const Molecule& molecule) {
  return {molecule.x.colwise() - molecule.x.rowwise().mean().eval(), molecule.numbers};
}

// The best of all turns that a molecule with these directions may want.
Orientation best_orientation(const Shape& shape, const Request& request,
                             const std::vector<Eigen::Vector3d>& directions) {
  Orientation best;
  double best_trace = 0.0;
  const Eigen::Matrix3d principal = nearest_turn(principal_turn(shape.x, request.masses));
  for (const Eigen::Matrix3d& turn : frames(directions, principal)) {
    Orientation found = symmetrised({turn * shape.x, shape.labels}, request);
    if (request.axes == Axes::principal && !found.principal && best.to_run > 0) continue;
    const double trace = turn.trace();
    const bool is_better =
        best.to_run == 0 || std::make_tuple(found.to_run, !found.principal, -trace) <
                                std::make_tuple(best.to_run, !best.principal, -best_trace - 1e-9);
    if (!is_better) continue;
    best = std::move(found);
    best_trace = trace;
  }
  best.x.colwise() -= centre_of_mass(best.x, request.masses);
  return best;
}

}  // namespace

int jobs_to_run(const Group& group) {
  const std::size_t natom = group.front().images.size();
  int to_run = 0;
  for (std::size_t a = 0; a < natom; ++a) {
    for (int step = 0; step < 6; ++step) {
      // The steps from which this one comes: the first of them is run.
      const auto number = [](std::size_t atom, int axis, bool positive) {
        return 6 * atom + 2 * static_cast<std::size_t>(axis) + (positive ? 1 : 0);
      };
      const std::size_t own = number(a, step / 2, step % 2 == 1);
      const bool is_first = std::all_of(group.begin(), group.end(), [&](const Operation& op) {
        Eigen::Index axis = 0;
        op.matrix.row(step / 2).cwiseAbs().maxCoeff(&axis);
        const bool same = op.matrix(step / 2, axis) > 0.0;
        const auto source = static_cast<std::size_t>(op.images[a] - 1);
        return number(source, static_cast<int>(axis), (step % 2 == 1) == same) >= own;
      });
      to_run += is_first ? 1 : 0;
    }
  }
  return to_run;
}

Orientation orient(const Molecule& molecule, const Request& request) {
  Shape shape = centred(molecule);
  std::vector<Eigen::Vector3d> directions;
  std::string symbol;
  double moved = 0.0;
  if (request.symmetry) {
    Shape symmetric = shape;
    const Eigen::Vector3d line = line_of(shape, request.tolerance);
    if (line.isZero()) {
      const Group group = symmetrise_all(symmetric, request.tolerance);
      directions = directions_of(group);
      symbol = symbol_of(group);
    } else {
      symmetric.x = line * (line.transpose() * shape.x);
      directions = {line};
      symbol = symbol_of_linear(shape, request.tolerance);
    }
    if (request.axes != Axes::keep) {
      moved = (symmetric.x - shape.x).colwise().norm().maxCoeff();
      shape = symmetric;
    }
  }
  const bool keep = request.axes == Axes::keep;
  Orientation found =
      keep ? symmetrised(shape, request) : best_orientation(shape, request, directions);
  if (keep) found.x.colwise() += molecule.x.rowwise().mean().eval();
  found.symbol = symbol;
  found.moved = std::max(found.moved, moved);
  return found;
}

}  // namespace displace
