// Number of atoms of a quantum-chemistry file.
#pragma once

#include <string_view>

namespace flib {

// Reads or counts the atoms of the file `fname`, by a search text for each kind of file.
//   natom  number of atoms; unchanged when it is not found (out)
//   info   0 when it was found, otherwise -1 (out)
// A file that does not exist, breaks off in the block being counted or holds text where the number
// must stand is a fatal stop.
void qm_file_natom(std::string_view fname, int& natom, int& info);

}  // namespace flib
