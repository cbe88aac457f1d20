// Test for a two- or three-layer job.
#pragma once

#include <string_view>

namespace flib {

// Sets `ifoniom` when the file `fname` mentions "oniom" in any letter case, whatever its kind.
//   info  what qm_file_type returned (out)
// A file that does not exist or is empty is a fatal stop.
void qm_file_ifoniom(std::string_view fname, bool& ifoniom, int& info);

}  // namespace flib
