// Jobs whose forces are carried over from others: source, operation and atom table.
//
// The force on atom a is op times the force on atom atom_m(a) of the source, so the operation must
// carry atom atom_m(a) of the reference onto atom a, and the source's displacement onto the job's.
#include <Eigen/Dense>
#include <algorithm>
#include <cmath>
#include <map>

#include "analysis/operations.hpp"
#include "check/checks.hpp"

namespace check {

namespace {

using analysis::operation;

// Angstrom, from the centre of the atoms: only forces are carried over, so the operation may pass
// through any point.
Eigen::Matrix3Xd centred_geometry(const JobData& jobs) {
  Eigen::Matrix3Xd x =
      Eigen::Map<const Eigen::Matrix3Xd>(jobs.sign_file(0).geometry->x.data(), 3, jobs.run.natom);
  x.colwise() -= x.rowwise().mean().eval();
  return x;
}

// How far operation k is from carrying the atoms of the table's column onto its rows, and from the
// reverse: Angstrom.
struct Misfit {
  double forward = 0.0;
  double reverse = 0.0;
  int atom = 0;  // where `forward` is
};

Misfit misfit_of(const zandor::RunData& run, const Eigen::Matrix3Xd& x, int k) {
  const Eigen::Matrix3d op = operation(run, k);
  Misfit misfit;
  for (int a = 1; a <= run.natom; ++a) {
    const int b = run.atom_m(a, k);
    const double forward = (op * x.col(b - 1) - x.col(a - 1)).cwiseAbs().maxCoeff();
    const double reverse = (op * x.col(a - 1) - x.col(b - 1)).cwiseAbs().maxCoeff();
    if (misfit.atom == 0 || forward > misfit.forward) {
      misfit.forward = forward;
      misfit.atom = a;
    }
    misfit.reverse = std::max(misfit.reverse, reverse);
  }
  return misfit;
}

// The first atom whose image is taken twice or is of another element, 0 where there is none.
int wrong_image(const zandor::RunData& run, int k) {
  std::vector<char> taken(static_cast<std::size_t>(run.natom), 0);
  for (int a = 1; a <= run.natom; ++a) {
    const auto image = static_cast<std::size_t>(run.atom_m(a, k) - 1);
    if (taken[image] != 0 || run.nat[image] != run.nat[static_cast<std::size_t>(a - 1)]) return a;
    taken[image] = 1;
  }
  return 0;
}

// What is wrong with an operation, in a sentence; empty when nothing is.
std::string complaint_about(const JobData& jobs, const Eigen::Matrix3Xd& x, int k,
                            double tolerance) {
  const zandor::RunData& run = jobs.run;
  const double off = analysis::off_orthogonal(operation(run, k));
  if (off > tolerance) return "is not orthogonal: op op^T differs from 1 by " + rounded(off);
  if (const int atom = wrong_image(run, k); atom > 0) {
    return "has in the atom table an image of atom " + std::to_string(atom) +
           " that is of another element or taken twice: " + std::to_string(run.atom_m(atom, k));
  }
  const Misfit misfit = misfit_of(run, x, k);
  if (misfit.forward <= tolerance) return {};
  const std::string expected = "does not carry atom " + std::to_string(run.atom_m(misfit.atom, k)) +
                               " onto atom " + std::to_string(misfit.atom) +
                               " as the atom table says";
  if (misfit.reverse <= tolerance) {
    return expected +
           ", but the other way round: the table holds the inverse map, or the matrix is the "
           "transpose (row a must hold the atom that the operation carries onto a)";
  }
  return expected + ": " + rounded(misfit.forward) + " Angstrom away";
}

// The jobs that each operation carries over, in their order.
std::map<int, std::vector<int>> jobs_by_operation(const JobData& jobs) {
  std::map<int, std::vector<int>> used;
  for (int i = 1; i <= jobs.run.n6; ++i) {
    if (!jobs.job(i).is_calc) used[jobs.job(i).iops].push_back(i);
  }
  return used;
}

// What the reader of the list says about derived jobs: sources without forces.
void pass_on_list_warnings(const JobData& jobs, Report& report) {
  for (const Fault& warning : jobs.list.warnings) {
    for (int i = 1; i <= jobs.run.n6; ++i) {
      if (jobs.job(i).is_calc || jobs.job(i).list_line != warning.line) continue;
      report.add(jobs.source(i) == 0 ? Severity::error : Severity::warning,
                 {warning.file, warning.line}, warning.message, i);
    }
  }
}

void report_operation(const JobData& jobs, int k, const std::vector<int>& derived,
                      const std::string& complaint, Report& report) {
  const auto more = static_cast<long long>(derived.size()) - 1;
  report.add(Severity::error, place_of(jobs, derived.front()),
             "operation " + std::to_string(k) + " of " + job_text(jobs, derived.front()) +
                 (more > 0 ? " and " + counted(more, "more job") : "") + " " + complaint,
             derived.front());
}

void report_source(const JobData& jobs, int i, int expected, Report& report) {
  report.add(Severity::error, place_of(jobs, i),
             job_text(jobs, i) + " is not the image of " + job_text(jobs, jobs.job(i).calc_m) +
                 " under operation " + std::to_string(jobs.job(i).iops) +
                 (expected > 0 ? ", but of " + job_text(jobs, expected) : ", nor of any job"),
             i);
}

// What is wrong with derived jobs goes to the report, if there is one, and to `wrong`.
void look_at_images(const JobData& jobs, double tolerance, Report* report,
                    std::vector<char>& wrong) {
  const Eigen::Matrix3Xd x = centred_geometry(jobs);
  for (const auto& [k, derived] : jobs_by_operation(jobs)) {
    const std::string complaint = complaint_about(jobs, x, k, tolerance);
    if (!complaint.empty() && report != nullptr) {
      report_operation(jobs, k, derived, complaint, *report);
    }
    for (const int i : derived) {
      const int expected =
          complaint.empty() ? analysis::image_source(jobs.run, i, k, tolerance) : 0;
      if (jobs.source(i) == 0 || jobs.job(i).calc_m == expected) continue;
      wrong[static_cast<std::size_t>(i)] = 1;
      if (complaint.empty() && report != nullptr) report_source(jobs, i, expected, *report);
    }
  }
}

// Jobs derived from wrong ones are wrong, too.
void pass_on_faults(const JobData& jobs, std::vector<char>& wrong) {
  for (int i = 1; i <= jobs.run.n6; ++i) {
    const zandor::Job& job = jobs.job(i);
    const auto source = static_cast<std::size_t>(job.calc_m);
    if (!job.is_calc && jobs.source(i) > 0 && wrong[source] != 0) {
      wrong[static_cast<std::size_t>(i)] = 1;
    }
  }
}

}  // namespace

std::vector<char> find_wrong_images(const JobData& jobs, const Thresholds& limits) {
  std::vector<char> wrong(jobs.run.jobs.size(), 0);
  if (!jobs.has_geometry()) return wrong;
  look_at_images(jobs, limits.derived, nullptr, wrong);
  pass_on_faults(jobs, wrong);
  return wrong;
}

void check_derived(const JobData& jobs, const Thresholds& limits, Report& report) {
  pass_on_list_warnings(jobs, report);
  const auto used = jobs_by_operation(jobs);
  if (used.empty()) return;
  if (!jobs.has_geometry()) {
    report.note(place_of(jobs, 0), "not looked at: the reference's geometry is missing");
    return;
  }
  const Eigen::Matrix3Xd x = centred_geometry(jobs);
  double worst = 0.0;
  for (const auto& [k, derived] : used) {
    worst = std::max(worst, misfit_of(jobs.run, x, k).forward);
  }
  report.figure("largest misfit of an operation (Angstrom)", worst);
  std::vector<char> wrong = jobs.context.wrong_images;
  look_at_images(jobs, limits.derived, &report, wrong);
}

}  // namespace check
