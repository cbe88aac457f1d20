#include "check/support/projected_modes.hpp"

#include <cmath>

#include "flib/com.hpp"
#include "flib/formtrm1.hpp"
#include "flib/units_of_measure.hpp"

namespace check {

ProjectedModes project_modes(const JobData& jobs) {
  const zandor::RunData& run = jobs.run;
  const RawForceConstants& raw = jobs.context.raw;
  const Eigen::Map<const Eigen::VectorXd> mass(run.mass.data(), run.natom);
  if (!(mass.array() > 0.0).all()) return {"the projection needs the masses", {}, {}};
  if (!jobs.input) return {"the projection needs the input", {}, {}};
  if (static_cast<int>(raw.columns.size()) < run.n3) {
    return {"the projection needs all jobs", {}, {}};
  }
  const Eigen::VectorXd root =
      mass.cwiseInverse().cwiseSqrt().replicate(1, 3).reshaped<Eigen::RowMajor>();
  ProjectedModes modes;
  Eigen::MatrixXd& projected = modes.force_constants;
  projected = root.asDiagonal() * (raw.h + raw.h.transpose()) * (root / 2.0).asDiagonal();
  Eigen::MatrixXd x = Eigen::Map<const Eigen::MatrixXd>(run.x.data(), 3, run.natom);
  Eigen::MatrixXd rigid(run.n3, 6);
  int info = 0;
  flib::com(run.natom, run.mass.data(), x.data(), info);
  flib::formtrm1(run.natom, run.mass.data(), x.data(), rigid.data());
  projected -= rigid * (rigid.transpose() * projected);
  projected -= (projected * rigid) * rigid.transpose();
  const Eigen::SelfAdjointEigenSolver<Eigen::MatrixXd> solver(modes.force_constants,
                                                              Eigen::EigenvaluesOnly);
  const bool converged = solver.info() == Eigen::Success;
  modes.missing =
      converged ? "" : "an eigenvalue of the projected force constants does not converge";
  if (converged) modes.eigenvalues = solver.eigenvalues();
  return modes;
}

double wavenumber(double eigenvalue) {
  return std::copysign(std::sqrt(std::fabs(eigenvalue)), eigenvalue) * flib::wavenumbers_per_au;
}

}  // namespace check
