// What is to be written: the molecule in its axes, its operations, and the jobs.
#pragma once

#include <string>
#include <vector>

#include "displace/orientation.hpp"
#include "zandor/run_data.hpp"

namespace displace {

struct Plan {
  // Sizes, step, operations, atom table, symbols, geometry (xa, Angstrom, 10 decimals) and jobs, as
  // the run reads them back.
  zandor::RunData run;
  double step = 0.0;               // Angstrom
  std::vector<std::string> names;  // of the jobs, 0..n6
  std::string formula;
  Orientation orientation;
  int charge = 0;
  int multiplicity = 1;
};

// Names are `name` with -ref, -01mx, -01px and so on.
Plan make_plan(const Molecule& molecule, Orientation orientation, const std::string& name,
               double step);

// The places of the jobs to be run in the list, the reference first.
std::vector<int> jobs_to_run(const zandor::RunData& run);

// A number of the geometry with the ten decimals that files hold.
double rounded_place(double angstrom);

}  // namespace displace
