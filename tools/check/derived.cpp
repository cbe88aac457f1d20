// Jobs whose forces are carried over from others: source, operation and atom table.
//
// The force on atom a is op times the force on atom atom_m(a) of the source, so the operation must
// carry atom atom_m(a) of the reference onto atom a, and the source's displacement onto the job's.
#include <Eigen/Dense>
#include <algorithm>
#include <map>
#include <set>

#include "analysis/operations.hpp"
#include "check/checks.hpp"

namespace check {

namespace {

using analysis::operation;

// How far operation k is from carrying the atoms of the table's column onto its rows, and from the
// reverse: Angstrom, from the centre of the atoms. Only forces are carried over, so the operation
// may pass through any point.
struct Misfit {
  double forward = 0.0;
  double reverse = 0.0;
  int atom = 0;  // where `forward` is
};

Misfit misfit_of(const JobData& jobs, int k) {
  const Eigen::Matrix3Xd x = jobs.geometry(0).colwise() - jobs.geometry(0).rowwise().mean();
  Eigen::Matrix3Xd images(3, x.cols());  // the atoms that the table says are carried onto x
  for (int a = 1; a <= jobs.run.natom; ++a) images.col(a - 1) = x.col(jobs.run.atom_m(a, k) - 1);
  Eigen::Index axis = 0, atom = 0;
  const Eigen::Matrix3d op = operation(jobs.run, k);
  const double forward = (op * images - x).cwiseAbs().maxCoeff(&axis, &atom);
  return {forward, (op * x - images).cwiseAbs().maxCoeff(), static_cast<int>(atom) + 1};
}

// The first atom whose image is taken twice or is of another element, 0 where there is none.
int wrong_image(const zandor::RunData& run, int k) {
  std::set<int> taken;
  for (int a = 1; a <= run.natom; ++a) {
    const int image = run.atom_m(a, k);
    if (!taken.insert(image).second || at(run.nat, image - 1) != at(run.nat, a - 1)) return a;
  }
  return 0;
}

// What is wrong with an operation, in a sentence; empty when nothing is.
std::string complaint_about(const JobData& jobs, int k, double tolerance) {
  const zandor::RunData& run = jobs.run;
  const double off = analysis::off_orthogonal(operation(run, k));
  if (off > tolerance) return "is not orthogonal: op op^T differs from 1 by " + rounded(off);
  if (const int atom = wrong_image(run, k); atom > 0) {
    return io::joined("has in the atom table an image of atom ", atom,
                      " that is of another element or taken twice: ", run.atom_m(atom, k));
  }
  const Misfit misfit = misfit_of(jobs, k);
  if (misfit.forward <= tolerance) return {};
  const std::string expected = io::joined("does not carry atom ", run.atom_m(misfit.atom, k),
                                          " onto atom ", misfit.atom, " as the atom table says");
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
void pass_on_list_warnings(const JobData& jobs, Findings& findings) {
  for (const Fault& warning : jobs.list.warnings) {
    for (int i = 1; i <= jobs.run.n6; ++i) {
      if (jobs.job(i).is_calc || jobs.job(i).list_line != warning.line) continue;
      findings.add(jobs.source(i) == 0 ? Severity::error : Severity::warning,
                   {warning.file, warning.line}, {i}, warning.message);
    }
  }
}

// What is wrong with derived jobs goes to the findings; the result tells for the jobs 0..n6 whether
// they have a wrong source or operation.
std::vector<char> look_at_images(const JobData& jobs, double tolerance, Findings& findings) {
  std::vector<char> wrong(jobs.run.jobs.size(), 0);
  const auto add = [&](int i, const auto&... parts) {
    findings.error(list_line(jobs, i), {i}, parts...);
  };
  for (const auto& [k, derived] : jobs_by_operation(jobs)) {
    const std::string complaint = complaint_about(jobs, k, tolerance);
    if (!complaint.empty()) {
      const auto more = std::ssize(derived) - 1;
      add(derived.front(), "operation ", k, " of ", job_text(jobs, derived.front()),
          more > 0 ? " and " + counted(more, "more job") : "", " ", complaint);
    }
    for (const int i : derived) {
      const int expected =
          complaint.empty() ? analysis::image_source(jobs.run, i, k, tolerance) : 0;
      if (jobs.source(i) == 0 || jobs.job(i).calc_m == expected) continue;
      at(wrong, i) = 1;
      if (!complaint.empty()) continue;
      add(i, job_text(jobs, i), " is not the image of ", job_text(jobs, jobs.job(i).calc_m),
          " under operation ", k,
          expected > 0 ? ", but of " + job_text(jobs, expected) : ", nor of any job");
    }
  }
  return wrong;
}

}  // namespace

std::vector<char> find_wrong_images(const JobData& jobs, const Thresholds& limits) {
  if (!jobs.has_geometry()) return std::vector<char>(jobs.run.jobs.size(), 0);
  Findings ignored;
  std::vector<char> wrong = look_at_images(jobs, limits.derived, ignored);
  for (int i = 1; i <= jobs.run.n6; ++i) {  // jobs derived from wrong ones are wrong, too
    if (jobs.job(i).is_calc || jobs.source(i) == 0) continue;
    at(wrong, i) |= at(wrong, jobs.job(i).calc_m);
  }
  return wrong;
}

void check_derived(const JobData& jobs, const Thresholds& limits, Findings& findings) {
  pass_on_list_warnings(jobs, findings);
  const auto used = jobs_by_operation(jobs);
  if (used.empty()) return;
  if (!jobs.has_geometry()) {
    findings.note(place_of(jobs, 0), "not looked at: the reference's geometry is missing");
    return;
  }
  double worst = 0.0;
  for (const auto& [k, derived] : used) worst = std::max(worst, misfit_of(jobs, k).forward);
  findings.figure("largest misfit of an operation (Angstrom)", worst);
  look_at_images(jobs, limits.derived, findings);
}

}  // namespace check
