#include "flib/qm_file_type.hpp"

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "flib/get_free_fid.hpp"
#include "flib/qm_file.hpp"
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

// Finds the version text of a file whose unit stands behind the line that matched; nothing when the
// file is not of the kind after all.
using ReadVersion = std::optional<std::string> (*)(int fid, const io::Line& line);

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

std::string_view without_first(std::string_view text, std::size_t count) {
  return text.substr(std::min(count, text.size()));
}

std::string next_line(int fid) {
  io::Line line;
  io::read_expected_line(fid, line, "the line with the version");
  return std::string(line.padded());
}

template <int number, std::size_t dropped>
std::optional<std::string> version_in_item(int fid, const io::Line& line) {
  const io::Line item = io::item_of(fid, line.padded(), number);
  return std::string(without_first(item.content(), dropped));
}

std::optional<std::string> no_version(int /*fid*/, const io::Line& /*line*/) { return "0"; }

std::optional<std::string> gaussian_log_version(int fid, const io::Line& /*line*/) {
  io::Line line;
  if (!search_word_free(fid, std::string(17, '*'), line)) return std::nullopt;
  const io::Line item = io::item_of(fid, next_line(fid), 3);
  return std::string(item.content().substr(item.content().find('-') + 1));
}

std::optional<std::string> gaussian_matrix_version(int fid, const io::Line& line) {
  return std::string(io::item_of(fid, text_behind(line.padded(), "IVers=")).content());
}

std::optional<std::string> checkpoint_version(int fid, const io::Line& line) {
  if (io::item_of(fid, line.padded(), 5).content() != "I") return std::nullopt;
  return "UNKNOWN";
}

std::optional<std::string> turbomole_version(int fid, const io::Line& line) {
  const io::Line item = io::item_of(fid, text_behind(line.padded(), "TURBOMOLE"));
  std::string text(without_first(item.content(), 1));
  std::replace_if(
      text.begin(), text.end(), [](char c) { return !io::is_digit(c) && c != '.'; }, ' ');
  return text;
}

std::optional<std::string> version_below_heading(int fid, const io::Line& /*line*/) {
  io::Line line;
  search_word(fid, 2, 8, "VERSION", line);
  return next_line(fid);
}

std::optional<std::string> gamess_version(int /*fid*/, const io::Line& line) {
  const std::string_view behind = text_behind(line.content(), "=");
  const std::size_t asterisk = behind.rfind('*');
  return std::string(behind.substr(0, asterisk == behind.npos ? 0 : asterisk));
}

std::optional<std::string> qchem_version(int fid, const io::Line& /*line*/) {
  std::string line = next_line(fid);
  str_delete(line, ",");
  return line;
}

std::optional<std::string> orca_version(int /*fid*/, const io::Line& line) {
  return std::string(text_behind(line.content(), ":"));
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

bool classify(int fid, std::span<char> file_type, std::span<char> version, int& info) {
  const std::vector<io::Line> head = read_head(fid);
  for (const Probe& probe : probes) {
    const auto line = std::find_if(head.begin(), head.end(), [&](const io::Line& text) {
      return holds_keyword(text.padded(), probe);
    });
    if (line == head.end()) continue;
    if (probe.keeps_label) io::assign(file_type, probe.label);
    io::rewind(fid);
    io::pass_over_lines(fid, static_cast<int>(line - head.begin()) + 1, "a line read before");
    const auto text = probe.read_version(fid, *line);
    if (!text) continue;
    io::assign(file_type, probe.label);
    io::assign(version, io::without_leading_blanks(*text));
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
