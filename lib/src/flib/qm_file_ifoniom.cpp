#include "flib/qm_file_ifoniom.hpp"

#include "flib/qm_file.hpp"
#include "flib/search_word.hpp"
#include "io/units.hpp"

namespace flib {

void qm_file_ifoniom(std::string_view fname, bool& ifoniom, int& info) {
  const ProbedFile file = open_probed_file(fname, info);
  io::Line line;
  ifoniom = search_word_free_ignorecase_tline(file.fid, "oniom", line, 0);
  io::close(file.fid);
}

}  // namespace flib
