#include "flib/qm_file_nci.hpp"

#include "flib/qm_file.hpp"
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

void qm_file_nci(std::string_view fname, int& ni, int& na, int& nci, int& nae, int& nfc, int& nfv,
                 int& info) {
  const ProbedFile file = open_probed_file(fname, info);
  info = -1;
  if (file.file_type.content() != "GAUSSIAN LOG") {
    io::print_line("The method has not been implemented, stop!");
    io::silent_stop(1);
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
