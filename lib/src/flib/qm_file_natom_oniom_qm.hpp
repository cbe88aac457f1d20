// Atoms of the high layer of an ONIOM job.
#pragma once

#include <string_view>

namespace flib {

// Counts the atoms of the layer "H" in the Gaussian log `fname`.
//   nqm    atoms of the high layer; 0 when they are not found (out)
//   nqmmm  atoms of all layers; unchanged when not found (out)
//   info   0, or -1 for another kind of file and for a log without charge line (out)
// A log that breaks off in the list of atoms is a fatal stop.
void qm_file_natom_oniom_qm(std::string_view fname, int& nqm, int& nqmmm, int& info);

}  // namespace flib
