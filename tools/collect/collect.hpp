// Takes the outputs of a job directory and makes sign files of them.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "analysis/job_directory.hpp"
#include "collect/output_data.hpp"
#include "collect/sign_marks.hpp"
#include "io/fatal.hpp"
#include "zandor/run_data.hpp"

namespace collect {

struct Choices {
  std::string control_file;
  std::vector<std::string> suffixes;  // of outputs
  int root = 0;                       // 0: that of the reference's output
  std::vector<analysis::MassChange> masses;
};

enum class State {
  taken,
  kept,     // there is no output, but a sign file
  missing,  // neither
  bad,      // `fault` says why
};

// A computed job, or the reference.
struct CollectedJob {
  int job = 0;
  std::string name;
  std::string file;  // of the output; empty where there is none
  State state = State::missing;
  std::optional<io::Stop> fault;
  JobOutput output;    // in the axes of the job list
  double angle = 0.0;  // by which it was turned back, degrees
  SignDecision sign;   // against the reference
  bool turned = false;
  bool written = false;
  bool differs = false;  // the sign file, newer than the output, holds something else
};

struct Collection {
  zandor::RunData run;
  Eigen::Matrix3Xd places;  // of the reference, Angstrom
  std::vector<CollectedJob> jobs;
  // Why the signs of some jobs are as read; empty where all are settled.
  std::string unsettled;
  std::vector<int> unsettled_jobs;
};

// Reads control file, job list and outputs, and takes the signs that these tell. Stops where there
// is nothing to compare with: no job list, no geometry of the reference.
Collection collect_outputs(const Choices& choices);

// Writes the sign files of the jobs that were taken, and the reference's .com and .log where they
// are not there. A sign file that is there is replaced where the output is newer, or where it
// differs in the sign of the dipole only.
void write_sign_files(Collection& all);

}  // namespace collect
