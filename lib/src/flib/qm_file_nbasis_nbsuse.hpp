// Electron and basis counts of a quantum-chemistry file.
#pragma once

#include <string_view>

namespace flib {

// Reads the counts of the file `fname`.
//   na, nb  alpha and beta electrons (out)
//   nbasis  basis functions (out)
//   nbsuse  independent functions (out)
//   info    0 when the counts of the file's kind were found, otherwise -1 (out)
// What is not found stays as it was. From a Gaussian log the last basis counts; its `nbsuse` is
// taken from the next record of standard input, not from the file: the caller feeds it. NWChem and
// Turbomole outputs give `nbasis`, and NWChem's electrons where they are printed.
void qm_file_nbasis_nbsuse(std::string_view fname, int& na, int& nb, int& nbasis, int& nbsuse,
                           int& info);

}  // namespace flib
