// Counts of the excitation space of an excited-state calculation.
#pragma once

#include <string_view>

namespace flib {

// Counts of the configuration space of an excited-state calculation in the Gaussian log `fname`.
//   ni, na    active occupied and virtual orbitals (out)
//   nci       number of roots (out)
//   nae       alpha electrons (out)
//   nfc, nfv  frozen core and frozen virtual orbitals (out)
//   info      0 when all were found, otherwise -1: those not found stay as they were (out)
// On a file of another kind it prints "The method has not been implemented, stop!" on standard
// output and ends the process with status 1.
void qm_file_nci(std::string_view fname, int& ni, int& na, int& nci, int& nae, int& nfc, int& nfv,
                 int& info);

}  // namespace flib
