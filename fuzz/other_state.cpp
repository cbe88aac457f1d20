// The reader behind --modes-of: whatever stands in the file, it comes to a stop with one line, or
// to a state of the right size whose modes can be formed.
#include "ht/other_state.hpp"

#include "analysis/vibrations.hpp"
#include "flib/units_of_measure.hpp"
#include "harness.hpp"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const fuzz::MemoryFile file;
  file.set({reinterpret_cast<const char*>(data), size});
  constexpr double far_enough = 1e9;  // any geometry will do
  zandor::RunData run;
  run.natom = 3;
  run.n3 = 9;
  run.n6 = 18;
  run.nat = {8, 1, 1};
  zandor::allocate_run_arrays(run);
  for (int a = 1; a <= 3; ++a) run.mass(a) = flib::electron_masses_per_amu;
  for (int a = 1; a <= 3; ++a) run.x(1 + a % 2, a) = a;
  ht::OtherState state;
  if (fuzz::run([&] { state = ht::read_other_state(file.name(), run.natom); })) return 0;
  fuzz::require(state.numbers.size() == 3 && state.masses.size() == 3 && state.places.size() == 9 &&
                    state.force_constants.size() == 81,
                "other sizes");
  ht::Fit fit;
  if (fuzz::run([&] { fit = ht::take_modes(file.name(), far_enough, {}, run); })) return 0;
  fuzz::require(fit.distance <= far_enough && fit.atom >= 1 && fit.atom <= 3, "no distance");
  fuzz::run([&] { analysis::exact_vibrations(run, analysis::rigid_motions(run)); });
  return 0;
}
