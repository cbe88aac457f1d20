#include <nlohmann/json.hpp>
#include <numeric>

#include "export/bonds.hpp"
#include "export/formats.hpp"
#include "export/json.hpp"

namespace exporting {

void write_cjson(const Content& content, io::OutputFile& out) {
  const ModeList list = vibrations(content.projected);
  const std::size_t count = list.frequencies.size();
  const std::vector<std::size_t> bonds = bonded_atoms(content);
  std::vector<int> numbers(count);
  std::iota(numbers.begin(), numbers.end(), 1);
  JsonObject json(out);
  json.add("chemicalJson", 1);
  json.add("name", title(content));
  json.add("atoms", {{"elements", {{"number", content.atomic_numbers}}},
                     {"coords", {{"3d", in_angstrom(content.geometry)}}}});
  json.add("bonds",
           {{"connections", {{"index", bonds}}}, {"order", std::vector<int>(bonds.size() / 2, 1)}});
  JsonObject vibrating = json.object("vibrations");
  vibrating.add_numbers("frequencies", list.frequencies.data(), {count});
  vibrating.add("modes", numbers);
  vibrating.add_numbers("eigenVectors", list.displacements.data(),
                        {count, content.geometry.size()});
  vibrating.end();
  json.end();
  out.end_line();
}

}  // namespace exporting
