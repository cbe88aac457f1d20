#include "check/support/job_data.hpp"

#include <algorithm>
#include <cmath>
#include <functional>

#include "analysis/dipoles.hpp"
#include "check/support/findings.hpp"
#include "flib/qm_file_ifoniom.hpp"
#include "flib/units_of_measure.hpp"
#include "io/process.hpp"
#include "zandor/job_list.hpp"
#include "zandor/job_results.hpp"
#include "zandor/run_control.hpp"

namespace check {

namespace {

auto keep_in(std::vector<Fault>& faults) {
  return [&faults](const io::Place& place, std::string_view message) {
    faults.push_back({2, std::string(place.file), place.line, std::string(message)});
  };
}

// What a phase reports and stops at, in this order. Printed lines are dropped, and so are warnings
// without a place for them.
std::vector<Fault> faults_of(const std::function<void()>& body,
                             std::vector<Fault>* warnings = nullptr) {
  std::vector<Fault> faults, ignored;
  const io::SinkScope sink({.report = keep_in(faults),
                            .warn = keep_in(warnings != nullptr ? *warnings : ignored),
                            .print_line = [](std::string_view) {}});
  const auto stop = io::collect(body);
  if (stop && !stop->message.empty()) faults.push_back(*stop);
  return faults;
}

void read_control_and_list(const std::string& control_file, JobData& jobs) {
  zandor::RunData& run = jobs.run;
  {
    const io::SinkScope sink({.warn = keep_in(jobs.list.warnings)});
    zandor::read_control_file(io::Line(control_file), run);
    zandor::read_job_list(run);
  }
  zandor::allocate_run_arrays(run);
  jobs.list.symbols = run.symbol;
  jobs.list.numbers = run.nat;
  for (int i = 0; i <= run.n6; ++i) {
    jobs.sources.push_back(analysis::computed_source(run, i));
    if (i > 0 && jobs.job(i).is_calc) jobs.computed.push_back(i);
  }
}

// What the run does not read of a sign file: a geometry that is odd, malformed header values.
std::vector<Fault> faults_besides(const JobData& jobs, int i) {
  const SignFile& file = jobs.sign_file(i);
  std::vector<Fault> faults;
  if (file.geometry_stop) faults.push_back(*file.geometry_stop);
  for (const auto& value : file.header.malformed) {
    faults.push_back({2, std::string(jobs.sign_name(i)), value.line, value.text});
  }
  return faults;
}

// Adds faults of files that have none yet: the phase stops at its first one.
void add_faults_of_other_files(const std::vector<Fault>& more, std::vector<Fault>& faults) {
  for (const Fault& fault : more) {
    if (std::ranges::none_of(faults, [&](const Fault& f) { return f.file == fault.file; })) {
      faults.push_back(fault);
    }
  }
}

// The reference's numbers as far as its files hold them, whatever the phase has stopped at.
void complete_reference(JobData& jobs) {
  zandor::RunData& run = jobs.run;
  const auto& geometry = jobs.sign_file(0).geometry;
  std::fill_n(run.xa.data(), run.xa.size(), 0.0);
  if (!geometry) return;
  std::ranges::copy(geometry->x, run.xa.data());
  std::ranges::transform(geometry->masses, run.mass.data(),
                         [](double amu) { return amu * flib::electron_masses_per_amu; });
}

void read_reference_files(JobData& jobs) {
  zandor::RunData& run = jobs.run;
  JobReading& reading = jobs.readings[0];
  reading.faults = faults_of([&] { zandor::read_reference_sign_file(run); }, &reading.warnings);
  std::array<double, 3> dipole{};
  std::vector<double> forces(3 * static_cast<std::size_t>(run.natom));
  const auto of_sign_file = faults_of([&] {
    zandor::read_sign_file(jobs.sign_name(0), 0, run.natom, dipole.data(), forces.data(),
                           &reading.sign_file);
  });
  if (reading.sign_file.has_dipole) run.dipole0 = dipole;
  if (reading.sign_file.forces_line > 0 && of_sign_file.empty()) jobs.reference_forces = forces;
  add_faults_of_other_files(faults_besides(jobs, 0), reading.faults);
  add_faults_of_other_files(of_sign_file, reading.faults);
  add_faults_of_other_files(faults_of([&] {
                              int info = 0;
                              flib::qm_file_ifoniom(jobs.job(0).log_name.padded(), jobs.layered,
                                                    info);
                            }),
                            reading.faults);
  ReferenceInput input;
  const auto of_input =
      faults_of([&] { zandor::read_reference_input(run, &input); }, &reading.warnings);
  add_faults_of_other_files(of_input, reading.faults);
  if (of_input.empty()) jobs.input = std::move(input);
  complete_reference(jobs);
}

// Half a unit of the last digit in which forces are printed, at most 5e-5 and at least 5e-15.
double rounding_of(const Eigen::VectorXd& forces) {
  constexpr double most = 1e14;
  constexpr double near = 1e-3;  // of a unit: what binary fractions leave of 15 digits
  double scale = 1e4;
  for (const double force : forces) {
    while (scale < most && std::fabs(force * scale - std::nearbyint(force * scale)) > near) {
      scale *= 10.0;
    }
  }
  return 0.5 / scale;
}

// What is wrong with forces of which no differences can be taken: squares of their derivatives,
// summed, would overflow; or they are all zero, which only a single atom's are. Empty otherwise.
std::string complaint_about_forces(const JobData& jobs, int i) {
  constexpr double most = 1e150;  // Hartree/Bohr**2
  const auto forces = jobs.forces(i);
  Eigen::Index largest = 0;
  const double size = forces.cwiseAbs().maxCoeff(&largest);
  if (size == 0.0 && jobs.run.natom > 1) {
    return "all forces of " + job_text(jobs, i) + " are exactly zero";
  }
  if (size <= most * std::fabs(jobs.run.dx)) return {};
  return io::joined("expected forces, found ", rounded(forces(largest)), " Hartree/Bohr on ",
                    coordinate_text(jobs, static_cast<int>(largest) + 1));
}

void read_computed(JobData& jobs, int i) {
  zandor::RunData& run = jobs.run;
  JobReading& reading = at(jobs.readings, i);
  reading.faults =
      faults_of([&] { zandor::read_computed_job(run, i, &reading.sign_file, &jobs.sign_file(0)); },
                &reading.warnings);
  const bool is_read = reading.faults.empty();
  const std::string complaint = is_read ? complaint_about_forces(jobs, i) : "";
  if (!complaint.empty()) {
    const io::Place place = forces_place(jobs, i);
    reading.faults = {{2, std::string(place.file), place.line, complaint}};
  }
  reading.failed = !reading.faults.empty();
  if (!reading.failed) jobs.read.push_back(i);
  if (!is_read) reading.sign_file.geometry_stop.reset();  // one fault is enough of what is cut
  const std::vector<Fault> besides = faults_besides(jobs, i);
  reading.faults.insert(reading.faults.end(), besides.begin(), besides.end());
  // Writing zeros would take memory for pages that were never touched.
  if (reading.failed && !jobs.forces(i).isZero(0.0)) {
    std::fill_n(run.force.column(1, i), run.n3, 0.0);
  }
  if (reading.failed) std::fill_n(run.tdip.column(i), 3, 0.0);
  reading.force_rounding = rounding_of(jobs.forces(i));
}

}  // namespace

Eigen::Map<const Eigen::VectorXd> JobData::forces(int i) const {
  if (i > 0) return {run.force.column(1, i), run.n3};
  return {reference_forces.data(), static_cast<Eigen::Index>(reference_forces.size())};
}

Eigen::Map<const Eigen::Matrix3Xd> JobData::geometry(int i) const {
  return {sign_file(i).geometry->x.data(), 3, run.natom};
}

bool JobData::usable(int i) const {
  const int from = source(i);
  return from > 0 && !reading(from).failed && at(context.wrong_images, i) == 0;
}

int JobData::without_results() const {
  int missing = 0;
  for (int i = 1; i <= run.n6; ++i) missing += usable(i) ? 0 : 1;
  return missing;
}

void read_job_data(const std::string& control_file, JobData& jobs) {
  zandor::RunData& run = jobs.run;
  read_control_and_list(control_file, jobs);
  jobs.readings.resize(run.jobs.size());
  jobs.context.wrong_images.resize(run.jobs.size());
  read_reference_files(jobs);
  for (const int i : jobs.computed) read_computed(jobs, i);
  if (!jobs.read.empty()) zandor::derive_symmetry_jobs(run);
}

std::string coordinate_text(const JobData& jobs, int ih) {
  const int atom = (ih - 1) / 3 + 1;
  return io::joined("atom ", atom, " (", at(jobs.run.symbol, atom - 1).content(), ") ",
                    std::string_view("xyz").substr((ih - 1) % 3, 1));
}

std::string job_text(const JobData& jobs, int i) {
  if (i == 0) return "the reference";
  return io::joined("job ", i, " (", coordinate_text(jobs, (i + 1) / 2),
                    analysis::step_sign(jobs.run, i) > 0 ? "+)" : "-)");
}

io::Place place_of(const JobData& jobs, int i) {
  if (i == 0 || jobs.job(i).is_calc) return {jobs.sign_name(i)};
  return list_line(jobs, i);
}

io::Place forces_place(const JobData& jobs, int i) {
  const io::Place place = place_of(jobs, i);
  if (i > 0 && !jobs.job(i).is_calc) return place;
  return {place.file, jobs.sign_file(i).forces_line};
}

std::string missing_columns(const JobData& jobs) {
  const long missing = jobs.run.n3 - std::ssize(jobs.context.raw.columns);
  return "not looked at: " + counted(missing, "coordinate") + " without two jobs that can be used";
}

std::string base_name(const zandor::Job& job) {
  const std::string_view name = job.sgn_name.content();
  return std::string(name.substr(6, name.size() - 10));
}

}  // namespace check
