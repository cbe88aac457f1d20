#include "collect/frame.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "analysis/best_turn.hpp"
#include "io/fatal.hpp"

namespace collect {

namespace {

struct Turn {
  Match match;
  bool needed = false;
  Eigen::Matrix3d matrix = Eigen::Matrix3d::Identity();
};

Eigen::Matrix3Xd centred(const Eigen::Matrix3Xd& places) {
  return places.colwise() - places.rowwise().mean();
}

bool compare_places(const Eigen::Matrix3Xd& a, const Eigen::Matrix3Xd& b, Match& match) {
  Eigen::Index row = 0, column = 0;
  match.largest = (a - b).cwiseAbs().maxCoeff(&row, &column);
  match.atom = static_cast<int>(column) + 1;
  match.found = match.largest <= place_tolerance;
  return match.found;
}

Turn find_turn(const Eigen::Matrix3Xd& places, const Eigen::Matrix3Xd& expected) {
  const Eigen::Matrix3Xd from = centred(places), to = centred(expected);
  Turn turn;
  if (compare_places(from, to, turn.match)) return turn;
  turn.matrix = analysis::best_turn(from, to, 1.0);
  turn.needed = true;
  compare_places(turn.matrix * from, to, turn.match);
  const double cosine = std::clamp((turn.matrix.trace() - 1.0) / 2.0, -1.0, 1.0);
  turn.match.angle = std::acos(cosine) * 180.0 / std::numbers::pi;
  return turn;
}

// Atoms on one line leave a turn about it open.
bool stand_on_one_line(const Eigen::Matrix3Xd& places) {
  const Eigen::JacobiSVD<Eigen::Matrix3d> svd(centred(places) * centred(places).transpose());
  return svd.singularValues()(1) <= 1e-6 * svd.singularValues()(0);
}

void turn_mark(const Eigen::Matrix3d& turn, SignMark& mark) {
  std::vector<double>& v = mark.values;
  if (mark.kind == SignMark::Kind::density) {
    v.clear();  // its functions point elsewhere
  } else if (mark.kind == SignMark::Kind::vector) {
    Eigen::Map<Eigen::Vector3d> vector(v.data());
    vector = (turn * vector).eval();
  } else if (mark.kind == SignMark::Kind::tensor) {
    Eigen::Matrix3d tensor;
    tensor << v[0], v[1], v[2], v[1], v[3], v[4], v[2], v[4], v[5];
    tensor = (turn * tensor * turn.transpose()).eval();
    v = {tensor(0, 0), tensor(0, 1), tensor(0, 2), tensor(1, 1), tensor(1, 2), tensor(2, 2)};
  }
}

void check_elements(const std::string& file, const std::vector<int>& numbers,
                    const JobOutput& output) {
  for (std::size_t a = 0; a < numbers.size() && a < output.numbers.size(); ++a) {
    if (numbers[a] == 0 || output.numbers[a] == 0 || numbers[a] == output.numbers[a]) continue;
    io::fatal_stop({file}, "expected atomic number " + std::to_string(numbers[a]) + " for atom " +
                               std::to_string(a + 1) + " as in files.out, found " +
                               std::to_string(output.numbers[a]));
  }
}

}  // namespace

Match match_geometry(const Eigen::Matrix3Xd& places, const Eigen::Matrix3Xd& expected) {
  return find_turn(places, expected).match;
}

Match bring_into_axes(const std::string& file, const std::vector<int>& numbers,
                      const Eigen::Matrix3Xd& expected, JobOutput& output) {
  check_elements(file, numbers, output);
  const Turn of_forces = find_turn(output.places, expected);
  if (!of_forces.match.found) return of_forces.match;
  const Turn of_dipole =
      output.places_of_dipole ? find_turn(*output.places_of_dipole, expected) : of_forces;
  if (!of_dipole.match.found) return of_dipole.match;
  if ((of_forces.needed || of_dipole.needed) && stand_on_one_line(expected)) {
    io::fatal_stop({file},
                   "expected the axes of the job list, found turned ones: the atoms stand on "
                   "one line, about which a turn cannot be told");
  }
  output.places = (of_forces.matrix * centred(output.places)).colwise() + expected.rowwise().mean();
  output.forces = of_forces.matrix * output.forces;
  output.dipole = of_dipole.matrix * output.dipole;
  if (of_dipole.needed) {
    for (SignMark& mark : output.marks) turn_mark(of_dipole.matrix, mark);
  }
  return of_dipole.needed ? of_dipole.match : of_forces.match;
}

}  // namespace collect
