#include "analysis/best_turn.hpp"

namespace analysis {

Eigen::Matrix3d best_turn(const Eigen::Matrix3Xd& from, const Eigen::Matrix3Xd& to,
                          double determinant) {
  const Eigen::JacobiSVD<Eigen::Matrix3d> svd(to * from.transpose(),
                                              Eigen::ComputeFullU | Eigen::ComputeFullV);
  Eigen::Vector3d signs = Eigen::Vector3d::Ones();
  const double found = (svd.matrixU() * svd.matrixV().transpose()).determinant();
  if (found * determinant < 0.0) signs(2) = -1.0;
  return svd.matrixU() * signs.asDiagonal() * svd.matrixV().transpose();
}

}  // namespace analysis
