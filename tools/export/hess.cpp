#include <algorithm>

#include "export/formats.hpp"
#include "export/text_columns.hpp"

namespace exporting {

namespace {

// Five columns beside each other, under their numbers (from 0).
void write_matrix(const std::vector<const double*>& columns, io::OutputFile& out) {
  const std::size_t n = columns.size();
  for (std::size_t first = 0; first < n; first += 5) {
    const std::size_t end = std::min(first + 5, n);
    out.text("     ");
    for (std::size_t j = first; j < end; ++j) out.integer(static_cast<long long>(j), 19);
    for (std::size_t i = 0; i < n; ++i) {
      out.end_line().integer(static_cast<long long>(i), 5);
      for (std::size_t j = first; j < end; ++j) write_sci(out, columns[j][i], 19, 10);
    }
    out.end_line();
  }
}

}  // namespace

void write_hess(const Content& content, io::OutputFile& out) {
  const ModeList list = vibrations(content.projected);
  const std::size_t n3 = content.geometry.size();
  const std::vector<double> at_rest(n3, 0.0);
  std::vector<double> frequencies(n3 - list.frequencies.size(), 0.0);
  std::vector<const double*> force_constants, displacements(frequencies.size(), at_rest.data());
  for (std::size_t k = 1; k <= list.frequencies.size(); ++k) {
    frequencies.push_back(list.frequencies[k - 1]);
    displacements.push_back(list.displacements.column(1, k));
  }
  for (std::size_t i = 1; i <= n3; ++i) force_constants.push_back(content.hessian.column(i));
  const std::string size = std::to_string(n3);

  out.text("\n$orca_hessian_file\n\n$act_atom\n  0\n\n$act_coord\n  0\n\n$act_energy\n");
  write_fixed(out, content.energy.value_or(0.0), 20, 10).text("\n\n$hessian\n" + size + "\n");
  write_matrix(force_constants, out);
  out.text("\n$vibrational_frequencies\n" + size + "\n");
  for (std::size_t k = 0; k < n3; ++k) {
    write_fixed(out.integer(static_cast<long long>(k), 5), frequencies[k], 20, 10).end_line();
  }
  out.text("\n$normal_modes\n" + size + " " + size + "\n");
  write_matrix(displacements, out);
  out.text("\n#\n# " + title(content) + "\n#\n$atoms\n").text(std::to_string(n3 / 3) + "\n");
  for (std::size_t a = 0; a < n3 / 3; ++a) {
    write_fixed(out.text(content.symbols[a], 4), content.masses[a], 16, 9);
    for (std::size_t k = 0; k < 3; ++k) write_fixed(out, content.geometry[3 * a + k], 19, 12);
    out.end_line();
  }
  out.text("\n$end\n");
}

}  // namespace exporting
