#include "analysis/operations.hpp"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace analysis {

Eigen::Map<const Eigen::Matrix3d> operation(const zandor::RunData& run, int k) {
  return Eigen::Map<const Eigen::Matrix3d>(run.op.column(1, k));
}

bool alike(const Eigen::Matrix3d& a, const Eigen::Matrix3d& b) {
  return std::equal(a.data(), a.data() + 9, b.data(),
                    [](double x, double y) { return std::abs(x - y) <= same_within; });
}

std::size_t place_of(const Eigen::Matrix3d& matrix, const Matrices& among) {
  const auto found = std::find_if(among.begin(), among.end(),
                                  [&](const Eigen::Matrix3d& m) { return alike(m, matrix); });
  return static_cast<std::size_t>(found - among.begin());
}

double off_orthogonal(const Eigen::Matrix3d& op) {
  return (op * op.transpose() - Eigen::Matrix3d::Identity()).cwiseAbs().maxCoeff();
}

std::vector<int> images(const Eigen::Matrix3Xd& x, const std::vector<int>& labels,
                        const Eigen::Matrix3d& op, double tolerance) {
  const Eigen::Index n = x.cols();
  std::vector<Eigen::Index> by_x(static_cast<std::size_t>(n));
  std::iota(by_x.begin(), by_x.end(), 0);
  std::sort(by_x.begin(), by_x.end(),
            [&](Eigen::Index a, Eigen::Index b) { return x(0, a) < x(0, b); });
  std::vector<int> atoms;
  std::vector<char> taken(labels.size(), 0);
  for (Eigen::Index a = 0; a < n; ++a) {
    const Eigen::Vector3d place = op.transpose() * x.col(a);
    const auto first =
        std::lower_bound(by_x.begin(), by_x.end(), place.x() - tolerance,
                         [&](Eigen::Index b, double least) { return x(0, b) < least; });
    Eigen::Index nearest = -1;
    double best = tolerance * tolerance;
    for (auto b = first; b != by_x.end() && x(0, *b) <= place.x() + tolerance; ++b) {
      if (labels[static_cast<std::size_t>(*b)] != labels[static_cast<std::size_t>(a)]) continue;
      const double distance = (x.col(*b) - place).squaredNorm();
      if (distance > best) continue;
      best = distance;
      nearest = *b;
    }
    if (nearest < 0 || taken[static_cast<std::size_t>(nearest)] != 0) return {};
    taken[static_cast<std::size_t>(nearest)] = 1;
    atoms.push_back(static_cast<int>(nearest) + 1);
  }
  return atoms;
}

int step_sign(const zandor::RunData& run, int i) {
  return (i % 2 == 0) == (run.disp_sign == 1) ? 1 : -1;
}

int image_source(const zandor::RunData& run, int i, int k, double tolerance) {
  const int ih = (i + 1) / 2;
  const Eigen::Vector3d direction =
      operation(run, k).transpose() * step_sign(run, i) * Eigen::Vector3d::Unit((ih - 1) % 3);
  const int atom = run.atom_m((ih - 1) / 3 + 1, k);
  for (int axis = 0; axis < 3; ++axis) {
    const int negative = 6 * (atom - 1) + 2 * axis + 1;
    for (const int job : {negative, negative + 1}) {
      const Eigen::Vector3d step = step_sign(run, job) * Eigen::Vector3d::Unit(axis);
      if ((direction - step).cwiseAbs().maxCoeff() <= tolerance) return job;
    }
  }
  return 0;
}

}  // namespace analysis
