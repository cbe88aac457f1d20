#include "export/html.hpp"

#include <algorithm>
#include <cmath>

#include "analysis/formula.hpp"
#include "analysis/herzberg_teller.hpp"
#include "export/json_text.hpp"
#include "export/page.hpp"
#include "flib/units_of_measure.hpp"
#include "io/fatal.hpp"

namespace exporting {

namespace {

constexpr int largest_packed = 32767;

// Appends three bytes as four base64 digits.
void append_base64(std::string& text, unsigned bytes) {
  constexpr char digits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  for (int shift = 18; shift >= 0; shift -= 6) text += digits[bytes >> shift & 63U];
}

// Strengths of the 0-1 transitions; null for imaginary modes and rigid motions.
void write_strengths(const ModeList& list, JsonText& json) {
  json.begin_array();
  for (std::size_t k = 1; k <= list.frequencies.size(); ++k) {
    if (list.frequencies[k - 1] > 0.0 && !is_rigid_motion(list, k)) {
      json.number(list.strengths[k - 1]);
    } else {
      json.null();
    }
  }
  json.end_array();
}

// All displacements as one base64 text, whose pieces must not end within a group of three bytes:
// a mode has 3 natom integers of two bytes.
void write_displacements(const ModeList& list, JsonText& json) {
  const std::size_t n3 = list.frequencies.size();
  std::vector<double> scales(n3);
  json.key("displacements");
  json.begin_text();
  for (std::size_t k = 0; k < n3; ++k) {
    json.piece_of_text(packed_displacements(list.displacements.column(1, k + 1), n3, scales[k]));
  }
  json.end_text();
  json.key("displacement_scales");
  json.numbers(scales.data(), n3);
}

void write_mode_set(const ModeList& list, JsonText& json) {
  const std::size_t n3 = list.frequencies.size();
  json.begin_object();
  json.key("frequencies");
  json.numbers(list.frequencies.data(), n3);
  json.key("reduced_masses");
  json.numbers(list.reduced_masses.data(), n3);
  json.key("rigid_weights");
  json.numbers(list.rigid_weights.data(), n3);
  json.key("rigid_motions");
  json.integers(list.rigid_motions);
  json.key("dipole_derivatives");
  if (list.dipole_derivatives.empty()) {
    json.null();
  } else {
    json.numbers(list.dipole_derivatives.data(), list.dipole_derivatives.size());
    json.key("strengths");
    write_strengths(list, json);
  }
  write_displacements(list, json);
  json.end_object();
}

void write_view(const Results& results, JsonText& json) {
  json.key("formula");
  json.texts(analysis::formula_parts(results.symbols));
  json.key("symbols");
  json.texts(results.symbols);
  json.key("atomic_numbers");
  json.integers(results.atomic_numbers);
  json.key("geometry");
  json.begin_array();
  for (const double x : results.geometry) json.number(x * flib::angstrom_per_bohr);
  json.end_array();
  json.key("view");
  json.numbers(results.view.data(), results.view.size());
}

}  // namespace

std::string packed_displacements(const double* values, std::size_t size, double& scale) {
  scale = 0.0;
  for (std::size_t i = 0; i < size; ++i) scale = std::max(scale, std::fabs(values[i]));
  std::string text;
  unsigned group = 0;
  int bytes = 0;
  const auto append = [&](unsigned byte) {
    group = group << 8U | byte;
    if (++bytes % 3 == 0) append_base64(text, group & 0xffffffU);
  };
  for (std::size_t i = 0; i < size; ++i) {
    const double share = scale > 0.0 ? values[i] / scale : 0.0;
    const auto packed = static_cast<unsigned>(std::lround(share * largest_packed));
    append(packed & 0xffU);
    append(packed >> 8U & 0xffU);
  }
  return text;
}

void write_html(const Results& results, io::OutputFile& out) {
  constexpr std::string_view place_of_data = "@DATA@";
  const std::string_view page(page_template);
  const std::size_t at = page.find(place_of_data);
  out.text(page.substr(0, at));
  JsonText json(out);
  json.begin_object();
  json.key("program");
  json.text(std::string(io::program_name) + " " ZANDOR_VERSION);
  json.key("control_file");
  json.text(results.control_file);
  json.key("notes");
  json.texts(results.notes);
  // The files that the page saves say so, too.
  json.key("changed_masses");
  json.text(results.changed_masses);
  json.key("debye_per_angstrom_root_u");
  json.number(analysis::debye_per_angstrom_root_amu);
  write_view(results, json);
  json.key("sets");
  json.begin_object();
  json.key("projected");
  write_mode_set(results.projected, json);
  json.key("unprojected");
  write_mode_set(results.unprojected, json);
  json.end_object();
  json.end_object();
  out.text(page.substr(at + place_of_data.size()));
}

}  // namespace exporting
