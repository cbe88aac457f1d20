// Job directories for the tests of zandor_check: copies of real ones to spoil, and what the checks
// say about them.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "check/checks.hpp"
#include "support/support.hpp"

namespace job_folder {

using Lines = std::vector<std::string>;

Lines read_lines(const std::string& name);
void write_lines(const std::string& name, const Lines& lines);

// The first line behind the header of a block, from 0.
std::size_t forces_at(const Lines& sign_file);
std::size_t geometry_at(const Lines& sign_file);
std::size_t dipole_at(const Lines& sign_file);

// Forces of a sign file, 3 per atom.
std::vector<double> forces_of(const std::string& name);
void set_forces(const std::string& name, const std::vector<double>& forces, int decimals = 10);

using Dipole = std::array<double, 3>;
Dipole dipole_of(const std::string& name);
void set_dipole(const std::string& name, const Dipole& dipole, int decimals = 5);
void scale_dipole(const std::string& name, double factor);
inline void turn_dipole(const std::string& name) { scale_dipole(name, -1.0); }

// Copies the files of a folder into the working folder.
void copy_here(const std::string& folder);

// Reads the working folder and runs the checks of these names, or all. `jobs` is filled with it.
check::Findings look(check::JobData& jobs, const std::vector<std::string>& only = {});
check::Findings look(const std::vector<std::string>& only = {});

// The findings above a note, or all, one line each, as the program prints them.
std::string lines_of(const check::Findings& findings, bool notes = false);

}  // namespace job_folder
