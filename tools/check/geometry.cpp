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

// How a geometry block differs from the reference's.
struct Displacement {
  int job = 0;
  int coordinate = 0;  // the one that moved, 0: none, -1: several
  double moved = 0.0;  // Angstrom
  int atom = 0;        // the first of those that moved; 0: none
};

Displacement displacement_of(const JobData& jobs, int i, double tolerance) {
  const std::vector<double>& x = jobs.sign_file(i).geometry->x;
  const std::vector<double>& reference = jobs.sign_file(0).geometry->x;
  Displacement found{i};
  for (std::size_t k = 0; k < x.size(); ++k) {
    const double moved = x[k] - reference[k];
    if (std::fabs(moved) <= tolerance) continue;
    found.coordinate = found.coordinate == 0 ? static_cast<int>(k) + 1 : -1;
    found.moved = moved;
    if (found.atom == 0) found.atom = static_cast<int>(k / 3) + 1;
  }
  return found;
}

double step(const JobData& jobs) { return jobs.run.dx * flib::angstrom_per_bohr; }

double expected_move(const JobData& jobs, int i) {
  return analysis::step_sign(jobs.run, i) * step(jobs);
}

// The step that most jobs hold over the one of the job list, with its sign; 1 where no step is the
// same in nine tenths of the jobs.
double common_factor(const JobData& jobs, const std::vector<Displacement>& all, double tolerance) {
  std::vector<double> factors;
  for (const Displacement& d : all) {
    if (d.coordinate == (d.job + 1) / 2) factors.push_back(d.moved / expected_move(jobs, d.job));
  }
  if (factors.size() < 2 || 10 * factors.size() < 8 * all.size()) return 1.0;
  const double middle = analysis::median(factors);
  const auto near = std::count_if(factors.begin(), factors.end(), [&](double factor) {
    return std::fabs(factor - middle) * std::fabs(step(jobs)) <= tolerance;
  });
  const bool common = 10 * static_cast<std::size_t>(near) >= 9 * factors.size();
  return common && std::fabs(middle - 1.0) * std::fabs(step(jobs)) > tolerance ? middle : 1.0;
}

std::string unit_hint(double factor) {
  const double size = std::fabs(factor);
  if (std::fabs(size - flib::angstrom_per_bohr) < 1e-3) {
    return " (0.529...: the list gives it in Bohr, Angstrom is wanted)";
  }
  if (std::fabs(size * flib::angstrom_per_bohr - 1.0) < 1e-3) {
    return " (1.89: the jobs took the Angstrom step for Bohr)";
  }
  return {};
}

void report_common_factor(const JobData& jobs, double factor, double tolerance, Report& report) {
  if (factor < 0.0) {
    report.add(
        Severity::error, {zandor::job_list_name, jobs.job(1).list_line},
        "every job holds the step of the other sign: disp_sign, or the order of the two jobs "
        "of each coordinate, is turned");
  }
  if (std::fabs(std::fabs(factor) - 1.0) * std::fabs(step(jobs)) > tolerance) {
    report.add(Severity::error, {zandor::job_list_name, 3},
               "the step is " + rounded(step(jobs)) + " Angstrom, but the jobs moved by " +
                   rounded(std::fabs(factor)) + " times that" + unit_hint(factor));
  }
}

// The job that a displacement would fit, or nothing.
std::string fitting_job(const JobData& jobs, const Displacement& d, double expected,
                        double tolerance) {
  if (std::fabs(std::fabs(d.moved) - std::fabs(expected)) > tolerance) return {};
  const int first = 2 * d.coordinate - 1;
  const bool first_fits = d.moved * expected * analysis::step_sign(jobs.run, first) *
                              analysis::step_sign(jobs.run, d.job) >
                          0.0;
  return ": it would fit " + job_text(jobs, first_fits ? first : first + 1);
}

std::string complaint(const JobData& jobs, const Displacement& d, double expected,
                      double tolerance) {
  const int ih = (d.job + 1) / 2;
  const std::string wanted = " where " + coordinate_text(jobs, ih) + " should have moved by " +
                             rounded(expected) + " Angstrom";
  if (d.coordinate == 0) return "holds the reference geometry" + wanted;
  if (d.coordinate < 0) {
    const Atoms& atoms = *jobs.sign_file(d.job).geometry;
    std::vector<double> x = jobs.sign_file(0).geometry->x;
    x[static_cast<std::size_t>(ih - 1)] += expected;
    return "the geometry " + describe(compare_geometries(atoms.x, x, tolerance)) + "," + wanted;
  }
  return "moved " + coordinate_text(jobs, d.coordinate) + " by " + rounded(d.moved) + " Angstrom" +
         wanted + fitting_job(jobs, d, expected, tolerance);
}

