// What several checks need of the jobs: formed once, before the first of them, and read by all.
#pragma once

#include <Eigen/Dense>
#include <limits>
#include <map>
#include <string>
#include <vector>

namespace check {

struct JobData;
struct Thresholds;

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
  // it (rounding_of_sums).
  Eigen::VectorXd force, torque, largest, rounding;
};

// What most jobs have in common: it is said once, in place of findings about single jobs that
// running them again would not mend.
struct CommonCause {
  enum class Kind {
    none,
    degenerate,   // the state is degenerate or crosses another one: its forces have a kink
    other_units,  // force constants that no molecule has, in every atom
    other_axes,   // the forces belong to other axes or atoms than the geometry
    held,         // net forces in most jobs: the molecule does not float freely
    loose         // all jobs are a little off: they have not converged well
  };
  Kind kind = Kind::none;
  double own_trace = 0.0;  // the smallest sum of an atom's own force constants, Hartree/Bohr**2
  double net_force = 0.0;  // net force or torque of the median column, Hartree/Bohr**2
  // Even over odd part of the forces in the median column, and the share of the dipoles along their
  // common line; NaN where they were not looked at.
  double even = std::numeric_limits<double>::quiet_NaN();
  double along_line = even;

  bool is(Kind other) const { return kind == other; }
  // Where jobs cannot be held against each other.
  bool forbids_comparison() const {
    return is(Kind::degenerate) || is(Kind::other_units) || is(Kind::other_axes);
  }
};
CommonCause find_common_cause(const JobData& jobs, const Thresholds& limits);

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

// Forms all of it but the wrong images, which `usable` looks at.
void form_context(JobData& jobs, const Thresholds& limits, bool with_modes);

// The 3 x 3 blocks of the atoms, from 1, that have all of their jobs: the force on an atom when it
// is moved itself.
std::map<int, Eigen::Matrix3d> own_force_constants(const JobData& jobs);

// The median of a figure of the columns (n3), of those that are known. Columns that rest on the
// same jobs count once, with the largest, so that one bad job does not make it; of fewer than three
// such sets the smallest is taken, of one none: 0.
double median_over_jobs(const JobData& jobs, const Eigen::VectorXd& of_column);

// Finds the one of several computed jobs whose forces are further from what the given columns say
// than those of the others, by a factor of 2 and more. All jobs where there is none, or where
// nothing can be compared.
std::vector<int> single_out(const JobData& jobs, const std::vector<int>& suspects,
                            const std::vector<int>& columns);

// What print rounding may make of a net force or torque that sums up elements which it may change
// by `rounding`: the worst case, all errors in one direction. A torque sums over two components,
// with lever arms of about the size.
inline double rounding_of_sums(int natom, double rounding) { return 2.0 * natom * rounding; }

// Signed frequency in cm-1 of an eigenvalue.
double wavenumber(double eigenvalue);

}  // namespace check
