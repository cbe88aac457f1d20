#include "flib/qm_file_nci.hpp"

#include "flib/qm_file.hpp"
#include "flib/search_word.hpp"
#include "io/fatal.hpp"
#include "io/units.hpp"

namespace flib {

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
    // " NBasis= n NAE= n NBE= n NFC= n NFV= n", then " NROrb= n NOA= n NOB= n NVA= n NVB= n".
    read_counts({file.fid, line.padded()}, {{3, "NAE", nae}, {3, "NFC", nfc}, {1, "NFV", nfv}});
    read_counts(io::FreeForm(file.fid), {{3, "NOA", ni}, {3, "NVA", na}});
    if (search_word_free(file.fid, "roots to seek", line)) {
      read_counts({file.fid, line.padded()}, {{6, "the number of roots", nci}});
      info = 0;
    }
  }
  io::close(file.fid);
}

}  // namespace flib
