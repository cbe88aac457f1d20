#include "flib/qm_file_type.hpp"

#include <algorithm>
#include <string>
#include <vector>

#include "flib/get_free_fid.hpp"
#include "flib/search_word.hpp"
#include "flib/str_delete.hpp"
#include "io/fatal.hpp"
#include "io/free_form.hpp"
#include "io/text.hpp"
#include "io/units.hpp"
#include "io/values.hpp"

namespace flib {

namespace {

constexpr int head_lines = 1000;

// A file being classified: its unit, which stands behind the line that matched, and that line.
struct Match {
  int fid;
  const io::Line& line;
  std::span<char> version;
};

// Finds the version text of a match; false when the file is not of the kind after all.
using ReadVersion = bool (*)(const Match& match);

// A keyword that tells a kind of file. Columns 0 mean anywhere in the line.
struct Probe {
  std::string_view keyword;
  int first_column;
  int last_column;
  std::string_view label;
  int info;
  ReadVersion read_version;
  bool keeps_label = false;  // leaves the label behind even when there is no version
};

void set_version(const Match& match, std::string_view text) {
  io::assign(match.version, io::without_leading_blanks(text));
}

// The item with the given number of a text read free-form; blank when it is not there.
io::Line item_of(int fid, std::string_view text, int number) {
  io::FreeForm items(fid, text);
  io::Line item;
  for (int i = 0; i < number; ++i) items.text_or_blank(item);
  return item;
}

// The text behind the first `mark`; empty when there is none.
std::string_view text_behind(std::string_view text, std::string_view mark) {
  const std::size_t at = text.find(mark);
  return at == std::string_view::npos ? std::string_view{} : text.substr(at + mark.size());
}

std::string_view without_first(std::string_view text, std::size_t count) {
  return text.substr(std::min(count, text.size()));
}

io::Line next_line(const Match& match) {
  io::Line line;
  if (io::read_line(match.fid, line) != io::read_ok) {
    io::fatal_stop(io::next_place(match.fid),
                   "expected the line with the version, found the end of the file");
  }
  return line;
}

bool no_version(const Match& match) {
  set_version(match, "0");
  return true;
}

template <int number, std::size_t dropped>
bool version_in_item(const Match& match) {
  const io::Line item = item_of(match.fid, match.line.padded(), number);
  set_version(match, without_first(item.content(), dropped));
  return true;
}

bool gaussian_log_version(const Match& match) {
  io::Line line;
  if (!search_word_free(match.fid, std::string(17, '*'), line)) return false;
  line = next_line(match);
  const io::Line item = item_of(match.fid, line.padded(), 3);
  const std::string_view text = item.content();
  const std::size_t hyphen = text.find('-');
  set_version(match, hyphen == std::string_view::npos ? text : text.substr(hyphen + 1));
  return true;
}

bool gaussian_matrix_version(const Match& match) {
  set_version(match, item_of(match.fid, text_behind(match.line.padded(), "IVers="), 1).padded());
  return true;
}

bool checkpoint_version(const Match& match) {
  if (item_of(match.fid, match.line.padded(), 5).content() != "I") return false;
  set_version(match, "UNKNOWN");
  return true;
}

bool turbomole_version(const Match& match) {
  const io::Line item = item_of(match.fid, text_behind(match.line.padded(), "TURBOMOLE"), 1);
  std::string text(without_first(item.content(), 1));
  std::replace_if(
      text.begin(), text.end(), [](char c) { return !io::is_digit(c) && c != '.'; }, ' ');
  set_version(match, text);
  return true;
}

bool version_below_heading(const Match& match) {
  io::Line line;
  search_word(match.fid, 2, 8, "VERSION", line);
  set_version(match, next_line(match).padded());
  return true;
}

bool gamess_version(const Match& match) {
  const std::string_view behind = text_behind(match.line.content(), "=");
  const std::size_t asterisk = behind.rfind('*');
  set_version(match,
              asterisk == std::string_view::npos ? std::string_view{} : behind.substr(0, asterisk));
  return true;
}

bool qchem_version(const Match& match) {
  io::Line line = next_line(match);
  str_delete(line, ",");
  set_version(match, line.padded());
  return true;
}

bool orca_version(const Match& match) {
  set_version(match, text_behind(match.line.content(), ":"));
  return true;
}

// In the order in which they decide. MOLPRO's row never matches, since six letters cannot equal one
// column: deliberate, those files are to fall through to the later rows.
constexpr Probe probes[] = {
    {"Entering Gaussian System", 0, 0, "GAUSSIAN LOG", 2, gaussian_log_version, true},
    {"Label Gaussian matrix elements", 0, 0, "GAUSSIAN MAT", -1, gaussian_matrix_version},
    {"Number of basis functions", 1, 25, "GAUSSIAN FCHK", -1, checkpoint_version},
    {"ChemShell", 0, 0, "CHEMSHELL", 4, version_in_item<3, 0>},
    {"MOLPRO", 67, 67, "MOLPRO", 0, no_version},
    {"TURBOMOLE V", 0, 0, "TURBOMOLE", 1, turbomole_version},
    {"TURBOMOLE rev. V", 0, 0, "TURBOMOLE", 1, turbomole_version},
    {"$couplingvector", 0, 0, "TURBOMOLE CTRL", 1, no_version},
    {"dumping /fiocom/", 2, 17, "GAUSSIAN RWF", 1, no_version},
    {"QRX MOLECULAR INFO", 2, 19, "QRX", 3, version_below_heading},
    {"NUMERICAL FREQUENCY", 2, 20, "ZANDORCE", 3, version_below_heading},
    {"PWSCF", 0, 0, "PWOUT", 3, version_in_item<3, 2>},
    {"vasp", 0, 0, "VASP", 3, version_in_item<1, 5>},
    {"NWChem", 0, 0, "NWCHEM", 0, version_in_item<6, 0>},
    {"_cell_length_a", 0, 0, "CIF", 0, no_version},
    {"POTENTIAL PARAMETERS", 11, 30, "WIEN2K_1", 0, no_version},
    {"bandindex:", 3, 12, "WIEN2K_sp", 0, no_version},
    {"GAMESS VERSION", 0, 0, "GAMESS_US", 0, gamess_version},
    {"Inc., Pleasanton", 0, 0, "QCHEM", 0, qchem_version},
    {"$orca_hessian_file", 0, 0, "ORCA HESS", 0, no_version},
    {"ORCA version", 0, 0, "ORCA OUT", 0, orca_version},
    {"TeraChem v", 0, 0, "TERACHEM", 0, version_in_item<3, 0>},
    {"BDF version information", 0, 0, "BDF OUT", 0, no_version},
    {"UniMoVib data file", 0, 0, "BDF UMV", 0, no_version},
    {"HESSIAN", 0, 0, "BDF HESS", 0, no_version},
};

bool holds_keyword(std::string_view line, const Probe& probe) {
  return probe.first_column == 0
             ? holds_anywhere(line, probe.keyword)
             : holds_in_columns(line, probe.first_column, probe.last_column, probe.keyword);
}

// The first lines of the file, read once for all probes.
std::vector<io::Line> read_head(int fid) {
  std::vector<io::Line> head;
  io::Line line;
  while (head.size() < head_lines && io::read_line(fid, line) == io::read_ok) head.push_back(line);
  if (head.empty()) {
    io::fatal_stop(io::next_place(fid), "expected the first line of the file, found an empty file");
  }
  return head;
}

// Places the unit behind the line with the given number.
void go_behind_line(int fid, long long number) {
  io::rewind(fid);
  io::pass_over_lines(fid, static_cast<int>(number), "a line read before");
}

bool classify(int fid, std::span<char> file_type, std::span<char> version, int& info) {
  const std::vector<io::Line> head = read_head(fid);
  for (const Probe& probe : probes) {
    const auto line = std::find_if(head.begin(), head.end(), [&](const io::Line& text) {
      return holds_keyword(text.padded(), probe);
    });
    if (line == head.end()) continue;
    if (probe.keeps_label) io::assign(file_type, probe.label);
    go_behind_line(fid, line - head.begin() + 1);
    if (!probe.read_version({fid, *line, version})) continue;
    io::assign(file_type, probe.label);
    info = probe.info;
    return true;
  }
  return false;
}

}  // namespace

void qm_file_type(std::string_view fname, std::span<char> file_type, std::span<char> version,
                  int& info) {
  info = -1;
  int fid = 0;
  get_free_fid(fid);
  if (io::try_open_existing(fid, fname) != 0) return;
  const bool recognised = classify(fid, file_type, version, info);
  io::close(fid);
  if (!recognised) {
    io::print_line("*** WARNING: Unknown output type with file '" +
                   std::string(io::trimmed(fname)) + "'");
  }
}

}  // namespace flib
