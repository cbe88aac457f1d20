#include "check/support/projected_modes.hpp"

#include <cmath>

#include "flib/projtrm_rot.hpp"
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
  modes.force_constants =
      root.asDiagonal() * (raw.h + raw.h.transpose()) * (root / 2.0).asDiagonal();
  int info = 0;
  flib::projtrm_rot(run.natom, run.x.data(), run.mass.data(), modes.force_constants.data(), info);
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
