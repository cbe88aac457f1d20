// A whole job directory, read and analysed as zandor_gather does, with other masses if wanted.
#pragma once

#include <string>
#include <vector>

#include "zandor/run_data.hpp"

namespace analysis {

// Another mass for one atom or for all atoms of an element.
struct MassChange {
  int atom = 0;         // from 1; 0: all atoms of `element`
  std::string element;  // symbol; letter case does not matter
  double amu = 0.0;
};

// "3=2.014101778" as --mass takes it, and "H=2.014101778" as --isotope does. A text of another form
// and a mass that is not a number above 0 are fatal stops.
MassChange parse_mass(const std::string& text);
MassChange parse_isotope(const std::string& text);

// The changes of --isotope and --mass: first those of elements, since a mass given for one atom is
// the more particular.
std::vector<MassChange> parse_mass_changes(const std::vector<std::string>& isotopes,
                                           const std::vector<std::string>& masses);

// Applies the changes in their order to mass and sqtmass of the run, between reading and analysis.
// An atom or element that the molecule does not have is a fatal stop.
void change_masses(const std::vector<MassChange>& changes, zandor::RunData& run);

// "masses changed: atom 3 (H) 2.014101778, all H 2.014101778" for the heads of outputs; empty where
// nothing was changed.
std::string describe(const std::vector<MassChange>& changes, const zandor::RunData& run);

// Runs every phase that reads and computes, in the working folder: all of RunData is filled as
// zandor_gather fills it. Nothing is written. Errors are those of the phases.
zandor::RunData load_job_directory(const std::string& control_file,
                                   const std::vector<MassChange>& changes = {});

}  // namespace analysis
