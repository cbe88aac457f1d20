// The modes of another electronic state, the ground state for one, in place of those of the jobs.
#pragma once

#include <string>
#include <vector>

#include "analysis/job_directory.hpp"
#include "zandor/run_data.hpp"

namespace ht {

// What a file tells of a state whose vibrations are wanted, in the file's own axes.
struct OtherState {
  std::vector<double> numbers;          // atomic numbers
  std::vector<double> masses;           // u
  std::vector<double> places;           // Bohr: x, y, z of every atom
  std::vector<double> force_constants;  // n3 x n3, Hartree/Bohr**2
};

// Reads a formatted checkpoint file, an ORCA .hess file or the JSON of zandor_export, whichever its
// first lines tell, for a molecule of natom atoms. A file of another kind, of another number of
// atoms or with anything but finite numbers, masses above 0 among them, is a fatal stop.
OtherState read_other_state(const std::string& file, int natom);

// How well the geometry of the other state fits that of the jobs, once laid onto it.
struct Fit {
  double distance = 0.0;  // Angstrom, root mean square over the atoms
  double farthest = 0.0;  // Angstrom, of `atom` (from 1), which is farthest away
  int atom = 1;
  double mass_difference = 0.0;  // u, the largest between a mass of the file and the jobs' own
};

// Gives the run the geometry, masses and force constants of the file, so that exact_vibrations
// gives its modes. They are shifted and turned, by mass-weighted least squares, onto the geometry
// of the jobs, so that the transition dipoles need no turning. The report's modes stay, for the
// numbers. Atoms of other kinds, or farther apart than `within` (Angstrom, root mean square), are a
// fatal stop. Mass changes apply to the masses of the file.
Fit take_modes(const std::string& file, double within,
               const std::vector<analysis::MassChange>& changes, zandor::RunData& run);

}  // namespace ht
