#include "flib/qm_file.hpp"

#include "flib/get_free_fid.hpp"
#include "flib/qm_file_type.hpp"
#include "io/free_form.hpp"
#include "io/units.hpp"

namespace flib {

ProbedFile open_probed_file(std::string_view fname, int& info) {
  const io::Line name(fname);
  ProbedFile file;
  io::Line version;
  qm_file_type(name.content(), file.file_type, version, info);
  get_free_fid(file.fid);
  io::open_existing(file.fid, name.content());
  return file;
}

int integer_behind_items(int fid, std::string_view line, int skipped, std::string_view what) {
  io::FreeForm items(fid, line);
  items.skip_words(skipped, {what});
  int value = 0;
  items.integer(value, {what});
  return value;
}

int integer_behind_mark(int fid, std::string_view line, std::string_view mark,
                        std::string_view what) {
  const std::size_t at = line.find(mark);
  const std::size_t behind = at == std::string_view::npos ? line.size() : at + mark.size();
  return integer_behind_items(fid, line.substr(behind), 0, what);
}

}  // namespace flib
