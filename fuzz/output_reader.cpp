// A reader of outputs, READER: whatever stands in the file, it comes to a stop with one line, or to
// results of the right sizes that are brought into the axes of a job and written to a sign file
// which the run reads.
#include <cmath>

#include "collect/frame.hpp"
#include "collect/readers/readers.hpp"
#include "collect/sign_file_text.hpp"
#include "flib/units_of_measure.hpp"
#include "harness.hpp"
#include "zandor/sign_file.hpp"

namespace {

constexpr int natom = 3;

void write_and_read(const collect::JobOutput& output) {
  static const fuzz::MemoryFile file;
  zandor::RunData run;
  run.natom = natom;
  run.n3 = 3 * natom;
  run.n6 = 6 * natom;
  run.symbol.assign(natom, io::Text<2>("H"));
  run.nat.assign(natom, 1);
  zandor::allocate_run_arrays(run);
  for (int a = 1; a <= natom; ++a) run.mass(a) = flib::electron_masses_per_amu;
  file.set(collect::sign_file_text(run, {1, "output", &output}));
  double dipole[3], forces[3 * natom];
  const auto stop =
      fuzz::run([&] { zandor::read_sign_file(file.name(), 1, natom, dipole, forces); });
  fuzz::require(!stop, "a sign file that cannot be read");
  fuzz::require(dipole[0] == output.dipole(0), "another dipole");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const fuzz::MemoryFile file;
  file.set({reinterpret_cast<const char*>(data), size});
  // The search of the kind is what the target `probes` tries, and takes longer than a reader.
  if (size % 16 == 0) fuzz::run([&] { collect::find_reader(file.name()); });
  collect::JobOutput output;
  if (fuzz::run([&] { collect::READER(file.name(), {natom, 0}, output); })) return 0;
  fuzz::require(output.places.cols() == natom && output.forces.cols() == natom, "other sizes");
  const bool sound = output.dipole.allFinite() && output.places.allFinite() &&
                     output.forces.cwiseAbs().maxCoeff() < 1e5;
  if (!sound) return 0;
  const Eigen::Matrix3Xd expected = output.places;
  fuzz::run([&] { collect::bring_into_axes(file.name(), {1, 0, 8}, expected, output); });
  write_and_read(output);
  return 0;
}
