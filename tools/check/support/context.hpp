// What several checks need of the jobs: formed once, before the first of them, and read by all.
#pragma once

#include <Eigen/Dense>
#include <map>
#include <string>
#include <vector>

#include "check/support/common_cause.hpp"
#include "flib/array.hpp"

namespace check {

// Force constants as the jobs give them, before they are made symmetric.
struct RawForceConstants {
  flib::Array<double, 2> h;      // n3 x n3, Hartree/Bohr**2: h(j, i) = -dF(j)/dx(i), true step
  std::vector<int> columns;      // the coordinates, from 1, both of whose jobs could be read
  std::vector<double> rounding;  // of coordinate ih at [ih - 1]: what print rounding may change in
                                 // an element of its column
};

// Net force, and net torque over the size of the molecule, Hartree/Bohr.
using Sums = Eigen::Matrix<double, 6, 1>;

// Those of every job that can be used, and what they are when nothing is wrong.
struct AllSums {
  std::map<int, Sums> of_job;
  Sums usual;
};

// The projected set: n3 x n3 mass-weighted force constants in the axes of the input, rigid motions
// taken out as the run does, and their eigenvalues, ascending. `missing` says why they are not
// there; empty when they are.
struct ProjectedModes {
  std::string missing = "the projected set has not been formed";
  Eigen::MatrixXd force_constants;
  Eigen::VectorXd eigenvalues;
};

struct Context {
  std::vector<char> wrong_images;  // of jobs 0..n6 those that find_wrong_images gives
  RawForceConstants raw;
  AllSums sums;
  CommonCause common_cause;
  ProjectedModes modes;
};

}  // namespace check
