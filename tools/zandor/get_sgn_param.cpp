#include "get_sgn_param.hpp"

#include <string>

#include "flib/get_free_fid.hpp"
#include "flib/miss_keyword.hpp"
#include "flib/search_word.hpp"
#include "io/free_form.hpp"
#include "io/text.hpp"
#include "io/units.hpp"

namespace zandor {

namespace {

// The items of the next line that holds `keyword`, behind its first two fields. Letter case counts,
// blanks do not.
io::FreeForm values_of(int fid, std::string_view keyword, io::Line& line) {
  const long long line_before = io::line_number(fid);
  if (!flib::search_word_del_space(fid, keyword, line)) {
    io::report({io::name(fid)}, "no line holds '" + std::string(keyword) + "' after line " +
                                    std::to_string(line_before));
    flib::miss_keyword(keyword);
  }
  io::FreeForm items(fid, line.padded());
  items.skip_words(2, {keyword});
  return items;
}

void read_count(int fid, std::string_view keyword, int& value) {
  io::Line line;
  values_of(fid, keyword, line).integer(value, {keyword});
}

}  // namespace

void get_sgn_param(const bool& /*ref*/, std::string_view finp, int& natom, int& nbasis,
                   int& /*nbsuse*/, int& mi, int& ma, int& mci, int& nfc, int& nfv,
                   std::array<int, 2>& tden_maxloc, double& tden_maxval) {
  const io::Line name(finp);
  int fid = 0;
  flib::get_free_fid(fid);
  io::open_existing(fid, name.content());
  read_count(fid, "natom", natom);
  read_count(fid, "nmo", nbasis);
  read_count(fid, "mi", mi);
  read_count(fid, "ma", ma);
  read_count(fid, "mci", mci);
  read_count(fid, "NFC", nfc);
  read_count(fid, "NFV", nfv);
  io::Line line;
  io::FreeForm location = values_of(fid, "tden_maxloc", line);
  for (int& index : tden_maxloc) location.integer(index, {"tden_maxloc"});
  values_of(fid, "tden_maxval", line).real(tden_maxval, {"tden_maxval"});
  io::close(fid);
}

}  // namespace zandor
