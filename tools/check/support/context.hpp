// What several checks need of the jobs: formed once, before the first of them, and read by all.
#pragma once

#include <Eigen/Dense>
#include <string>
#include <vector>

#include "check/support/common_cause.hpp"

namespace check {

// Force constants as the jobs give them, before they are made symmetric.
struct RawForceConstants {
  // n3 x n3, Hartree/Bohr**2: h(j, i) = -dF(j)/dx(i), true step. Empty where there are no columns.
  Eigen::MatrixXd h;
  Eigen::VectorXd rounding;  // n3: what print rounding may change in an element of a column
  std::vector<int> columns;  // from 0, those both of whose jobs can be used; the others of h are 0

  // |h(i,j) - h(j,i)| among the columns, elsewhere 0.
  Eigen::MatrixXd asymmetry() const;
};

// Net force, and net torque over the size of the molecule: of jobs, Hartree/Bohr, and of columns,
// their differences over twice the step, Hartree/Bohr**2. In the geometry of the sign file; not
// known where jobs cannot be used.
using Sums = Eigen::Matrix<double, 6, 1>;
struct NetForces {
  Eigen::Matrix<double, 6, Eigen::Dynamic> of_job;  // 0..n6
  Sums usual;                                       // of jobs, when nothing is wrong
  // n3: the largest component of either, the larger of both, and what print rounding may make of
  // it.
  Eigen::VectorXd force, torque, largest, rounding;
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
  NetForces sums;
  CommonCause common_cause;
  ProjectedModes modes;
};

}  // namespace check
