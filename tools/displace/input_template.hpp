// A text of a program's input with places to fill: {{name}} and others.
#pragma once

#include <map>
#include <string>

namespace displace {

struct Template {
  std::string ending;  // of the file's name, with its point; empty where it has none
  std::string text;
  bool asks_multiplicity = false;
};

// Reads a template. One without {{geometry}}, and two opening braces that begin no known place to
// fill, are fatal stops, the latter with the line.
Template read_template(const std::string& name);

// What the places hold: "name", "reference", "geometry", "charge", "multiplicity", "symbols" and
// "natom".
using Values = std::map<std::string, std::string>;

std::string fill(const Template& input, const Values& values);

}  // namespace displace
