#include "analysis/vibrations.hpp"

#include <algorithm>
#include <cmath>
#include <tuple>
#include <utility>

#include "flib/ddiag.hpp"
#include "flib/units_of_measure.hpp"

namespace analysis {

namespace {

using Matrix = Eigen::Map<const Eigen::MatrixXd>;
using Vector = Eigen::Map<const Eigen::VectorXd>;

// Gives every vibration (row) the mode of the report (column) that it is most alike, each once.
std::vector<int> pair_modes(const Eigen::MatrixXd& alike) {
  struct Candidate {
    double overlap;
    int row, column;
  };
  const auto rows = static_cast<int>(alike.rows());
  const auto columns = static_cast<int>(alike.cols());
  std::vector<Candidate> candidates;
  candidates.reserve(static_cast<std::size_t>(alike.size()));
  for (int column = 0; column < columns; ++column) {
    for (int row = 0; row < rows; ++row) {
      candidates.push_back({std::abs(alike(row, column)), row, column});
    }
  }
  std::sort(candidates.begin(), candidates.end(), [](const Candidate& a, const Candidate& b) {
    return std::tuple(-a.overlap, a.row, a.column) < std::tuple(-b.overlap, b.row, b.column);
  });
  std::vector<int> mode(static_cast<std::size_t>(rows), 0);
  std::vector<char> taken(static_cast<std::size_t>(columns), 0);
  for (const Candidate& pair : candidates) {
    int& number = mode[static_cast<std::size_t>(pair.row)];
    char& used = taken[static_cast<std::size_t>(pair.column)];
    if (number != 0 || used != 0) continue;
    number = pair.column + 1;
    used = 1;
  }
  return mode;
}

bool degenerate(double a, double b) {
  return std::abs(a - b) * flib::wavenumbers_per_au <= degenerate_within;
}

// Degenerate vibrations may be any mixture of degenerate modes of the report: of such numbers the
// smallest goes first.
void order_degenerate(const Vector& report_frequency, Vibrations& vibrations) {
  std::vector<int>& mode = vibrations.report_mode;
  const Eigen::VectorXd& frequency = vibrations.frequency;
  for (std::size_t k = 0; k < mode.size(); ++k) {
    for (std::size_t l = k; l > 0 && mode[l] < mode[l - 1]; --l) {
      const auto row = static_cast<Eigen::Index>(l);
      if (!degenerate(frequency(row), frequency(row - 1)) ||
          !degenerate(report_frequency(mode[l] - 1), report_frequency(mode[l - 1] - 1))) {
        break;
      }
      std::swap(mode[l], mode[l - 1]);
    }
  }
}

void compare_with_report(const zandor::RunData& run, Vibrations& vibrations) {
  const Matrix report_modes(run.cp.data(), run.n3, run.n3);
  const Vector report_frequency(run.freqp.data(), run.n3);
  const Eigen::MatrixXd alike = vibrations.modes.transpose() * report_modes;
  vibrations.report_mode = pair_modes(alike);
  order_degenerate(report_frequency, vibrations);
  vibrations.overlap.resize(alike.rows());
  for (Eigen::Index k = 0; k < alike.rows(); ++k) {
    const int mode = vibrations.report_mode[static_cast<std::size_t>(k)] - 1;
    const Eigen::ArrayXd apart =
        (report_frequency.array() - report_frequency(mode)).abs() * flib::wavenumbers_per_au;
    const Eigen::ArrayXd share = alike.row(k).transpose().array().square();
    const double length = std::sqrt((apart <= degenerate_within).select(share, 0.0).sum());
    vibrations.overlap(k) = std::min(length, 1.0);
    if (alike(k, mode) < 0.0) vibrations.modes.col(k) *= -1.0;
  }
}

}  // namespace

Eigen::MatrixXd mass_weighted_force_constants(const zandor::RunData& run) {
  const Eigen::VectorXd weight = Vector(run.sqtmass.data(), run.n3).cwiseInverse();
  return weight.asDiagonal() * Matrix(run.hess.data(), run.n3, run.n3) * weight.asDiagonal();
}

Eigenmodes eigenmodes(const Eigen::MatrixXd& weighted) {
  const auto n = static_cast<int>(weighted.rows());
  Eigenmodes modes{Eigen::VectorXd(n), Eigen::MatrixXd(n, n)};
  Eigen::VectorXd lambda(n), work(n);
  int not_converged = 0;
  flib::tred2e(n, n, weighted.data(), lambda.data(), work.data(), modes.vectors.data());
  flib::tql2e(n, n, lambda.data(), work.data(), modes.vectors.data(), not_converged);
  if (not_converged != 0 || !lambda.allFinite()) {
    io::fatal_stop(
        "expected vibrations that can be told from the rigid motions, found a geometry or "
        "force constants too large for it");
  }
  modes.frequency = lambda.cwiseAbs().cwiseSqrt().cwiseProduct(lambda.cwiseSign());
  return modes;
}

Eigenmodes modes_beside(const RigidMotions& rigid, Eigen::MatrixXd weighted) {
  const Eigen::Index n3 = weighted.rows();
  const Eigen::Index count = n3 - rigid.rank;
  // Its reflections turn the rigid motions into the first coordinates.
  const Eigen::HouseholderQR<Eigen::MatrixXd> qr(rigid.basis);
  weighted.applyOnTheLeft(qr.householderQ().adjoint());
  weighted.applyOnTheRight(qr.householderQ());
  weighted = weighted.bottomRightCorner(count, count).eval();
  Eigenmodes modes = eigenmodes(weighted);
  weighted.setZero(n3, count);
  weighted.bottomRows(count) = modes.vectors;
  weighted.applyOnTheLeft(qr.householderQ());
  modes.vectors = std::move(weighted);
  return modes;
}

Vibrations exact_vibrations(const zandor::RunData& run, const RigidMotions& rigid) {
  Eigenmodes modes = modes_beside(rigid, mass_weighted_force_constants(run));
  Vibrations vibrations{std::move(modes.frequency), std::move(modes.vectors), {}, {}};
  if (vibrations.frequency.size() > 0) compare_with_report(run, vibrations);  // more than one atom
  return vibrations;
}

std::vector<std::vector<Eigen::Index>> degenerate_groups(const Vibrations& vibrations) {
  const Eigen::VectorXd& frequency = vibrations.frequency;
  std::vector<std::vector<Eigen::Index>> groups;
  bool in_group = false;
  for (Eigen::Index k = 1; k < frequency.size(); ++k) {
    const bool same = frequency(k - 1) > 0.0 && degenerate(frequency(k), frequency(k - 1));
    if (same && !in_group) groups.push_back({k - 1});
    if (same) groups.back().push_back(k);
    in_group = same;
  }
  return groups;
}

}  // namespace analysis
