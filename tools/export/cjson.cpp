#include <nlohmann/json.hpp>

#include "export/bonds.hpp"
#include "export/formats.hpp"
#include "export/json.hpp"

namespace exporting {

void write_cjson(const Content& content, io::OutputFile& out) {
  const ModeList& list = content.projected;
  const std::size_t n3 = list.frequencies.size();
  const std::vector<std::size_t> bonds = bonded_atoms(content);
  std::vector<std::size_t> modes;
  std::vector<double> frequencies, displacements;
  for (const std::size_t k : vibrations(list)) {
    modes.push_back(modes.size() + 1);
    frequencies.push_back(list.frequencies[k - 1]);
    const double* const moves = list.displacements.column(1, k);
    displacements.insert(displacements.end(), moves, moves + n3);
  }
  JsonObject json(out);
  json.add("chemicalJson", 1);
  json.add("name", title(content));
  json.add("atoms", {{"elements", {{"number", content.atomic_numbers}}},
                     {"coords", {{"3d", in_angstrom(content.geometry)}}}});
  json.add("bonds",
           {{"connections", {{"index", bonds}}}, {"order", std::vector<int>(bonds.size() / 2, 1)}});
  JsonObject vibrating = json.object("vibrations");
  vibrating.add_numbers("frequencies", frequencies.data(), {modes.size()});
  vibrating.add("modes", modes);
  vibrating.add_numbers("eigenVectors", displacements.data(), {modes.size(), n3});
  vibrating.end();
  json.end();
  out.end_line();
}

}  // namespace exporting
