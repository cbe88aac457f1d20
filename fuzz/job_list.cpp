// The job list "files.out". What it gives is whole: every job, and only indices that exist.
#include "zandor/job_list.hpp"

#include "harness.hpp"

namespace {

void require_whole(const zandor::RunData& run) {
  fuzz::require(run.natom >= 1 && run.n3 == 3 * run.natom && run.n6 == 6 * run.natom, "sizes");
  fuzz::require(run.jobs.size() == static_cast<std::size_t>(run.n6) + 1, "number of jobs");
  const auto natom = static_cast<std::size_t>(run.natom);
  fuzz::require(run.symbol.size() == natom && run.nat.size() == natom, "number of atoms");
  fuzz::require(run.dx != 0.0 && run.nop >= 0, "step or number of operations");
  for (int i = 1; i <= run.n6; ++i) {
    const zandor::Job& job = run.jobs[static_cast<std::size_t>(i)];
    if (job.is_calc) continue;
    fuzz::require(job.calc_m >= 0 && job.calc_m <= run.n6, "source job");
    fuzz::require(job.iops >= 1 && job.iops <= run.nop, "operation");
    for (int a = 1; a <= run.natom; ++a) {
      const int image = run.atom_m(a, job.iops);
      fuzz::require(image >= 1 && image <= run.natom, "image");
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::enter_memory_folder();
  fuzz::write_file("files.out", {reinterpret_cast<const char*>(data), size});
  zandor::RunData run;
  run.symm = size % 2 == 0;
  if (!fuzz::run([&] { zandor::read_job_list(run); })) require_whole(run);
  return 0;
}
