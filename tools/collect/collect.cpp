#include "collect/collect.hpp"

#include <algorithm>
#include <cmath>
#include <filesystem>

#include "analysis/isotopes.hpp"
#include "collect/find_output.hpp"
#include "collect/frame.hpp"
#include "collect/output_lines.hpp"
#include "collect/settle.hpp"
#include "collect/sign_file_text.hpp"
#include "flib/units_of_measure.hpp"
#include "io/process.hpp"
#include "io/units.hpp"
#include "zandor/job_list.hpp"
#include "zandor/run_control.hpp"
#include "zandor/sign_file.hpp"

namespace collect {

namespace {

constexpr int out_unit = 15;
constexpr double largest_force = 1e5;  // Hartree/Bohr; larger ones do not fit into their columns

std::string name_of(const zandor::Job& job) {
  const std::string_view file = job.sgn_name.content();
  constexpr std::size_t before = 6, behind = 4;  // "coord-" and ".sgn"
  return std::string(file.substr(before, file.size() - before - behind));
}

bool is_there(std::string_view file) {
  std::error_code error;
  return std::filesystem::exists(file, error);
}

void load_job_list(const Choices& choices, Collection& all) {
  zandor::RunData& run = all.run;
  zandor::read_control_file(io::Line(choices.control_file), run);
  run.symm = true;  // no warning of the dipoles of derived jobs
  zandor::read_job_list(run);
  zandor::allocate_run_arrays(run);
  for (int i = 0; i <= run.n6; ++i) {
    const zandor::Job& job = run.jobs[static_cast<std::size_t>(i)];
    if (i > 0 && !job.is_calc) continue;
    all.jobs.emplace_back();
    all.jobs.back().job = i;
    all.jobs.back().name = name_of(job);
  }
}

std::vector<int> element_numbers(const zandor::RunData& run) {
  std::vector<int> numbers;
  for (std::size_t a = 0; a < run.symbol.size(); ++a) {
    const int number = run.nat[a];
    numbers.push_back(number > 0 ? number : analysis::element_number(run.symbol[a].content()));
  }
  return numbers;
}

void fill_masses(const std::vector<analysis::MassChange>& changes, Collection& all) {
  zandor::RunData& run = all.run;
  const std::vector<int> numbers = element_numbers(run);
  for (int a = 1; a <= run.natom; ++a) {
    run.nat[static_cast<std::size_t>(a - 1)] = numbers[static_cast<std::size_t>(a - 1)];
    run.mass(a) = analysis::usual_mass(numbers[static_cast<std::size_t>(a - 1)]) *
                  flib::electron_masses_per_amu;
  }
  analysis::change_masses(changes, run);
  for (int a = 1; a <= run.natom; ++a) {
    if (run.mass(a) > 0.0) continue;
    io::fatal_stop("expected --mass for atom " + std::to_string(a) + ", found an element (" +
                   io::printable(run.symbol[static_cast<std::size_t>(a - 1)].content()) +
                   ") of which no mass is known");
  }
}

// Reads an output as it stands.
void read_job(const Choices& choices, const zandor::RunData& run, CollectedJob& job) {
  job.state = State::bad;
  job.fault = io::collect([&] {
    const FoundOutput found = find_output(job.name, choices.suffixes);
    job.file = found.file;
    if (found.file.empty()) {
      const bool has_sign_file =
          is_there(run.jobs[static_cast<std::size_t>(job.job)].sgn_name.content());
      job.state = has_sign_file ? State::kept : State::missing;
      return;
    }
    if (found.reader == nullptr) {
      io::fatal_stop({found.file}, "expected an output of a known kind, found none of its marks");
    }
    found.reader->read(found.file, {run.natom, choices.root}, job.output);
    const JobOutput& output = job.output;
    const bool sound = output.places.allFinite() && output.dipole.allFinite() &&
                       output.forces.cwiseAbs().maxCoeff() < largest_force;
    if (!sound)
      io::fatal_stop({found.file}, "expected forces and places of a molecule, found larger ones");
  });
}

Eigen::Matrix3Xd expected_places(const Collection& all, int job) {
  Eigen::Matrix3Xd places = all.places;
  if (job == 0) return places;
  const int coordinate = (job - 1) / 2;
  const bool positive = (job % 2 == 0) == (all.run.disp_sign == 1);
  places(coordinate % 3, coordinate / 3) +=
      (positive ? 1.0 : -1.0) * all.run.dx * flib::angstrom_per_bohr;
  return places;
}

// ", which is that of job X" where the geometry is another job's.
std::string whose_geometry(const Collection& all, const Eigen::Matrix3Xd& places) {
  for (const CollectedJob& other : all.jobs) {
    if (match_geometry(places, expected_places(all, other.job)).found) {
      return ": it is that of job " + other.name;
    }
  }
  return "";
}

// Compares a job that was read with what the list asks for.
void check_job(const std::vector<int>& numbers, int root, const Collection& all,
               CollectedJob& job) {
  job.fault = io::collect([&] {
    const Eigen::Matrix3Xd places = job.output.places;
    const Match match =
        bring_into_axes(job.file, numbers, expected_places(all, job.job), job.output);
    if (!match.found) {
      io::fatal_stop({job.file}, "expected the geometry of job " + job.name + ", found atom " +
                                     std::to_string(match.atom) + " " + io::shown(match.largest) +
                                     " Angstrom away" + whose_geometry(all, places));
    }
    if (root > 0 && job.output.root != root) {
      io::fatal_stop({job.file}, "expected state " + std::to_string(root) +
                                     " as in the other jobs, found state " +
                                     std::to_string(job.output.root));
    }
    job.angle = match.angle;
  });
  job.state = job.fault ? State::bad : State::taken;
}

void find_places(Collection& all) {
  const std::string com(all.run.com_name.content());
  const CollectedJob& reference = all.jobs.front();
  if (is_there(com)) {
    all.places.resize(3, all.run.natom);
    zandor::read_input_file(com, all.run.natom, all.places.data());
  } else if (reference.state == State::bad && !reference.fault) {
    all.places = reference.output.places;
  } else {
    if (reference.fault) io::report(*reference.fault);
    io::fatal_stop({com}, "expected the geometry of the reference here or in an output of job " +
                              reference.name + ", found neither");
  }
}

}  // namespace

Collection collect_outputs(const Choices& choices) {
  Collection all;
  load_job_list(choices, all);
  fill_masses(choices.masses, all);
  const std::vector<int> numbers = element_numbers(all.run);
  int root = choices.root;
  for (CollectedJob& job : all.jobs) {
    read_job(choices, all.run, job);
    if (job.job == 0) find_places(all);
    if (job.state != State::bad || job.fault) continue;
    check_job(numbers, root, all, job);
    if (job.state != State::taken) continue;
    root = job.output.root;
    take_sign_from_marks(all, job);
    if (job.job != 0) job.output.marks.clear();  // densities of all jobs may be many
  }
  return all;
}

namespace {

// Whether a sign file holds this text, wherever its output may have lain.
bool holds(const std::string& file, const std::string& text) {
  OutputLines lines(file);
  std::size_t at = 0;
  while (lines.next()) {
    const std::size_t end = text.find('\n', at);
    if (end == text.npos) return false;
    const std::string_view line = std::string_view(text).substr(at, end - at);
    if (line != lines.text() && !lines.begins_with(source_mark)) return false;
    at = end + 1;
  }
  return at == text.size();
}

void write_file(const std::string& file, const std::string& text) {
  io::open_replaced(out_unit, file);
  io::output(out_unit).text(text);
  io::close(out_unit);
}

bool is_newer(const std::string& output, const std::string& file) {
  std::error_code error;
  return std::filesystem::last_write_time(output, error) >
         std::filesystem::last_write_time(file, error);
}

void write_sign_file(const Collection& all, CollectedJob& job) {
  const std::string file(all.run.jobs[static_cast<std::size_t>(job.job)].sgn_name.content());
  SignFileData data{job.job, job.file, &job.output, job.turned, job.angle > 0.0};
  // A coefficient that tells otherwise than what is sure hangs on the sign of an orbital.
  data.has_leading =
      job.sign.sign == 0 || !job.output.leading || !all.jobs.front().output.leading ||
      job.output.leading->value * all.jobs.front().output.leading->value * job.sign.sign > 0.0;
  const std::string text = sign_file_text(all.run, data);
  if (is_there(file) && !is_newer(job.file, file)) {
    data.turned = !data.turned;
    const bool other_sign = holds(file, sign_file_text(all.run, data));
    // A sign that no mark tells may have been settled before: it stays until all jobs tell.
    if (other_sign && job.sign.sign == 0) job.turned = data.turned;
    job.differs = !other_sign && !holds(file, text);
    if (!other_sign || job.sign.sign == 0) return;
  }
  write_file(file, text);
  job.written = true;
}

}  // namespace

void write_sign_files(Collection& all) {
  for (CollectedJob& job : all.jobs) {
    if (job.state == State::taken) write_sign_file(all, job);
  }
  const CollectedJob& reference = all.jobs.front();
  if (reference.state != State::taken) return;
  const std::string com(all.run.com_name.content());
  const std::string log(all.run.jobs.front().log_name.content());
  if (!is_there(com)) write_file(com, input_text(all.run, all.places));
  if (!is_there(log))
    write_file(log, log_text(io::printable(reference.file), reference.output.program));
}

}  // namespace collect
