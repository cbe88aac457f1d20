#include "export/formats.hpp"
#include "export/text_columns.hpp"

namespace exporting {

namespace {

void write_vector(io::OutputFile& out, const double* vector) {
  for (int k = 0; k < 3; ++k) out.text(fixed_column(vector[k], 18, 10));
  out.end_line();
}

void write_atoms(const Content& content, io::OutputFile& out) {
  out.text("[Atoms] AU\n");
  for (std::size_t a = 0; a < content.symbols.size(); ++a) {
    out.text(content.symbols[a], 4);
    out.text(" " + std::to_string(a + 1) + " " + std::to_string(content.atomic_numbers[a]));
    write_vector(out, &content.geometry[3 * a]);
  }
}

}  // namespace

void write_molden(const Content& content, const ModeList& list, io::OutputFile& out) {
  const std::size_t count = list.frequencies.size();
  out.text("[Molden Format]\n");
  if (!content.changed_masses.empty()) out.text("[Title]\n" + content.changed_masses + "\n");
  write_atoms(content, out);
  out.text("[N_FREQ]\n" + std::to_string(count) + "\n[FREQ]\n");
  for (const double frequency : list.frequencies) out.text(fixed_column(frequency, 16, 6) + "\n");
  out.text("[FR-COORD]\n");
  for (std::size_t a = 0; a < content.symbols.size(); ++a) {
    out.text(content.symbols[a], 4);
    write_vector(out, &content.geometry[3 * a]);
  }
  out.text("[FR-NORM-COORD]\n");
  for (std::size_t k = 1; k <= count; ++k) {
    out.text("vibration " + std::to_string(k) + "\n");
    for (std::size_t a = 1; a <= content.symbols.size(); ++a) {
      write_vector(out, list.displacements.column(a, k));
    }
  }
}

}  // namespace exporting
