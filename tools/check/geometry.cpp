// Displaced sign files hold the reference geometry with one coordinate moved by the step.
#include <algorithm>
#include <cmath>

#include "analysis/median.hpp"
#include "analysis/prepared_dipoles.hpp"
#include "check/checks.hpp"
#include "check/support/geometry_difference.hpp"
#include "flib/units_of_measure.hpp"

namespace check {

namespace {

// How a geometry block differs from the reference's, Angstrom.
struct Displacement {
  int job = 0;
  Eigen::Matrix3Xd moved;
  int coordinate = 0;  // the one that moved, from 1; 0: none, -1: several
  int first = 0;       // of those that moved, from 1; 0: none

  double distance() const { return coordinate > 0 ? moved(coordinate - 1) : 0.0; }
};

Displacement displacement_of(const JobData& jobs, int i, double tolerance) {
  Displacement found{i, jobs.geometry(i) - jobs.geometry(0)};
  for (int k = 0; k < jobs.run.n3; ++k) {
    if (std::fabs(found.moved(k)) <= tolerance) continue;
    found.coordinate = found.coordinate == 0 ? k + 1 : -1;
    if (found.first == 0) found.first = k + 1;
  }
  return found;
}

double step(const JobData& jobs) { return jobs.run.dx * flib::angstrom_per_bohr; }

double expected_move(const JobData& jobs, int i) {
  return analysis::step_sign(jobs.run, i) * step(jobs);
}

// The part of the jobs that must share what is said of all: of the six that symmetry leaves of
// ammonia one may be bad.
constexpr double most = 0.8;

// The step that most jobs hold over the one of the job list, with its sign; 1 where there is none.
double common_factor(const JobData& jobs, const std::vector<Displacement>& all, double tolerance) {
  std::vector<double> factors;
  for (const Displacement& d : all) {
    if (d.coordinate == (d.job + 1) / 2)
      factors.push_back(d.distance() / expected_move(jobs, d.job));
  }
  const double enough = most * static_cast<double>(all.size());
  if (factors.size() < 2 || static_cast<double>(factors.size()) < enough) return 1.0;
  const double middle = analysis::median(factors);
  const auto near = std::ranges::count_if(factors, [&](double factor) {
    return std::fabs(factor - middle) * std::fabs(step(jobs)) <= tolerance;
  });
  return static_cast<double>(near) >= enough &&
                 std::fabs(middle - 1.0) * std::fabs(step(jobs)) > tolerance
             ? middle
             : 1.0;
}

std::string unit_hint(double factor) {
  constexpr double near = 1e-3;  // 1: a step is written with four digits
  const double size = std::fabs(factor);
  if (std::fabs(size - flib::angstrom_per_bohr) < near) {
    return " (0.529...: the list gives it in Bohr, Angstrom is wanted)";
  }
  if (std::fabs(size * flib::angstrom_per_bohr - 1.0) < near) {
    return " (1.89: the jobs took the Angstrom step for Bohr)";
  }
  return {};
}

void report_common_factor(const JobData& jobs, double factor, double tolerance,
                          Findings& findings) {
  if (factor < 0.0) {
    findings.error(list_line(jobs, 1), {},
                   "every job holds the step of the other sign: disp_sign, or the order of the two "
                   "jobs of each coordinate, is turned");
  }
  if (std::fabs(std::fabs(factor) - 1.0) * std::fabs(step(jobs)) > tolerance) {
    findings.error({zandor::job_list_name, 3}, {}, "the step is ", rounded(step(jobs)),
                   " Angstrom, but the jobs moved by ", rounded(std::fabs(factor)), " times that",
                   unit_hint(factor));
  }
}

// The job that a displacement would fit, or nothing.
std::string fitting_job(const JobData& jobs, const Displacement& d, double expected,
                        double tolerance) {
  if (std::fabs(std::fabs(d.distance()) - std::fabs(expected)) > tolerance) return {};
  const int first = 2 * d.coordinate - 1;
  const bool first_fits = d.distance() * expected * jobs.step(first) * jobs.step(d.job) > 0.0;
  return ": it would fit " + job_text(jobs, first_fits ? first : first + 1);
}

std::string complaint(const JobData& jobs, const Displacement& d, const Eigen::Matrix3Xd& expected,
                      double tolerance) {
  const int ih = (d.job + 1) / 2;
  const double distance = expected(ih - 1);
  const std::string wanted = io::joined(" where ", coordinate_text(jobs, ih),
                                        " should have moved by ", rounded(distance), " Angstrom");
  if (d.coordinate == 0) return "holds the reference geometry" + wanted;
  if (d.coordinate > 0) {
    return io::joined("moved ", coordinate_text(jobs, d.coordinate), " by ", rounded(d.distance()),
                      " Angstrom", wanted, fitting_job(jobs, d, distance, tolerance));
  }
  const Eigen::Matrix3Xd right = jobs.geometry(0) + expected;
  return io::joined("the geometry ",
                    describe(compare_geometries(jobs.geometry(d.job), right, tolerance)), ",",
                    wanted);
}

// Where most sign files repeat the reference's block, they say nothing, unless the forces repeat,
// too. Takes the repeated ones out.
bool report_repeated_blocks(const JobData& jobs, std::vector<Displacement>& all,
                            Findings& findings) {
  std::vector<int> repeated;
  for (const Displacement& d : all) {
    if (d.coordinate == 0) repeated.push_back(d.job);
  }
  if (repeated.size() < 2 ||
      static_cast<double>(repeated.size()) < most * static_cast<double>(all.size())) {
    return false;
  }
  const bool forces_differ = std::ranges::any_of(
      repeated, [&](int i) { return jobs.forces(i) != jobs.forces(repeated.front()); });
  const bool is_all = repeated.size() == all.size();
  const std::string files =
      is_all ? "every displaced sign file" : counted(std::ssize(repeated), "sign file");
  const char* const verb = is_all ? "s" : "";
  std::erase_if(all, [](const Displacement& d) { return d.coordinate == 0; });
  if (forces_differ) {
    findings.note(whole_list, "not looked at: ", files, " repeat", verb, " the reference geometry");
  } else {
    findings.error(whole_list, {}, files, " hold", verb,
                   " the reference geometry, and all the same forces: nothing was displaced");
  }
  return true;
}

// Those of all jobs that can be used and hold a geometry.
std::vector<Displacement> displacements(const JobData& jobs, double tolerance, Findings& findings) {
  std::vector<Displacement> all;
  std::vector<int> without;
  for (const int i : jobs.read) {
    if (jobs.sign_file(i).geometry) {
      all.push_back(displacement_of(jobs, i, tolerance));
    } else {
      without.push_back(i);
    }
  }
  if (!without.empty()) {
    findings.note(whole_list, "not looked at: ", counted(std::ssize(without), "sign file"),
                  " without a geometry block that can be read (",
                  analysis::job_names(jobs.run, without), ")");
  }
  return all;
}

}  // namespace

void check_geometry(const JobData& jobs, const Thresholds& limits, Findings& findings) {
  if (!jobs.has_geometry()) {
    findings.note(place_of(jobs, 0), "not looked at: the reference's geometry is missing");
    return;
  }
  std::vector<Displacement> all = displacements(jobs, limits.geometry, findings);
  const auto read = static_cast<double>(all.size());
  const bool repeated = report_repeated_blocks(jobs, all, findings);
  const double factor = repeated ? 1.0 : common_factor(jobs, all, limits.geometry);
  double largest = not_known;
  for (const Displacement& d : all) {
    const int ih = (d.job + 1) / 2;
    Eigen::Matrix3Xd expected = Eigen::Matrix3Xd::Zero(3, jobs.run.natom);
    expected(ih - 1) = factor * expected_move(jobs, d.job);
    const double deviation = (d.moved - expected).cwiseAbs().maxCoeff();
    largest = std::fmax(largest, deviation);
    if (deviation <= limits.geometry) continue;
    // The line of the atom that has moved, or should have.
    const int atom = ((d.first > 0 ? d.first : ih) - 1) / 3;
    findings.error(sign_line(jobs, d.job, at(jobs.sign_file(d.job).geometry->lines, atom)),
                   {d.job, {d.job}}, complaint(jobs, d, expected, limits.geometry));
  }
  findings.figure("largest deviation (Angstrom)", largest);
  findings.figure("displaced geometries", read);
  if (all.empty()) return;
  findings.figure("steps of the jobs over the step of the list (1)", factor);
  report_common_factor(jobs, factor, limits.geometry, findings);
}

}  // namespace check
