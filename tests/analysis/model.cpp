#include "analysis/model.hpp"

#include <cmath>
#include <vector>

#include "flib/units_of_measure.hpp"
#include "zandor/vibrational_analysis.hpp"

namespace model {

namespace {

constexpr double step = 0.01;

Eigen::MatrixXd force_constants(const Molecule& molecule) {
  const Eigen::Index natom = molecule.x.cols();
  Eigen::MatrixXd hessian = Eigen::MatrixXd::Zero(3 * natom, 3 * natom);
  for (Eigen::Index a = 0; a < natom; ++a) {
    for (Eigen::Index b = 0; b < a; ++b) {
      Eigen::VectorXd stretch = Eigen::VectorXd::Zero(3 * natom);
      stretch.segment<3>(3 * a) = (molecule.x.col(a) - molecule.x.col(b)).normalized();
      stretch.segment<3>(3 * b) = -stretch.segment<3>(3 * a);
      hessian +=
          (0.3 + molecule.charge(a) * molecule.charge(b) / 2) * stretch * stretch.transpose();
    }
  }
  return hessian;
}

void fill_jobs(const Molecule& molecule, zandor::RunData& run) {
  const Eigen::MatrixXd hessian = force_constants(molecule);
  const Eigen::Vector3d reference = molecule.x * molecule.charge;
  Eigen::Map<Eigen::Vector3d>(run.dipole0.data()) = reference;
  run.jobs.resize(static_cast<std::size_t>(run.n6) + 1);
  for (zandor::Job& job : run.jobs) job.is_calc = true;
  for (int i = 1; i <= run.n6; ++i) {
    const int ih = (i + 1) / 2;
    const bool positive = (i % 2 == 0) == (run.disp_sign == 1);
    const double moved = positive ? step : -step;
    Eigen::Map<Eigen::VectorXd>(run.force.column(1, i), run.n3) = -moved * hessian.col(ih - 1);
    Eigen::Map<Eigen::Vector3d>(run.tdip.column(i)) =
        reference + moved * molecule.charge((ih - 1) / 3) * Eigen::Vector3d::Unit((ih - 1) % 3);
  }
}

Molecule with_charges(Eigen::Matrix3Xd x, const std::vector<double>& charges) {
  Molecule molecule;
  molecule.x = std::move(x);
  // Numbers with many digits: print rounding is told from the digits.
  molecule.charge =
      0.9876543219 * Eigen::Map<const Eigen::VectorXd>(charges.data(), molecule.x.cols());
  molecule.mass = 1822.88853 * (Eigen::VectorXd::LinSpaced(molecule.x.cols(), 1, 16));
  return molecule;
}

}  // namespace

Molecule general() {
  Eigen::Matrix3Xd x(3, 5);
  x << 0, 2.1, -0.7, 0.4, -1.9, 0, 0.3, 1.8, -1.1, -0.8, 0, -0.2, 0.9, 1.9, -1.3;
  return with_charges(x, {0.31, -0.22, 0.17, -0.38, 0.12});
}

Molecule dark() {
  Molecule molecule = general();
  Eigen::Matrix<double, 4, 5> conditions;
  conditions << molecule.x, Eigen::RowVectorXd::Ones(5);
  molecule.charge = 0.2 * Eigen::FullPivLU<Eigen::MatrixXd>(conditions).kernel().normalized();
  return molecule;
}

Molecule dark_square() {
  Eigen::Matrix3Xd x(3, 4);
  x << 1.2, -1.2, -1.2, 1.2, 1.2, 1.2, -1.2, -1.2, 0, 0, 0, 0;
  return with_charges(x, {0.3, -0.3, 0.3, -0.3});
}

Molecule line() {
  Eigen::Matrix3Xd x(3, 3);
  x << 0, 1, -1.5, 0, 2, -3, 0, -0.5, 0.75;
  return with_charges(x, {0.1, 0.2, -0.3});
}

Molecule triangle() {
  Eigen::Matrix3Xd x(3, 3);
  x << 1, -0.5, -0.5, 0, std::sqrt(0.75), -std::sqrt(0.75), 0, 0, 0;
  Molecule molecule = with_charges(x, {0, 0, 0});
  molecule.mass.setConstant(2000);
  return molecule;
}

zandor::RunData run_of(const Molecule& molecule, int disp_sign) {
  zandor::RunData run;
  run.natom = static_cast<int>(molecule.x.cols());
  run.n3 = 3 * run.natom;
  run.n6 = 6 * run.natom;
  run.dx = step;
  run.disp_sign = disp_sign;
  zandor::allocate_run_arrays(run);
  run.symbol.resize(static_cast<std::size_t>(run.natom), io::Text<2>("H"));
  for (int a = 1; a <= run.natom; ++a) {
    run.mass(a) = molecule.mass(a - 1);
    for (int k = 1; k <= 3; ++k) {
      run.x(k, a) = molecule.x(k - 1, a - 1);
      run.xa(k, a) = run.x(k, a) * flib::angstrom_per_bohr;
      run.sqtmass(3 * (a - 1) + k) = std::sqrt(run.mass(a));
    }
  }
  fill_jobs(molecule, run);
  zandor::analyse_vibrations(run);
  return run;
}

}  // namespace model
