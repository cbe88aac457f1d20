// A job directory as far as it can be read: nothing that is wrong with one job ends the reading.
#pragma once

#include <Eigen/Dense>
#include <optional>
#include <string>
#include <string_view>
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

// Item i, counted from 0.
template <class Items>
decltype(auto) at(Items& items, int i) {
  return items[static_cast<std::size_t>(i)];
}

using Fault = io::Stop;  // why something could not be read, with file and line

// The job list, before the reference's sign file has its say.
struct JobList {
  std::vector<io::Text<2>> symbols;  // symbol of atom a at [a - 1]
  std::vector<int> numbers;          // its atomic number
  std::vector<Fault> warnings;       // what the readers of control file and list warn of
};

// What came of reading the files of a job; nothing for derived jobs.
struct JobReading {
  bool failed = false;        // of a computed job: neither forces nor dipole can be used
  std::vector<Fault> faults;  // why, and what is wrong with what the run does not read
  std::vector<Fault> warnings;
  SignFile sign_file;
  double force_rounding = 0.0;  // half a unit of the last digit of its forces, Hartree/Bohr
};

struct JobData {
  // As the run fills it, as far as files could be read; zero where they could not.
  zandor::RunData run;

  JobList list;

  // The reference.
  std::optional<ReferenceInput> input;
  std::vector<double> reference_forces;  // 3 per atom, Hartree/Bohr; empty where there are none
  bool layered = false;                  // an ONIOM job: the molecule does not float freely

  // The jobs, 0..n6; the reference's reading has all its files.
  std::vector<JobReading> readings;
  std::vector<int> sources;   // the computed job behind each job: itself if computed; 0: none
  std::vector<int> computed;  // those of 1..n6 with a sign file of their own
  std::vector<int> read;      // those of them that can be used

  Context context;  // what run_checks forms of it

  bool has_geometry() const { return sign_file(0).geometry.has_value(); }
  const zandor::Job& job(int i) const { return at(run.jobs, i); }
  const JobReading& reading(int i) const { return at(readings, i); }
  const SignFile& sign_file(int i) const { return reading(i).sign_file; }
  std::string_view sign_name(int i) const { return job(i).sgn_name.content(); }
  int source(int i) const { return at(sources, i); }
  // Print rounding of the forces of a job, those of its source if it is derived.
  double rounding(int i) const { return reading(source(i)).force_rounding; }
  // The step that job i holds, Bohr, with its true sign.
  double step(int i) const { return analysis::step_sign(run, i) * run.dx; }

  // Forces of a job (n3, Hartree/Bohr), none where the reference has none; and the geometry of a
  // sign file that has one (3 x natom, Angstrom).
  Eigen::Map<const Eigen::VectorXd> forces(int i) const;
  Eigen::Map<const Eigen::Matrix3Xd> geometry(int i) const;

  // Whether forces and dipole of job i (1..n6) can be used.
  bool usable(int i) const;
  // How many of 1..n6 cannot.
  int without_results() const;
  // Whether those of both jobs of coordinate ih can.
  bool usable_column(int ih) const { return usable(2 * ih - 1) && usable(2 * ih); }
};

// Reads the directory in which the program runs. A control file or job list that cannot be read is
// a fatal stop; all else is kept as a fault.
void read_job_data(const std::string& control_file, JobData& jobs);

// "atom 3 (H) y" for coordinate ih, and "job 15 (atom 3 (H) y-)" with the true step.
std::string coordinate_text(const JobData& jobs, int ih);
std::string job_text(const JobData& jobs, int i);

// The sign file of a computed job, the line in the list of a derived one.
io::Place place_of(const JobData& jobs, int i);

// The same with the line of its forces block.
io::Place forces_place(const JobData& jobs, int i);

// A line of the sign file of a job, its line in the list, and the list as a whole.
inline io::Place sign_line(const JobData& jobs, int i, long long line) {
  return {jobs.sign_name(i), line};
}
inline io::Place list_line(const JobData& jobs, int i) {
  return {zandor::job_list_name, jobs.job(i).list_line};
}
inline constexpr io::Place whole_list{zandor::job_list_name};

// "not looked at: 1 coordinate without two jobs that can be used", as many as there are.
std::string missing_columns(const JobData& jobs);

// NAME of coord-NAME.sgn.
std::string base_name(const zandor::Job& job);

}  // namespace check
