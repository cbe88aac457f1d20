// A job directory as far as it can be read: nothing that is wrong with one job ends the reading.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "analysis/operations.hpp"
#include "check/support/context.hpp"
#include "io/fatal.hpp"
#include "zandor/run_data.hpp"
#include "zandor/sign_file.hpp"

namespace check {

using zandor::Atoms;
using zandor::BlockRows;
using zandor::OddLines;
using zandor::ReferenceInput;
using zandor::SignFile;
using zandor::SignHeader;

// Why something could not be read.
struct Fault {
  std::string file;
  long long line = 0;
  std::string text;
  io::Place place() const { return {file, line}; }
};

// The job list, before the reference's sign file has its say.
struct JobList {
  std::vector<io::Text<2>> symbols;      // symbol of atom a at [a - 1]
  std::vector<int> numbers;              // its atomic number
  std::vector<std::optional<int>> jobs;  // 0..n6: the number that stands before job i
  std::vector<Fault> warnings;           // what the readers of control file and list warn of
};

// What came of reading the sign file of a job; empty for derived jobs.
struct JobReading {
  std::optional<Fault> fault;       // of a computed job that cannot be used
  std::vector<Fault> other_faults;  // of what the run does not read of the file
  std::vector<Fault> warnings;
  SignFile sign_file;
  double force_rounding = 0.0;  // half a unit of the last digit of its forces, Hartree/Bohr
};

struct JobData {
  // As the run fills it, as far as files could be read; zero where they could not.
  zandor::RunData run;

  JobList list;

  // The reference.
  std::vector<Fault> reference_faults;
  std::optional<ReferenceInput> input;
  std::vector<double> reference_forces;  // 3 per atom, Hartree/Bohr; empty where there are none
  bool layered = false;                  // an ONIOM job: the molecule does not float freely

  // The jobs, 0..n6.
  std::vector<JobReading> readings;
  std::vector<int> sources;  // the computed job behind each job: itself if computed; 0: none

  Context context;  // what run_checks forms of it

  bool has_geometry() const { return sign_file(0).geometry.has_value(); }
  const zandor::Job& job(int i) const { return run.jobs[static_cast<std::size_t>(i)]; }
  const JobReading& reading(int i) const { return readings[static_cast<std::size_t>(i)]; }
  const SignFile& sign_file(int i) const { return reading(i).sign_file; }
  int source(int i) const { return sources[static_cast<std::size_t>(i)]; }
  // Print rounding of the forces of a job, those of its source if it is derived.
  double rounding(int i) const { return reading(source(i)).force_rounding; }

  // Whether forces and dipole of job i (1..n6) can be used.
  bool usable(int i) const;
  // Whether those of both jobs of coordinate ih can.
  bool usable_column(int ih) const { return usable(2 * ih - 1) && usable(2 * ih); }
};

// Reads the directory in which the program runs. A control file or job list that cannot be read is
// a fatal stop; all else is kept as a fault.
void read_job_data(const std::string& control_file, JobData& jobs);

using analysis::step_sign;

// "atom 3 (H) y" for coordinate ih, and "job 15 (atom 3 (H) y-)" with the true step.
std::string coordinate_text(const JobData& jobs, int ih);
std::string job_text(const JobData& jobs, int i);

// The sign file of a computed job, the line in the list of a derived one.
io::Place place_of(const JobData& jobs, int i);

// The same with the line of its forces block.
io::Place forces_place(const JobData& jobs, int i);

// "not looked at: 1 coordinate without two jobs that can be used", for as many as `missing`.
std::string missing_columns(int missing);

// NAME of coord-NAME.sgn.
std::string base_name(const zandor::Job& job);

}  // namespace check
