#include "ht/other_state.hpp"

#include <charconv>
#include <cmath>

#include "analysis/best_turn.hpp"
#include "flib/units_of_measure.hpp"

namespace ht {

namespace {

using Places = Eigen::Map<const Eigen::Matrix3Xd>;

void check_atoms(const std::string& file, const OtherState& state, const zandor::RunData& run) {
  for (std::size_t a = 0; a < state.numbers.size(); ++a) {
    if (state.numbers[a] == run.nat[a]) continue;
    io::fatal_stop({file}, "expected atomic number ", run.nat[a], " for atom ", a + 1,
                   " as in files.out, found ", state.numbers[a]);
  }
}

// The turn that lays the places onto those of the run, both counted from their centres of mass.
// The laid ones become those of the run.
Eigen::Matrix3d lay_onto(zandor::RunData& run, const Places& places, Fit& fit) {
  const Eigen::Map<const Eigen::VectorXd> mass(run.mass.data(), run.natom);
  Eigen::Map<Eigen::Matrix3Xd> x(run.x.data(), 3, run.natom);
  const Eigen::Vector3d centre = x * mass / mass.sum();
  const Eigen::Matrix3Xd to = x.colwise() - centre;
  const Eigen::Matrix3Xd from = places.colwise() - places * mass / mass.sum();
  Eigen::Matrix3d turn = analysis::best_turn(from * mass.asDiagonal(), to, 1.0);
  const Eigen::RowVectorXd apart = flib::angstrom_per_bohr * (turn * from - to).colwise().norm();
  Eigen::Index atom = 0;
  fit.farthest = apart.maxCoeff(&atom);
  fit.atom = static_cast<int>(atom) + 1;
  fit.distance = apart.norm() / std::sqrt(run.natom);
  x = (turn * from).colwise() + centre;
  return turn;
}

[[noreturn]] void stop_at_distance(const std::string& file, double within, const Fit& fit) {
  const auto shown = [](double value) { return io::rounded(value, std::chars_format::fixed, 6); };
  io::fatal_stop({file}, "expected a geometry within ", within,
                 " Angstrom (root mean square) of that of the jobs (see --within), found one ",
                 shown(fit.distance), " away, atom ", fit.atom, " by ", shown(fit.farthest));
}

}  // namespace

Fit take_modes(const std::string& file, double within,
               const std::vector<analysis::MassChange>& changes, zandor::RunData& run) {
  const OtherState state = read_other_state(file, run.natom);
  check_atoms(file, state, run);
  Fit fit;
  Eigen::Map<Eigen::VectorXd> mass(run.mass.data(), run.natom);
  const Eigen::VectorXd before = mass;
  mass = flib::electron_masses_per_amu *
         Eigen::Map<const Eigen::VectorXd>(state.masses.data(), run.natom);
  for (int k = 1; k <= run.n3; ++k) run.sqtmass(k) = std::sqrt(run.mass((k - 1) / 3 + 1));
  analysis::change_masses(changes, run);
  fit.mass_difference = (mass - before).cwiseAbs().maxCoeff() / flib::electron_masses_per_amu;
  const Eigen::Matrix3d turn = lay_onto(run, {state.places.data(), 3, run.natom}, fit);
  if (!(fit.distance <= within)) stop_at_distance(file, within, fit);
  const Eigen::Map<const Eigen::MatrixXd> constants(state.force_constants.data(), run.n3, run.n3);
  Eigen::Map<Eigen::MatrixXd> hess(run.hess.data(), run.n3, run.n3);
  for (Eigen::Index j = 0; j < run.n3; j += 3) {
    for (Eigen::Index i = 0; i < run.n3; i += 3) {
      hess.block<3, 3>(i, j) = turn * constants.block<3, 3>(i, j) * turn.transpose();
    }
  }
  return fit;
}

}  // namespace ht
