#include "collect/sign_file_text.hpp"

#include <algorithm>

#include "flib/units_of_measure.hpp"
#include "io/fatal.hpp"
#include "io/fields.hpp"
#include "zandor/sign_file.hpp"

namespace collect {

namespace {

// Text put together from fields.
struct Fields {
  std::string text;

  Fields& words(std::string_view words) {
    text += words;
    return *this;
  }
  Fields& integer(long long value, int width) {
    char field[io::widest_field];
    return words({field, static_cast<std::size_t>(io::int_field(field, value, width) - field)});
  }
  Fields& fixed(double value, int width, int decimals) {
    char field[io::widest_field];
    return words(
        {field, static_cast<std::size_t>(io::fixed_field(field, value, width, decimals) - field)});
  }
  Fields& symbol(std::string_view symbol) {
    return words(" ").words(symbol).words(symbol.size() < 2 ? "  " : " ");
  }
};

void add_header(int natom, const SignFileData& data, Fields& out) {
  const Sizes& sizes = data.output->sizes;
  const std::pair<const char*, int> counts[] = {
      {"natom", natom},     {"nmo  ", sizes.nmo}, {"mi   ", sizes.mi}, {"ma   ", sizes.ma},
      {"mci  ", sizes.mci}, {"NFC  ", sizes.nfc}, {"NFV  ", sizes.nfv}};
  for (const auto& [name, count] : counts) {
    out.words(" ").words(name).words("       = ").integer(count, 8).words("\n");
  }
  // The run asks for it in the reference's file; elsewhere one that is not known is left out.
  const bool known = data.output->leading && data.has_leading;
  if (!known && data.job != 0) return;
  const LeadingElement element = known ? *data.output->leading : LeadingElement{};
  out.words(" tden_maxloc = ").integer(element.row, 8).integer(element.column, 8);
  out.words("\n tden_maxval = ").fixed(data.turned ? -element.value : element.value, 20, 10);
  out.words("\n");
}

// The lines that zandor_export looks for.
void add_states(const JobOutput& output, Fields& out) {
  const auto line = [&](const char* words, std::optional<double> value) {
    if (value) out.words(words).fixed(*value, 20, 10).words("\n");
  };
  std::optional<double> excitation;
  if (output.energy && output.ground_energy) {
    excitation = (*output.energy - *output.ground_energy) * flib::electronvolts_per_hartree;
  }
  line(" total ground state energy (Hartree) ", output.ground_energy);
  line(" energy of the state (Hartree) ", output.energy);
  line(" excitation energy (eV) ", excitation);
  line(" oscillator strength ", output.oscillator_strength);
}

void add_geometry(const zandor::RunData& run, const Eigen::Matrix3Xd& places, Fields& out) {
  out.words("\n ").words(zandor::geometry_header);
  out.words("\n Number  Symbol  Number      Mass             X               Y               Z\n");
  for (int a = 1; a <= run.natom; ++a) {
    const auto at = static_cast<std::size_t>(a - 1);
    out.integer(a, 7).words("  ").symbol(run.symbol[at].content()).integer(run.nat[at], 6);
    out.fixed(run.mass(a) / flib::electron_masses_per_amu, 16, 9);
    for (int k = 0; k < 3; ++k) out.fixed(places(k, a - 1), 16, 10);
    out.words("\n");
  }
}

}  // namespace

std::string sign_file_text(const zandor::RunData& run, const SignFileData& data) {
  const JobOutput& output = *data.output;
  Fields out;
  // The run looks for the keywords first: nothing before them may hold one by chance.
  add_header(run.natom, data, out);
  out.words("\n").words(source_mark).words(io::printable(data.source));
  out.words(" (").words(io::printable(output.program)).words(", state ").integer(output.root, 1);
  out.words(")\n");
  add_states(output, out);
  add_geometry(run, output.places, out);
  out.words("\n ").words(zandor::dipole_header).words("\n state ").integer(output.root, 1);
  for (int k = 0; k < 3; ++k) {
    const double value = data.turned ? -output.dipole(k) : output.dipole(k);
    if (data.turned_axes) {
      out.fixed(value, 24, std::min(output.dipole_decimals, 16));
    } else {
      out.words("  ").words(io::shown(value));
    }
  }
  out.words("\n\n ").words(zandor::forces_header).words("\n");
  for (int a = 1; a <= run.natom; ++a) {
    out.integer(a, 7);
    for (int k = 0; k < 3; ++k) out.fixed(output.forces(k, a - 1), 18, 10);
    out.words("\n");
  }
  return out.text;
}

std::string input_text(const zandor::RunData& run, const Eigen::Matrix3Xd& places) {
  Fields out;
  out.words("# written by zandor_collect\n\nreference geometry, Angstrom\n\n0 1\n");
  for (int a = 1; a <= run.natom; ++a) {
    out.symbol(run.symbol[static_cast<std::size_t>(a - 1)].content());
    for (int k = 0; k < 3; ++k) out.fixed(places(k, a - 1), 18, 10);
    out.words("\n");
  }
  return out.text;
}

}  // namespace collect
