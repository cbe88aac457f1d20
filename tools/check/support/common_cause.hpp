// What most jobs have in common: it is said once, in place of findings about single jobs that
// running them again would not mend.
#pragma once

#include <limits>
#include <string>

namespace check {

struct JobData;
struct Thresholds;

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

// Takes the raw force constants and sums of the context.
CommonCause find_common_cause(const JobData& jobs, const Thresholds& limits);

}  // namespace check
