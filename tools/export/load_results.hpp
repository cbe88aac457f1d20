// Reads a job directory and fills in what is exported.
#pragma once

#include "analysis/job_directory.hpp"
#include "analysis/prepared_dipoles.hpp"
#include "export/results.hpp"

namespace exporting {

struct JobOptions {
  std::string control_file;
  std::vector<analysis::MassChange> mass_changes;
  analysis::DipoleChoices dipoles;
};

// Reads and analyses the job directory that is the working folder; errors are those of the phases.
//
// The modes are those of the force constants at full precision. The report's own, from a matrix
// with a shifted diagonal, are the same to about 0.001 cm-1, near zero to a few cm-1.
//
// Dipole derivatives stay empty where they mean nothing (PreparedDipoles::refusal); that, and signs
// that seem to have turned, are warnings and notes of the results.
Results load_results(const JobOptions& options);

}  // namespace exporting
