// What the probes of quantum-chemistry files share, and the counts of the excitation space.
#pragma once

#include <string_view>

#include "io/text.hpp"

namespace flib {

// A file that a probe has opened: its unit and its type label.
struct ProbedFile {
  int fid = 0;
  io::Line file_type;
};

// Recognises the file `fname` (its first 200 characters count) and opens it. A file that does not
// exist or is empty is a fatal stop.
//   info  class code of the file's kind (out)
ProbedFile open_probed_file(std::string_view fname, int& info);

// Reads an integer from a line that was read from unit `fid`, behind `skipped` items.
int integer_behind_items(int fid, std::string_view line, int skipped, std::string_view what);

// Reads the integer behind the first `mark` of a line that was read from unit `fid`.
int integer_behind_mark(int fid, std::string_view line, std::string_view mark,
                        std::string_view what);

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
