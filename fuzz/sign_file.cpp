// The sign file: its keyword header, and what a computed job takes from it. Two jobs that read the
// same file get the same.
#include <algorithm>
#include <cmath>

#include "harness.hpp"
#include "zandor/get_sgn_param.hpp"
#include "zandor/job_results.hpp"

namespace {

void read_header(const std::string& name) {
  int natom = 0, nbasis = 0, nbsuse = 33, mi = 0, ma = 0, mci = 0, nfc = 0, nfv = 0;
  std::array<int, 2> location{};
  double value = 0.0;
  fuzz::run([&] {
    zandor::get_sgn_param(true, name, natom, nbasis, nbsuse, mi, ma, mci, nfc, nfv, location,
                          value);
  });
  fuzz::require(nbsuse == 33, "nbsuse was touched");
}

bool all_finite(const double* values, std::size_t size) {
  return std::all_of(values, values + size, [](double value) { return std::isfinite(value); });
}

void read_jobs(const std::string& name, int natom) {
  zandor::RunData run;
  run.natom = natom;
  run.n3 = 3 * natom;
  run.n6 = 6 * natom;
  run.jobs.resize(static_cast<std::size_t>(run.n6) + 1);
  for (const std::size_t i : {std::size_t{1}, std::size_t{5}}) {
    run.jobs[i].is_calc = true;
    run.jobs[i].sgn_name = name;
  }
  zandor::allocate_run_arrays(run);
  const std::size_t size = 3 * static_cast<std::size_t>(natom);
  zandor::SignFile file;
  const auto looked = fuzz::run([&] { zandor::read_computed_job(run, 1, &file); });
  const std::vector<double> seen(run.force.column(1, 1), run.force.column(1, 1) + size);
  const auto read = fuzz::run([&] { zandor::read_computed_job(run, 1); });
  fuzz::require(looked.has_value() == read.has_value() &&
                    (!read || looked->message == read->message) &&
                    std::equal(seen.begin(), seen.end(), run.force.column(1, 1)),
                "a look at the file changes what is read");
  if (fuzz::run([&] { zandor::read_computed_jobs(run); })) return;
  const double* const forces = run.force.column(1, 1);
  fuzz::require(all_finite(forces, size) && all_finite(run.tdip.column(1), 3), "not finite");
  fuzz::require(std::equal(forces, forces + size, run.force.column(1, 5)) &&
                    std::equal(run.tdip.column(1), run.tdip.column(1) + 3, run.tdip.column(5)),
                "two jobs that differ");
  fuzz::require(run.force(1, 1, 2) == 0.0, "forces of a job that was not computed");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const fuzz::MemoryFile file;
  file.set({reinterpret_cast<const char*>(data), size});
  read_header(file.name());
  read_jobs(file.name(), 2);
  return 0;
}
