#include "check/support/job_data.hpp"

#include <algorithm>
#include <cmath>
#include <functional>

#include "analysis/dipoles.hpp"
#include "check/support/report.hpp"
#include "flib/qm_file_ifoniom.hpp"
#include "flib/units_of_measure.hpp"
#include "io/free_form.hpp"
#include "io/process.hpp"
#include "io/units.hpp"
#include "io/values.hpp"
#include "zandor/job_list.hpp"
#include "zandor/job_results.hpp"
#include "zandor/run_control.hpp"

namespace check {

namespace {

using zandor::input_unit;

auto keep_in(std::vector<Fault>& faults) {
  return [&faults](const io::Place& place, std::string_view message) {
    faults.push_back({std::string(place.file), place.line, std::string(message)});
  };
}

// What a phase reports and stops at, in this order. Printed lines are dropped.
std::vector<Fault> faults_of(const std::function<void()>& body, std::vector<Fault>& warnings) {
  std::vector<Fault> faults;
  const io::SinkScope sink({.report = keep_in(faults),
                            .warn = keep_in(warnings),
                            .print_line = [](std::string_view) {}});
  const auto stop = io::collect(body);
  if (stop && !stop->message.empty()) keep_in(faults)({stop->file, stop->line}, stop->message);
  return faults;
}

// The same for what the checks read besides the run: its warnings are those of the run once more.
std::vector<Fault> faults_of(const std::function<void()>& body) {
  std::vector<Fault> ignored;
  return faults_of(body, ignored);
}

// The first item of the record behind line `before`, or of a later one if that is blank.
std::optional<int> number_behind(long long before) {
  std::string_view record;
  while (io::line_number(input_unit) < before) {
    if (io::read_record(input_unit, record) != io::read_ok) return std::nullopt;
  }
  io::FreeForm row(input_unit);
  io::Line word;
  int number = 0;
  row.text_or_blank(word);
  if (!io::parse_integer(word.content(), number)) return std::nullopt;
  return number;
}

// The numbers in front of the jobs, which the run passes over.
void read_list_numbers(JobData& jobs) {
  io::open_existing(input_unit, zandor::job_list_name);
  long long before = jobs.job(0).list_line - 1;
  for (int i = 0; i <= jobs.run.n6; ++i) {
    jobs.list.jobs.push_back(number_behind(before));
    before = jobs.job(i).list_line;
  }
  io::close(input_unit);
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
  read_list_numbers(jobs);
  for (int i = 0; i <= run.n6; ++i) jobs.sources.push_back(analysis::computed_source(run, i));
}

// Adds faults of files that have none yet: the phase stops at its first one.
void add_faults_of_other_files(const std::vector<Fault>& more, std::vector<Fault>& faults) {
  for (const Fault& fault : more) {
    const bool is_known = std::any_of(faults.begin(), faults.end(),
                                      [&](const Fault& f) { return f.file == fault.file; });
    if (!is_known) faults.push_back(fault);
  }
}

std::vector<Fault> malformed_values(const JobData& jobs, int i) {
  std::vector<Fault> faults;
  for (const auto& value : jobs.sign_file(i).header.malformed) {
    faults.push_back({std::string(jobs.job(i).sgn_name.content()), value.line, value.text});
  }
  return faults;
}

std::vector<Fault> of_geometry(const SignFile& file) {
  if (!file.geometry_stop) return {};
  return {{file.geometry_stop->file, file.geometry_stop->line, file.geometry_stop->message}};
}

// The reference's numbers as far as its files hold them, whatever the phase has stopped at.
void complete_reference(JobData& jobs) {
  zandor::RunData& run = jobs.run;
  const SignFile& file = jobs.sign_file(0);
  std::fill_n(run.xa.data(), run.xa.size(), 0.0);
  if (file.geometry) {
    std::copy(file.geometry->x.begin(), file.geometry->x.end(), run.xa.data());
    for (int a = 1; a <= run.natom; ++a) {
      run.mass(a) =
          file.geometry->masses[static_cast<std::size_t>(a - 1)] * flib::electron_masses_per_amu;
    }
  }
}

void read_input(JobData& jobs) {
  ReferenceInput input;
  const auto faults =
      faults_of([&] { zandor::read_reference_input(jobs.run, &input); }, jobs.readings[0].warnings);
  add_faults_of_other_files(faults, jobs.reference_faults);
  if (!faults.empty()) return;
  jobs.input = std::move(input);
}

void read_reference_files(JobData& jobs) {
  zandor::RunData& run = jobs.run;
  const zandor::Job& reference = run.jobs[0];
  jobs.reference_faults =
      faults_of([&] { zandor::read_reference_sign_file(run); }, jobs.readings[0].warnings);
  const auto of_output = faults_of([&] {
    int info = 0;
    flib::qm_file_ifoniom(reference.log_name.padded(), jobs.layered, info);
  });
  SignFile& file = jobs.readings[0].sign_file;
  std::array<double, 3> dipole{};
  std::vector<double> forces(3 * static_cast<std::size_t>(run.natom));
  auto of_sign_file = faults_of([&] {
    zandor::read_sign_file(reference.sgn_name.content(), 0, run.natom, dipole.data(), forces.data(),
                           &file);
  });
  if (file.has_dipole) run.dipole0 = dipole;
  if (file.forces_line > 0 && of_sign_file.empty()) jobs.reference_forces = std::move(forces);
  add_faults_of_other_files(of_geometry(file), jobs.reference_faults);
  add_faults_of_other_files(of_sign_file, jobs.reference_faults);
  add_faults_of_other_files(malformed_values(jobs, 0), jobs.reference_faults);
  add_faults_of_other_files(of_output, jobs.reference_faults);
  read_input(jobs);
  complete_reference(jobs);
}

// Half a unit of the last digit in which n forces are printed, at most 5e-5 and at least 5e-15.
double print_rounding(const double* forces, int n) {
  constexpr double most = 1e14;
  constexpr double near = 1e-3;  // of a unit: what binary fractions leave of 15 digits
  double scale = 1e4;
  for (int k = 0; k < n; ++k) {
    while (scale < most) {
      const double scaled = forces[k] * scale;
      if (std::fabs(scaled - std::nearbyint(scaled)) <= near) break;
      scale *= 10.0;
    }
  }
  return 0.5 / scale;
}

// Forces of which no differences can be taken: squares of their derivatives, summed, would
// overflow; or they are all zero, which only a single atom's are.
std::optional<Fault> fault_of_forces(const JobData& jobs, int i) {
  constexpr double most = 1e150;  // Hartree/Bohr**2
  const zandor::RunData& run = jobs.run;
  const double* const forces = run.force.column(1, i);
  const double* const end = forces + run.n3;
  const double* const largest =
      std::max_element(forces, end, [](double a, double b) { return std::fabs(a) < std::fabs(b); });
  const io::Place place = forces_place(jobs, i);
  const auto fault = [&](std::string text) {
    return Fault{std::string(place.file), place.line, std::move(text)};
  };
  if (*largest == 0.0 && run.natom > 1) {
    return fault("all forces of " + job_text(jobs, i) + " are exactly zero");
  }
  if (std::fabs(*largest) <= most * std::fabs(run.dx)) return std::nullopt;
  return fault("expected forces, found " + rounded(*largest) + " Hartree/Bohr on " +
               coordinate_text(jobs, static_cast<int>(largest - forces) + 1));
}

void read_computed(JobData& jobs, int i) {
  zandor::RunData& run = jobs.run;
  JobReading& reading = jobs.readings[static_cast<std::size_t>(i)];
  std::optional<Fault>& fault = reading.fault;
  const auto faults =
      faults_of([&] { zandor::read_computed_job(run, i, &reading.sign_file, &jobs.sign_file(0)); },
                reading.warnings);
  if (!faults.empty()) fault = faults.back();
  if (!fault) reading.other_faults = of_geometry(reading.sign_file);
  const std::vector<Fault> malformed = malformed_values(jobs, i);
  reading.other_faults.insert(reading.other_faults.end(), malformed.begin(), malformed.end());
  if (!fault) fault = fault_of_forces(jobs, i);
  // Memory that nothing was written to is not to be had before it is needed.
  const double* const forces = run.force.column(1, i);
  if (fault && std::any_of(forces, forces + run.n3, [](double f) { return f != 0.0; })) {
    std::fill_n(run.force.column(1, i), run.n3, 0.0);
  }
  if (fault) std::fill_n(run.tdip.column(i), 3, 0.0);
  reading.force_rounding = print_rounding(run.force.column(1, i), run.n3);
}

}  // namespace

bool JobData::usable(int i) const {
  const int from = source(i);
  return from > 0 && !reading(from).fault && context.wrong_images[static_cast<std::size_t>(i)] == 0;
}

void read_job_data(const std::string& control_file, JobData& jobs) {
  zandor::RunData& run = jobs.run;
  read_control_and_list(control_file, jobs);
  jobs.readings.resize(run.jobs.size());
  jobs.context.wrong_images.resize(run.jobs.size());
  read_reference_files(jobs);
  for (int i = 1; i <= run.n6; ++i) {
    if (jobs.job(i).is_calc) read_computed(jobs, i);
  }
  const auto can_be_used = [&](int i) { return i > 0 && !jobs.reading(i).fault; };
  if (std::any_of(jobs.sources.begin() + 1, jobs.sources.end(), can_be_used)) {
    zandor::derive_symmetry_jobs(run);
  }
}

std::string coordinate_text(const JobData& jobs, int ih) {
  const int atom = (ih - 1) / 3 + 1;
  return "atom " + std::to_string(atom) + " (" +
         std::string(jobs.run.symbol[static_cast<std::size_t>(atom - 1)].content()) + ") " +
         "xyz"[(ih - 1) % 3];
}

std::string job_text(const JobData& jobs, int i) {
  if (i == 0) return "the reference";
  return "job " + std::to_string(i) + " (" + coordinate_text(jobs, (i + 1) / 2) +
         (step_sign(jobs.run, i) > 0 ? "+" : "-") + ")";
}

io::Place place_of(const JobData& jobs, int i) {
  const zandor::Job& job = jobs.job(i);
  if (i == 0 || job.is_calc) return {job.sgn_name.content()};
  return {zandor::job_list_name, job.list_line};
}

io::Place forces_place(const JobData& jobs, int i) {
  const io::Place place = place_of(jobs, i);
  if (i > 0 && !jobs.job(i).is_calc) return place;
  return {place.file, jobs.sign_file(i).forces_line};
}

std::string missing_columns(int missing) {
  return "not looked at: " + counted(missing, "coordinate") + " without two jobs that can be used";
}

std::string base_name(const zandor::Job& job) {
  const std::string_view name = job.sgn_name.content();
  return std::string(name.substr(6, name.size() - 10));
}

}  // namespace check
