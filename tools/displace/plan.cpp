#include "displace/plan.hpp"

#include <algorithm>
#include <cmath>

#include "analysis/formula.hpp"
#include "analysis/operations.hpp"

namespace displace {

namespace {

std::string job_name(const std::string& name, int natom, int job) {
  if (job == 0) return name + "-ref";
  const int ih = (job - 1) / 2;
  std::string atom = std::to_string(ih / 3 + 1);
  const std::size_t width = std::max<std::size_t>(2, std::to_string(natom).size());
  atom.insert(0, width - atom.size(), '0');
  return name + "-" + atom + (job % 2 == 0 ? "p" : "m") + "xyz"[ih % 3];
}

void fill_operations(const Group& group, zandor::RunData& run) {
  run.nop = static_cast<int>(group.size());
  run.op = {"op", {3, 3, run.nop}};
  run.atom_m = {"atom_m", {run.natom, run.nop}};
  for (int k = 1; k <= run.nop; ++k) {
    const Operation& operation = group[static_cast<std::size_t>(k - 1)];
    Eigen::Map<Eigen::Matrix3d>(run.op.column(1, k)) = operation.matrix;
    for (int a = 1; a <= run.natom; ++a) {
      run.atom_m(a, k) = operation.images[static_cast<std::size_t>(a - 1)];
    }
  }
}

// Every job comes from the first of its images in the list, by one operation of the group.
void fill_jobs(zandor::RunData& run) {
  run.jobs.resize(static_cast<std::size_t>(run.n6) + 1);
  for (int i = 0; i <= run.n6; ++i) {
    zandor::Job& job = run.jobs[static_cast<std::size_t>(i)];
    job.calc_m = i;
    job.iops = 1;
    for (int k = 1; i > 0 && k <= run.nop; ++k) {
      const int source = analysis::image_source(run, i, k, 0.1);
      if (source >= job.calc_m) continue;
      job.calc_m = source;
      job.iops = k;
    }
    job.is_calc = job.calc_m == i;
  }
}

}  // namespace

double rounded_place(double angstrom) {
  const double rounded = std::round(angstrom * 1e10) / 1e10;
  return rounded == 0.0 ? 0.0 : rounded;  // no -0
}

Plan make_plan(const Molecule& molecule, Orientation orientation, const std::string& name,
               double step) {
  Plan plan;
  plan.step = step;
  plan.charge = molecule.charge;
  plan.multiplicity = molecule.multiplicity;
  zandor::RunData& run = plan.run;
  run.natom = static_cast<int>(molecule.x.cols());
  run.n3 = 3 * run.natom;
  run.n6 = 6 * run.natom;
  run.symm = orientation.to_run < run.n6;
  run.nat = molecule.numbers;
  run.xa = {"xa", {3, run.natom}};
  for (int a = 1; a <= run.natom; ++a) {
    run.symbol.emplace_back(molecule.symbols[static_cast<std::size_t>(a - 1)]);
    for (int k = 1; k <= 3; ++k) run.xa(k, a) = rounded_place(orientation.x(k - 1, a - 1));
  }
  fill_operations(orientation.group, run);
  fill_jobs(run);
  for (int i = 0; i <= run.n6; ++i) plan.names.push_back(job_name(name, run.natom, i));
  for (const std::string& part : analysis::formula_parts(molecule.symbols)) plan.formula += part;
  plan.orientation = std::move(orientation);
  return plan;
}

std::vector<int> jobs_to_run(const zandor::RunData& run) {
  std::vector<int> jobs = {0};
  for (int i = 1; i <= run.n6; ++i) {
    if (run.jobs[static_cast<std::size_t>(i)].is_calc) jobs.push_back(i);
  }
  return jobs;
}

}  // namespace displace
