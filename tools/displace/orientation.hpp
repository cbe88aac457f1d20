// How the molecule is turned before it is displaced. An operation serves a job list only if it
// turns axes into axes, so the number of jobs to be run rests on how the molecule lies in them.
#pragma once

#include <Eigen/Dense>
#include <string>

#include "displace/molecule.hpp"
#include "displace/symmetry.hpp"

namespace displace {

enum class Axes { fewest, principal, keep };

struct Request {
  Axes axes = Axes::fewest;
  bool symmetry = true;
  double tolerance = 1e-3;  // Angstrom
  Eigen::VectorXd masses;   // amu
};

struct Orientation {
  Eigen::Matrix3Xd x;      // Angstrom, symmetrised
  Group group;             // operations that turn axes into axes
  std::string symbol;      // of the molecule, whatever its axes; empty when symmetry is not wanted
  int to_run = 0;          // displaced jobs
  double moved = 0.0;      // the largest move of an atom by the symmetrisation, Angstrom
  bool principal = false;  // the axes are principal axes of inertia
};

// keep: the geometry as it stands. principal: within principal axes of inertia, about the centre of
// mass, what turn is still free so that the fewest jobs remain. fewest: any turn; of those that
// leave equally few jobs one into principal axes, and of these the one nearest to the given axes.
Orientation orient(const Molecule& molecule, const Request& request);

// How many displaced jobs no operation derives from one before them.
int jobs_to_run(const Group& group);

}  // namespace displace
