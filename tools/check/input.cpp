// The reference's input against its sign file: order and frame of the atoms.
#include "check/checks.hpp"
#include "check/support/geometry_difference.hpp"

namespace check {

void check_input(const JobData& jobs, const Thresholds& limits, Findings& findings) {
  const io::Place place{jobs.run.com_name.content()};
  if (!jobs.input || !jobs.has_geometry()) {
    findings.note(place, "not looked at: the geometry of the input or of the sign file is missing");
    return;
  }
  const GeometryDifference difference = compare_geometries(
      Eigen::Map<const Eigen::Matrix3Xd>(jobs.input->x.data(), 3, jobs.run.natom), jobs.geometry(0),
      limits.input);
  findings.figure("largest difference (Angstrom)", difference.largest);
  if (difference.kind == GeometryDifference::Kind::none) return;
  const bool only_shifted = difference.kind == GeometryDifference::Kind::shifted;
  findings.warn({place.file, at(jobs.input->lines, difference.atom - 1)}, {0}, "the geometry ",
                describe(difference), ", against ", jobs.sign_name(0),
                only_shifted ? ": only a shift, which does no harm"
                             : ": forces and dipoles are taken to belong to the axes of this one");
}

}  // namespace check
