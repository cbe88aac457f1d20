#include "analysis/checkpoint.hpp"

#include "io/free_form.hpp"
#include "io/units.hpp"

namespace analysis {

void read_checkpoint(int fid, CheckpointArrays& arrays,
                     const std::function<void(const std::string& name, int size)>& check_size) {
  constexpr std::size_t name_width = 40;
  std::string_view record;
  while (io::read_record(fid, record) == io::read_ok) {
    const auto array = arrays.find(io::trimmed(record.substr(0, name_width)));
    const std::size_t mark = record.find("N=");
    if (array == arrays.end() || mark == record.npos) continue;
    auto& [name, values] = *array;
    const std::string count = "the number of values of '" + name + "'";
    int size = 0;
    io::FreeForm(fid, record.substr(mark + 2)).integer(size, {count});
    check_size(name, size);
    values.clear();
    const std::string value = "'" + name + "', value";
    io::FreeForm form(fid);
    for (int i = 1; i <= size; ++i) form.finite_real(values.emplace_back(), {value, i});
  }
}

}  // namespace analysis
