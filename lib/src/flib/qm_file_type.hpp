// Recognition of the program that wrote a quantum-chemistry file, and of the file's kind.
#pragma once

#include <span>
#include <string_view>

namespace flib {

// Decides by an ordered list of keywords within the first 1000 lines of the file `fname`, 200
// characters of each; the first keyword of the list that is there decides.
//   file_type  type label, at least 14 characters (out)
//   version    version text; "0" where the kind has none, "UNKNOWN" for a formatted checkpoint
//              file, blank where the line that should hold it does not (out)
//   info       class code of the kind; -1 when nothing was recognised, and for two kinds that have
//              no code (out)
// A file that cannot be opened: info -1, nothing else changes. An unrecognised one: a warning line
// on standard output, label and version stay as they were, except that a Gaussian log without the
// asterisk banner leaves its label. An empty file, and one that ends where the line with the
// version should follow, is a fatal stop.
void qm_file_type(std::string_view fname, std::span<char> file_type, std::span<char> version,
                  int& info);

}  // namespace flib
