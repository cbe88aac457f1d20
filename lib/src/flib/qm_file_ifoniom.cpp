#include "flib/qm_file_ifoniom.hpp"

#include "flib/get_free_fid.hpp"
#include "flib/qm_file_type.hpp"
#include "flib/search_word.hpp"
#include "io/text.hpp"
#include "io/units.hpp"

namespace flib {

void qm_file_ifoniom(std::string_view fname, bool& ifoniom, int& info) {
  const io::Line name(fname);
  io::Line file_type;
  io::Line version;
  qm_file_type(name.content(), file_type, version, info);
  int fid = 0;
  get_free_fid(fid);
  io::open_existing(fid, name.content());
  io::Line line;
  ifoniom = search_word_free_ignorecase_tline(fid, "oniom", line, 0);
  io::close(fid);
}

}  // namespace flib
