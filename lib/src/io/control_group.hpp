// The control group of a control file: "&control key = value, ... /".
#pragma once

#include <span>
#include <string_view>
#include <variant>

#include "io/text.hpp"

namespace io {

// A key of the group (in small letters) and the variable that takes its value. The type of the
// variable is the type that the value must have; what is not assigned keeps its value.
struct ControlKey {
  std::string_view name;
  std::variant<bool*, int*, double*, Line*> target;
};

// Reads the group "control" from a unit that stands at the start of its file. Text before the
// group is passed over, what follows it is not read. No group, a group that is not closed, an
// unknown key, a missing equals sign, a value of the wrong form or a second one are fatal stops
// that name file and line.
void read_control_group(int fid, std::span<const ControlKey> keys);

}  // namespace io
