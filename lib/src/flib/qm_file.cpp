#include "flib/qm_file.hpp"

#include "flib/get_free_fid.hpp"
#include "flib/qm_file_type.hpp"
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

void read_counts(io::FreeForm items, std::initializer_list<CountItem> counts) {
  for (const CountItem& count : counts) {
    items.skip_words(count.skipped, {count.what});
    items.integer(count.value, {count.what});
  }
}

std::string_view text_behind(std::string_view text, std::string_view mark) {
  const std::size_t at = text.find(mark);
  return at == std::string_view::npos ? std::string_view{} : text.substr(at + mark.size());
}

int integer_behind_mark(int fid, std::string_view line, std::string_view mark,
                        std::string_view what) {
  int value = 0;
  read_counts({fid, text_behind(line, mark)}, {{0, what, value}});
  return value;
}

}  // namespace flib
