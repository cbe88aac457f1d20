#include <nlohmann/json.hpp>

#include "export/bonds.hpp"
#include "export/formats.hpp"
#include "export/json.hpp"
#include "flib/units_of_measure.hpp"

namespace exporting {

void write_cjson(const Content& content, io::OutputFile& out) {
  const ModeList& list = content.projected;
  const std::vector<std::size_t> modes = vibrations(list);
  const std::size_t n3 = list.frequencies.size();
  const std::vector<std::size_t> bonds = bonded_atoms(content);
  std::vector<double> geometry, frequencies;
  for (const double x : content.geometry) geometry.push_back(x * flib::angstrom_per_bohr);
  for (const std::size_t k : modes) frequencies.push_back(list.frequencies[k - 1]);
  JsonObject json(out);
  json.add("chemicalJson", 1);
  json.add("name", title(content));
  json.add("atoms", {{"elements", {{"number", content.atomic_numbers}}},
                     {"coords", {{"3d", numbers(geometry.data(), {n3})}}}});
  json.add("bonds",
           {{"connections", {{"index", bonds}}}, {"order", std::vector<int>(bonds.size() / 2, 1)}});
  JsonObject list_of_modes = json.object("vibrations");
  list_of_modes.add("frequencies", numbers(frequencies.data(), {modes.size()}));
  list_of_modes.add_rows("modes", modes.size(), [](std::size_t i) { return i + 1; });
  list_of_modes.add_rows("eigenVectors", modes.size(), [&](std::size_t i) {
    return numbers(list.displacements.column(1, modes[i]), {n3});
  });
  list_of_modes.end();
  json.end();
  out.end_line();
}

}  // namespace exporting
