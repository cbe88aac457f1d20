#include "flib/qm_file_nbasis_nbsuse.hpp"

#include "flib/qm_file.hpp"
#include "flib/search_word.hpp"
#include "io/units.hpp"

namespace flib {

namespace {

struct Counts {
  int &na, &nb, &nbasis, &nbsuse;
};

// Finds the next line with the text and reads its last field.
bool read_last_field(int fid, std::string_view text, int& value) {
  io::Line line;
  if (!search_word_free(fid, text, line)) return false;
  std::string_view content = line.content();
  content = content.substr(0, content.find_last_not_of(" \t,/") + 1);
  const std::size_t before = content.find_last_of(" \t,");
  read_counts({fid, content.substr(before + 1)}, {{0, text, value}});
  return true;
}

bool read_checkpoint(int fid, const Counts& counts) {
  int coefficients = 0;  // tells that the file goes on to the orbitals
  return read_last_field(fid, "Number of alpha electrons", counts.na) &&
         read_last_field(fid, "Number of beta electrons", counts.nb) &&
         read_last_field(fid, "Number of basis functions", counts.nbasis) &&
         read_last_field(fid, "Number of independent functions", counts.nbsuse) &&
         read_last_field(fid, "Alpha MO coefficients", coefficients);
}

bool read_log(int fid, const Counts& counts) {
  io::go_to_end(fid);
  io::Line line;
  if (!search_word_back(fid, 16, 21, "RedAO=", line)) return false;
  read_counts({fid, line.padded()}, {{1, "NBasis", counts.nbasis}});
  read_counts(io::FreeForm(io::standard_input), {{1, "NBsUse", counts.nbsuse}});
  if (!search_word_back(fid, 16, 19, "NAE=", line)) return false;
  read_counts({fid, line.padded()},
              {{1, "NBasis", counts.nbasis}, {1, "NAE", counts.na}, {1, "NBE", counts.nb}});
  return true;
}

// A count that stands behind a text in fixed columns.
struct CountLine {
  std::string_view text;
  int first, last;
};

// As NWChem prints them: electrons before the basis (DFT), or the basis before the shells (HF).
constexpr CountLine alpha_electrons = {"Alpha electrons :", 12, 28};
constexpr CountLine beta_electrons = {"Beta electrons :", 13, 28};
constexpr CountLine ao_basis = {"AO basis - number of functions:", 11, 41};
constexpr CountLine functions = {"functions       =", 3, 19};
constexpr CountLine closed_shells = {"closed shells   =", 3, 19};
constexpr CountLine open_shells = {"open shells     =", 3, 19};
// As Turbomole prints them; its later tables of that kind are auxiliary basis sets.
constexpr CountLine basis_functions = {"number of basis functions   :", 2, 30};
constexpr CountLine scf_basis = {"total number of SCF-basis functions       :", 4, 46};

// Reads the count if the line is of that form.
bool read_count(int fid, const io::Line& line, const CountLine& form, int& value) {
  if (!holds_in_columns(line.padded(), form.first, form.last, form.text)) return false;
  value = integer_behind_mark(fid, line.padded(), form.text, form.text);
  return true;
}

// The lines behind the number of functions, up to a blank one.
void read_shells(int fid, const Counts& counts) {
  io::Line line;
  while (io::read_line(fid, line) == io::read_ok && !line.content().empty()) {
    int unpaired = 0;
    if (read_count(fid, line, closed_shells, counts.na)) counts.nb = counts.na;
    if (read_count(fid, line, open_shells, unpaired)) counts.na += unpaired;
  }
}

bool read_nwchem(int fid, const Counts& counts) {
  io::Line line;
  while (io::read_line(fid, line) == io::read_ok) {
    read_count(fid, line, alpha_electrons, counts.na);
    read_count(fid, line, beta_electrons, counts.nb);
    if (read_count(fid, line, ao_basis, counts.nbasis)) return true;
    if (read_count(fid, line, functions, counts.nbasis)) {
      read_shells(fid, counts);
      return true;
    }
  }
  return false;
}

bool read_turbomole(int fid, const Counts& counts) {
  io::Line line;
  while (io::read_line(fid, line) == io::read_ok) {
    if (read_count(fid, line, basis_functions, counts.nbasis) ||
        read_count(fid, line, scf_basis, counts.nbasis)) {
      return true;
    }
  }
  return false;
}

// Reads the counts from an open file; true when all that its kind holds were found.
bool read_kind(std::string_view label, int fid, const Counts& counts) {
  if (label == "GAUSSIAN FCHK") return read_checkpoint(fid, counts);
  if (label == "GAUSSIAN LOG") return read_log(fid, counts);
  if (label == "NWCHEM") return read_nwchem(fid, counts);
  return label == "TURBOMOLE" && read_turbomole(fid, counts);
}

}  // namespace

void qm_file_nbasis_nbsuse(std::string_view fname, int& na, int& nb, int& nbasis, int& nbsuse,
                           int& info) {
  const ProbedFile file = open_probed_file(fname, info);
  const Counts counts{na, nb, nbasis, nbsuse};
  info = read_kind(file.file_type.content(), file.fid, counts) ? 0 : -1;
  io::close(file.fid);
}

}  // namespace flib
