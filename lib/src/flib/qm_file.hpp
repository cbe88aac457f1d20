// What the probes of quantum-chemistry files, qm_file_natom and its kin, share.
#pragma once

#include <initializer_list>
#include <string_view>

#include "io/free_form.hpp"
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

// An integer that stands behind `skipped` items.
struct CountItem {
  int skipped;
  std::string_view what;  // for messages
  int& value;
};

// Reads these integers one behind the other.
void read_counts(io::FreeForm items, std::initializer_list<CountItem> counts);

// The text behind the first `mark`; empty when there is none.
std::string_view text_behind(std::string_view text, std::string_view mark);

// Reads the integer behind the first `mark` of a line that was read from unit `fid`.
int integer_behind_mark(int fid, std::string_view line, std::string_view mark,
                        std::string_view what);

}  // namespace flib
