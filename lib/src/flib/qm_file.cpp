#include "flib/qm_file.hpp"

#include <cstdlib>

#include "flib/get_free_fid.hpp"
#include "flib/qm_file_type.hpp"
#include "flib/search_word.hpp"
#include "io/fatal.hpp"
#include "io/free_form.hpp"
#include "io/units.hpp"

namespace flib {

namespace {

// The line " NBasis= n NAE= n NBE= n NFC= n NFV= n" that was found.
void read_electrons(int fid, std::string_view line, int& nae, int& nfc, int& nfv) {
  io::FreeForm items(fid, line);
  items.skip_words(3, {"NAE"});
  items.integer(nae, {"NAE"});
  items.skip_words(3, {"NFC"});
  items.integer(nfc, {"NFC"});
  items.skip_words(1, {"NFV"});
  items.integer(nfv, {"NFV"});
}

// The line " NROrb= n NOA= n NOB= n NVA= n NVB= n" that comes next.
void read_orbitals(int fid, int& ni, int& na) {
  io::FreeForm items(fid);
  items.skip_words(3, {"NOA"});
  items.integer(ni, {"NOA"});
  items.skip_words(3, {"NVA"});
  items.integer(na, {"NVA"});
}

}  // namespace

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

void qm_file_nci(std::string_view fname, int& ni, int& na, int& nci, int& nae, int& nfc, int& nfv,
                 int& info) {
  const ProbedFile file = open_probed_file(fname, info);
  info = -1;
  if (file.file_type.content() != "GAUSSIAN LOG") {
    io::print_line("The method has not been implemented, stop!");
    std::exit(1);
  }
  io::go_to_end(file.fid);
  io::Line line;
  if (search_word_back(file.fid, 16, 19, "NAE=", line)) {
    read_electrons(file.fid, line.padded(), nae, nfc, nfv);
    read_orbitals(file.fid, ni, na);
    if (search_word_free(file.fid, "roots to seek", line)) {
      nci = integer_behind_items(file.fid, line.padded(), 6, "the number of roots");
      info = 0;
    }
  }
  io::close(file.fid);
}

}  // namespace flib
