// Reads a job directory and fills in what is exported.
#pragma once

#include "analysis/job_directory.hpp"
#include "analysis/prepared_dipoles.hpp"
#include "export/content.hpp"

namespace exporting {

// Reads and analyses the job directory that is the working folder; errors are those of the phases.
//
// The modes are those of the force constants at full precision. The report's own, from a matrix
// with a shifted diagonal, are the same to about 0.001 cm-1, near zero to a few cm-1.
//
// Each list of modes takes time and memory, and is filled where `lists` asks for it.
//
// Dipole derivatives stay empty where they mean nothing (PreparedDipoles::refusal); that, and signs
// that seem to have turned, are warnings and notes of the content.
enum class Lists { projected, unprojected, both };
Content load_content(const std::string& control_file,
                     const std::vector<analysis::MassChange>& mass_changes,
                     const analysis::DipoleChoices& dipoles, Lists lists);

}  // namespace exporting
