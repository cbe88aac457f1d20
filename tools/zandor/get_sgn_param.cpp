#include "zandor/get_sgn_param.hpp"

#include <string>
#include <utility>

#include "flib/file.hpp"
#include "flib/get_free_fid.hpp"
#include "flib/miss_keyword.hpp"
#include "flib/qm_file_ifoniom.hpp"
#include "flib/qm_file_natom.hpp"
#include "flib/qm_file_natom_oniom_qm.hpp"
#include "flib/qm_file_nbasis_nbsuse.hpp"
#include "flib/qm_file_nci.hpp"
#include "flib/search_word.hpp"
#include "io/free_form.hpp"
#include "io/text.hpp"
#include "io/units.hpp"

namespace zandor {

namespace {

// The items of the next line that holds `keyword`, behind its first two fields. Letter case counts,
// blanks do not.
io::FreeForm values_of(int fid, std::string_view keyword, io::Line& line) {
  const std::int64_t before = io::position(fid);
  if (!flib::search_word_del_space(fid, keyword, line)) {
    io::report({io::name(fid)},
               io::position(fid) == 0
                   ? io::joined("expected the keyword '", keyword, "', found an empty file")
                   : io::joined("no line holds '", keyword, "' after line ",
                                io::line_number(fid, before)));
    flib::miss_keyword(keyword);
  }
  io::FreeForm items(fid, line.padded());
  items.skip_words(2, {keyword});
  return items;
}

// The variables of the caller.
struct SignParameters {
  int &natom, &nbasis, &nbsuse, &mi, &ma, &mci, &nfc, &nfv;
  std::array<int, 2>& tden_maxloc;
  double& tden_maxval;
};

void read_header(std::string_view finp, const SignParameters& to) {
  const io::Line name(finp);
  int fid = 0;
  flib::get_free_fid(fid);
  io::open_existing(fid, name.content());
  const std::pair<std::string_view, int&> counts[] = {
      {"natom", to.natom}, {"nmo", to.nbasis}, {"mi", to.mi},  {"ma", to.ma},
      {"mci", to.mci},     {"NFC", to.nfc},    {"NFV", to.nfv}};
  io::Line line;
  for (const auto& [keyword, value] : counts) {
    values_of(fid, keyword, line).integer(value, {keyword});
  }
  io::FreeForm location = values_of(fid, "tden_maxloc", line);
  for (int& index : to.tden_maxloc) location.integer(index, {"tden_maxloc"});
  values_of(fid, "tden_maxval", line).real(to.tden_maxval, {"tden_maxval"});
  io::close(fid);
}

void ask_outputs(std::string_view finp, const SignParameters& to) {
  const std::string main_name(io::trimmed(flib::name_main(finp)));
  const io::Line flog(main_name + ".log");
  const io::Line ffch(main_name + ".fchk");
  int info = 0;  // what a probe does not find stays as it was
  int na = 0, nb = 0, nae = 0, nqmmm = 0;
  bool ifoniom = false;
  flib::qm_file_ifoniom(flog.padded(), ifoniom, info);
  if (ifoniom) {
    flib::qm_file_natom_oniom_qm(flog.padded(), to.natom, nqmmm, info);
  } else {
    flib::qm_file_natom(ffch.padded(), to.natom, info);
  }
  flib::qm_file_nbasis_nbsuse(ffch.padded(), na, nb, to.nbasis, to.nbsuse, info);
  flib::qm_file_nci(flog.padded(), to.mi, to.ma, to.mci, nae, to.nfc, to.nfv, info);
  to.tden_maxloc = {0, 0};
  to.tden_maxval = 0.0;
}

}  // namespace

void get_sgn_param(const bool& ref, std::string_view finp, int& natom, int& nbasis, int& nbsuse,
                   int& mi, int& ma, int& mci, int& nfc, int& nfv, std::array<int, 2>& tden_maxloc,
                   double& tden_maxval) {
  const SignParameters to{natom, nbasis, nbsuse, mi, ma, mci, nfc, nfv, tden_maxloc, tden_maxval};
  if (ref) {
    read_header(finp, to);
  } else {
    ask_outputs(finp, to);
  }
}

}  // namespace zandor
