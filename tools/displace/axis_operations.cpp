#include <algorithm>
#include <cmath>

#include "analysis/operations.hpp"
#include "displace/symmetry.hpp"

namespace displace {

namespace {

// The 48 signed permutation matrices, the identity first.
analysis::Matrices signed_permutations() {
  analysis::Matrices all;
  int axes[] = {0, 1, 2};
  do {
    for (int signs = 0; signs < 8; ++signs) {
      Eigen::Matrix3d& matrix = all.emplace_back(Eigen::Matrix3d::Zero());
      for (int k = 0; k < 3; ++k) matrix(k, axes[k]) = (signs >> k) % 2 == 0 ? 1.0 : -1.0;
    }
  } while (std::next_permutation(axes, axes + 3));
  return all;
}

bool is_axis_group(const Group& group) {
  analysis::Matrices matrices;
  for (const Operation& operation : group) matrices.push_back(operation.matrix);
  return std::all_of(matrices.begin(), matrices.end(), [&](const Eigen::Matrix3d& g) {
    return std::all_of(matrices.begin(), matrices.end(), [&](const Eigen::Matrix3d& h) {
      return analysis::place_of(g * h, matrices) < matrices.size();
    });
  });
}

}  // namespace

Group only_identity(const Shape& shape) {
  const Eigen::Matrix3d one = Eigen::Matrix3d::Identity();
  return {{one, analysis::images(shape.x, shape.labels, one, 0.0)}};
}

Group axis_operations(const Shape& shape, double tolerance) {
  static const analysis::Matrices tried = signed_permutations();
  Group group;
  do {
    group.clear();
    for (const Eigen::Matrix3d& matrix : tried) {
      std::vector<int> images = analysis::images(shape.x, shape.labels, matrix, tolerance);
      if (!images.empty()) group.push_back({matrix, std::move(images)});
    }
    tolerance /= 2.0;
  } while (!is_axis_group(group));
  return group;
}

double symmetrise(const Group& group, Eigen::Matrix3Xd& x) {
  Eigen::Matrix3Xd mean = Eigen::Matrix3Xd::Zero(3, x.cols());
  for (const Operation& operation : group) {
    for (Eigen::Index a = 0; a < x.cols(); ++a) {
      mean.col(a) += operation.matrix * x.col(operation.images[static_cast<std::size_t>(a)] - 1);
    }
  }
  mean /= static_cast<double>(group.size());
  mean.swap(x);
  return (mean - x).colwise().norm().maxCoeff();
}

std::string caption_of(const Eigen::Matrix3d& matrix) {
  const bool improper = matrix.determinant() < 0.0;
  const Eigen::Matrix3d turn = improper ? Eigen::Matrix3d(-matrix) : matrix;
  const auto cosine = static_cast<int>(std::lround(turn.trace()));  // 1 + 2 cos, -1 to 3
  if (cosine == 3) return improper ? "i" : "E";
  // Twice the sine along the axis; of a half turn, which has none, the axis from the matrix.
  Eigen::Vector3d axis(turn(2, 1) - turn(1, 2), turn(0, 2) - turn(2, 0), turn(1, 0) - turn(0, 1));
  if (cosine == -1) {
    const Eigen::Matrix3d projector = turn + Eigen::Matrix3d::Identity();
    axis = projector.col(0).norm() > 0.5   ? projector.col(0)
           : projector.col(1).norm() > 0.5 ? projector.col(1)
                                           : projector.col(2);
  }
  axis /= axis.cwiseAbs().maxCoeff();
  constexpr const char* proper_names[] = {"C2", "C3", "C4"};
  constexpr const char* improper_names[] = {"sigma", "S6", "S4"};
  std::string caption = (improper ? improper_names : proper_names)[cosine + 1];
  for (int k = 0; k < 3; ++k)
    caption += (k == 0 ? "(" : ",") + std::to_string(std::lround(axis(k)));
  return caption + ")";
}

}  // namespace displace
