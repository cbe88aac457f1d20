// Everything that one run reads, computes and writes. Filled phase by phase; nothing outlives it.
#pragma once

#include <array>
#include <limits>
#include <optional>
#include <vector>

#include "flib/array.hpp"
#include "io/text.hpp"

namespace zandor {

// Units of the main program: one input file is open at a time.
inline constexpr int log_unit = 10;
inline constexpr int input_unit = 11;
inline constexpr int output_unit = 12;

inline constexpr const char* job_list_name = "files.out";

// One line of the job list. Job 0 is the reference geometry, job 2 ih - 1 the negative and job 2 ih
// the positive step of coordinate ih.
struct Job {
  io::Line log_name;              // coord-NAME.log
  io::Line sgn_name;              // coord-NAME.sgn
  bool is_calc = false;           // computed, with a sign file of its own; otherwise derived
  int calc_m = 0;                 // of a derived job: the job whose forces are carried over
  int iops = 0;                   // of a derived job: the operation that carries them
  const char* missing = nullptr;  // what stood in place of calc_m or iops, if not a number
  long long list_line = 0;        // its line in the job list
  std::optional<int> number;      // what the list counts it as; nothing rests on it
};

// Atomic units throughout unless said; atoms, coordinates and modes count from 1.
struct RunData {
  // Run control.
  io::Line control_name;
  bool symm = true;     // symmetry was used; transition dipoles are left out of the report
  double disp_a = 1.0;  // amplitude of the modes: Angstrom as read, Bohr from then on
  int disp_sign = 1;    // 1: the positive step of a coordinate comes first in its difference
  double control_dx = std::numeric_limits<double>::quiet_NaN();  // Angstrom; NaN when not given

  // Sizes.
  int natom = 0;    // atoms
  int nfile = 0;    // of the job list; nothing uses it
  int n3 = 0;       // Cartesian coordinates, 3 natom
  int n6 = 0;       // displaced jobs, 6 natom
  int nop = 0;      // symmetry operations
  double dx = 0.0;  // displacement step, Bohr

  // Job list.
  std::vector<Job> jobs;             // 0..n6
  io::Line com_name;                 // reference input, coord-NAME.com
  flib::Array<double, 3> op;         // 3 x 3 x nop, op(row, col, k)
  flib::Array<int, 2> atom_m;        // natom x nop: the atom that operation k carries onto atom a
  std::vector<long long> atom_line;  // line of atom a in the job list at [a - 1]

  // Reference geometry. The job list gives symbols and atomic numbers first, and they stay where
  // the sign file leaves them out.
  std::vector<io::Text<2>> symbol;  // element symbol of atom a at [a - 1]
  std::vector<int> nat;             // atomic number of atom a at [a - 1]
  flib::Array<double, 1> mass;      // natom, electron masses
  flib::Array<double, 1> sqtmass;   // n3: square root of the mass of the coordinate's atom
  // The geometry twice, 3 x natom; the two may be turned against each other. x is that of the
  // input, in Bohr, for the projection and the animations; xa that of the sign file, in Angstrom,
  // in whose axes forces and dipoles stand.
  flib::Array<double, 2> x, xa;
  std::array<double, 3> dipole0{};  // transition dipole
  double reference_force = 0.0;     // largest |force| in its sign file, Hartree/Bohr; 0: none there
  bool layered = false;             // its output tells of an ONIOM job

  // Results of the jobs.
  flib::Array<double, 3> force;  // 3 x natom x 0..n6; job 0 stays zero
  flib::Array<double, 2> tdip;   // 3 x 0..n6; zero for job 0 and for derived jobs

  // Transition dipole derivatives, 3 x 3 x natom: tddip(dipole component, coordinate, atom).
  flib::Array<double, 3> tddip;

  // Force constants and normal modes; names that end in p belong to the projected set.
  flib::Array<double, 2> hess;           // n3 x n3, Hartree/Bohr**2
  flib::Array<double, 2> mhess, mhessp;  // n3 x n3, mass-weighted
  flib::Array<double, 1> eval, evalp;    // n3, eigenvalues in ascending order
  flib::Array<double, 2> c, cp;          // n3 x n3, eigenvectors in columns
  flib::Array<double, 1> wk, wkp;        // n3, work vectors of the eigensolver
  flib::Array<double, 1> freq, freqp;    // n3, signed frequencies
  flib::Array<double, 3> disp, dispp;    // 3 x natom x n3, displacements scaled to disp_a
};

// Obtains the arrays whose sizes natom, n3 and n6 give, zero at first. Memory that cannot be had is
// a fatal stop.
void allocate_run_arrays(RunData& run);

}  // namespace zandor