bool fits(const Displacement& d, double expected, double tolerance) {
  return d.coordinate == (d.job + 1) / 2 && std::fabs(d.moved - expected) <= tolerance;
}

// Sign files that repeat the reference's block, all but a tenth of them, say nothing, unless the
// forces repeat, too. Takes the repeated ones out.
bool report_repeated_blocks(const JobData& jobs, std::vector<Displacement>& all, Report& report) {
  const auto end = std::stable_partition(all.begin(), all.end(),
                                         [](const Displacement& d) { return d.coordinate == 0; });
  const auto count = static_cast<std::size_t>(end - all.begin());
  if (count < 2 || 10 * count < 9 * all.size()) {
    std::sort(all.begin(), all.end(),
              [](const Displacement& a, const Displacement& b) { return a.job < b.job; });
    return false;
  }
  bool forces_differ = false;
  const std::size_t n3 = static_cast<std::size_t>(jobs.run.n3);
  const double* const first = jobs.run.force.column(1, all[0].job);
  for (auto d = all.begin(); d != end; ++d) {
    forces_differ |= !std::equal(first, first + n3, jobs.run.force.column(1, d->job));
  }
  const std::string files = end == all.end() ? "every displaced sign file"
                                             : counted(static_cast<long long>(count), "sign file");
  const std::string verb = end == all.end() ? "s" : "";
  all.erase(all.begin(), end);
  report.add(forces_differ ? Severity::note : Severity::error, {zandor::job_list_name},
             forces_differ
                 ? "not looked at: " + files + " repeat" + verb + " the reference geometry"
                 : files + " hold" + verb +
                       " the reference geometry, and all the same forces: nothing was displaced");
  return true;
}

std::vector<Displacement> displacements(const JobData& jobs, double tolerance) {
  std::vector<Displacement> all;
  for (int i = 1; i <= jobs.run.n6; ++i) {
    if (jobs.usable(i) && jobs.sign_file(i).geometry) {
      all.push_back(displacement_of(jobs, i, tolerance));
    }
  }
  return all;
}

void note_missing_blocks(const JobData& jobs, Report& report) {
  std::vector<int> without;
  for (int i = 1; i <= jobs.run.n6; ++i) {
    if (jobs.job(i).is_calc && jobs.usable(i) && !jobs.sign_file(i).geometry) without.push_back(i);
  }
  if (without.empty()) return;
  report.note({zandor::job_list_name},
              "not looked at: " + counted(static_cast<long long>(without.size()), "sign file") +
                  " without a geometry block that can be read (" +
                  analysis::job_names(jobs.run, without) + ")");
}

// The largest difference of a coordinate from where it should be, Angstrom.
double deviation(const JobData& jobs, const Displacement& d, double expected) {
  const std::vector<double>& x = jobs.sign_file(d.job).geometry->x;
  const std::vector<double>& reference = jobs.sign_file(0).geometry->x;
  double largest = 0.0;
  for (std::size_t k = 0; k < x.size(); ++k) {
    const bool displaced = static_cast<int>(k) == (d.job - 1) / 2;
    largest = std::max(largest, std::fabs(x[k] - reference[k] - (displaced ? expected : 0.0)));
  }
  return largest;
}

// The line of the atom that has moved, or should have.
io::Place place_of_move(const JobData& jobs, const Displacement& d) {
  const int atom = d.atom > 0 ? d.atom : ((d.job + 1) / 2 - 1) / 3 + 1;
  return {jobs.job(d.job).sgn_name.content(),
          jobs.sign_file(d.job).geometry->lines[static_cast<std::size_t>(atom - 1)]};
}

}  // namespace

void check_geometry(const JobData& jobs, const Thresholds& limits, Report& report) {
  if (!jobs.has_geometry()) {
    report.note(place_of(jobs, 0), "not looked at: the reference's geometry is missing");
    return;
  }
  std::vector<Displacement> all = displacements(jobs, limits.geometry);
  const auto read = static_cast<double>(all.size());
  note_missing_blocks(jobs, report);
  const bool repeated = report_repeated_blocks(jobs, all, report);
  const double factor = repeated ? 1.0 : common_factor(jobs, all, limits.geometry);
  double largest = not_known;
  for (const Displacement& d : all) {
    const double expected = factor * expected_move(jobs, d.job);
    largest = std::fmax(largest, deviation(jobs, d, expected));
    if (fits(d, expected, limits.geometry)) continue;
    report.add(Severity::error, place_of_move(jobs, d),
               complaint(jobs, d, expected, limits.geometry), d.job, {d.job});
  }
  report.figure("largest deviation (Angstrom)", largest);
  report.figure("displaced geometries", read);
  if (all.empty()) return;
  report.figure("steps of the jobs over the step of the list (1)", factor);
  report_common_factor(jobs, factor, limits.geometry, report);
}

}  // namespace check
