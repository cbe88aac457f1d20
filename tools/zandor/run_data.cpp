#include "zandor/run_data.hpp"

namespace zandor {

void allocate_run_arrays(RunData& run) {
  const int natom = run.natom;
  const int n3 = run.n3;
  const int jobs = run.n6 + 1;
  run.disp = {"disp", {3, natom, n3}};
  run.dispp = {"dispp", {3, natom, n3}};
  run.freq = {"freq", {n3}};
  run.freqp = {"freqp", {n3}};
  run.force = {"force", {3, natom, jobs}, 0};
  run.tdip = {"tdip", {3, jobs}, 0};
  run.tddip = {"tddip", {3, 3, natom}};
  run.wk = {"wk", {n3}};
  run.wkp = {"wkp", {n3}};
  run.eval = {"eval", {n3}};
  run.evalp = {"evalp", {n3}};
  run.hess = {"hess", {n3, n3}};
  run.mhess = {"mhess", {n3, n3}};
  run.mhessp = {"mhessp", {n3, n3}};
  run.c = {"c", {n3, n3}};
  run.cp = {"cp", {n3, n3}};
  run.mass = {"mass", {natom}};
  run.x = {"x", {3, natom}};
  run.xa = {"xa", {3, natom}};
  run.sqtmass = {"sqtmass", {n3}};
}

}  // namespace zandor
