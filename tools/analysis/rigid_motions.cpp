#include "analysis/rigid_motions.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "flib/units_of_measure.hpp"

namespace analysis {

namespace {

constexpr double rank_tolerance = 1e-4;        // of the largest singular value
constexpr double turned_above = 1e-3;          // Angstrom
constexpr double degeneracy_tolerance = 1e-4;  // of the largest moment of inertia

using Matrix6d = Eigen::Matrix<double, 6, 6>;
using Geometry = Eigen::Map<const Eigen::Matrix3Xd>;

Geometry geometry_of(const zandor::RunData& run) { return {run.x.data(), 3, run.natom}; }

Eigen::Vector3d centre_of_mass(const zandor::RunData& run) {
  const Eigen::Map<const Eigen::VectorXd> mass(run.mass.data(), run.natom);
  return geometry_of(run) * mass / mass.sum();
}

Eigen::Matrix3d inertia_tensor(const zandor::RunData& run, const Eigen::Vector3d& centre) {
  Eigen::Matrix3d inertia = Eigen::Matrix3d::Zero();
  for (int a = 1; a <= run.natom; ++a) {
    const Eigen::Vector3d r = geometry_of(run).col(a - 1) - centre;
    inertia += run.mass(a) * (r.squaredNorm() * Eigen::Matrix3d::Identity() - r * r.transpose());
  }
  return inertia;
}

// The largest part of `direction` that lies in one of the spaces of equal moments.
double largest_share(const PrincipalAxes& principal, const Eigen::Vector3d& direction) {
  const double tolerance = degeneracy_tolerance * principal.moments.maxCoeff();
  double largest = 0.0;
  for (int first = 0; first < 3; ++first) {
    double share = 0.0;
    for (int k = 0; k < 3; ++k) {
      if (std::abs(principal.moments(k) - principal.moments(first)) > tolerance) continue;
      share += std::pow(principal.axes.col(k).dot(direction), 2);
    }
    largest = std::max(largest, share);
  }
  return std::sqrt(std::min(largest, 1.0));
}

// The space of the columns. Their triangular factor has their singular values, and is small.
RigidMotions orthonormalised(const Eigen::MatrixXd& vectors) {
  const Eigen::Index rows = std::min<Eigen::Index>(vectors.rows(), 6);
  const Eigen::HouseholderQR<Eigen::MatrixXd> qr(vectors);
  Matrix6d factor = Matrix6d::Zero();
  factor.topRows(rows).triangularView<Eigen::Upper>() = qr.matrixQR().topRows(rows);
  const Eigen::JacobiSVD<Matrix6d, Eigen::NoQRPreconditioner> svd(factor, Eigen::ComputeFullU);
  const Eigen::Vector<double, 6>& values = svd.singularValues();
  RigidMotions rigid;
  rigid.rank = static_cast<int>((values.array() > rank_tolerance * values(0)).count());
  rigid.basis = Eigen::MatrixXd::Zero(vectors.rows(), rigid.rank);
  rigid.basis.topRows(rows) = svd.matrixU().topLeftCorner(rows, rigid.rank);
  rigid.basis.applyOnTheLeft(qr.householderQ());
  return rigid;
}

}  // namespace

RigidMotions rigid_motions(const zandor::RunData& run) {
  const Geometry x = geometry_of(run);
  const Eigen::Vector3d centre = centre_of_mass(run);
  Eigen::MatrixXd vectors(run.n3, 6);
  for (int k = 0; k < 3; ++k) {
    const Eigen::Vector3d axis = Eigen::Vector3d::Unit(k);
    for (Eigen::Index a = 0; a < run.natom; ++a) {
      const double root = std::sqrt(run.mass(a + 1));
      vectors.col(k).segment<3>(3 * a) = root * axis;
      vectors.col(3 + k).segment<3>(3 * a) = root * axis.cross(x.col(a) - centre);
    }
  }
  // Rotations are measured against the largest of them, so that the rotation of a linear molecule
  // about its own axis, which is rounding, is not blown up to length 1.
  vectors.leftCols<3>() /= vectors.col(0).norm();
  const double longest = vectors.rightCols<3>().colwise().stableNorm().maxCoeff();
  if (longest > 0.0) vectors.rightCols<3>() /= longest;
  return orthonormalised(vectors);
}

Eigen::VectorXd rigid_weights(const RigidMotions& rigid,
                              const Eigen::Ref<const Eigen::MatrixXd>& eigenvectors) {
  return (rigid.basis.transpose() * eigenvectors).colwise().squaredNorm().transpose();
}

std::string turned_geometry(const zandor::RunData& run) {
  const Eigen::Map<const Eigen::Matrix3Xd> sign_file(run.xa.data(), 3, run.natom);
  const Eigen::Matrix3Xd apart = geometry_of(run) * flib::angstrom_per_bohr - sign_file;
  const double mismatch =
      (apart.colwise() - apart.rowwise().mean()).colwise().stableNorm().maxCoeff();
  if (!(mismatch > turned_above)) return {};
  return "the geometry is not that of " + io::printable(run.jobs[0].sgn_name.content()) +
         " shifted (" + io::rounded(mismatch) +
         " Angstrom apart): forces and dipoles are taken to belong to the axes of this one";
}

PrincipalAxes principal_axes(const zandor::RunData& run) {
  PrincipalAxes principal;
  const Eigen::Matrix3d inertia = inertia_tensor(run, centre_of_mass(run));
  const Eigen::SelfAdjointEigenSolver<Eigen::Matrix3d> solver(inertia);
  principal.moments = solver.eigenvalues();
  principal.axes = solver.eigenvectors();
  if (principal.axes.determinant() < 0.0) principal.axes.col(2) *= -1.0;
  if (!(inertia.trace() > 0.0)) return principal;  // one atom: every axis is principal
  for (int k = 0; k < 3; ++k) {
    const double angle = std::acos(largest_share(principal, Eigen::Vector3d::Unit(k)));
    principal.largest_angle = std::max(principal.largest_angle, angle * 180.0 / std::numbers::pi);
  }
  return principal;
}

}  // namespace analysis
