#include "displace/input_template.hpp"

#include <algorithm>
#include <filesystem>
#include <iterator>

#include "io/units.hpp"
#include "zandor/run_data.hpp"

namespace displace {

namespace {

constexpr std::size_t largest = 1 << 20;  // bytes; every job gets a copy

constexpr std::string_view known[] = {"name",         "reference", "geometry", "charge",
                                      "multiplicity", "symbols",   "natom"};

// The name in the braces that open a text; empty where it is none of those known.
std::string_view place_name(std::string_view text) {
  const std::size_t end = text.find("}}");
  if (end == text.npos) return {};
  const std::string_view name = text.substr(2, end - 2);
  return std::find(std::begin(known), std::end(known), name) == std::end(known) ? std::string_view{}
                                                                                : name;
}

void check_places(std::string_view line, Template& input, bool& has_geometry) {
  for (std::size_t at = line.find("{{"); at != line.npos; at = line.find("{{", at + 2)) {
    const std::string_view name = place_name(line.substr(at));
    if (name.empty()) {
      io::fatal_stop(io::place(zandor::input_unit),
                     "expected {{name}}, {{reference}}, {{geometry}}, {{charge}}, "
                     "{{multiplicity}}, {{symbols}} or {{natom}}, found " +
                         io::quoted(line.substr(at)));
    }
    has_geometry = has_geometry || name == "geometry";
    input.asks_multiplicity = input.asks_multiplicity || name == "multiplicity";
  }
}

}  // namespace

Template read_template(const std::string& name) {
  Template input;
  input.ending = std::filesystem::path(name).extension();
  bool has_geometry = false;
  io::open_existing(zandor::input_unit, name);
  std::string_view line;
  while (io::read_record(zandor::input_unit, line) == io::read_ok) {
    check_places(line, input, has_geometry);
    input.text.append(line).append("\n");
    if (input.text.size() > largest) {
      io::fatal_stop({name}, "expected a template of at most 1 MiB, found more");
    }
  }
  io::close(zandor::input_unit);
  if (!has_geometry) io::fatal_stop({name}, "expected {{geometry}} in the template, found none");
  return input;
}

std::string fill(const Template& input, const Values& values) {
  std::string filled;
  std::size_t done = 0;
  for (std::size_t at = input.text.find("{{"); at != std::string::npos;
       at = input.text.find("{{", done)) {
    filled.append(input.text, done, at - done);
    const std::string_view name = place_name(std::string_view(input.text).substr(at));
    filled += values.at(std::string(name));
    done = at + name.size() + 4;
  }
  return filled.append(input.text, done);
}

}  // namespace displace
