// JSON of numbers, and objects too large to be held.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "io/output_file.hpp"

namespace exporting {

using Json = nlohmann::ordered_json;

// The value on one line; bytes that are no UTF-8 become replacement characters.
std::string text_of(const Json& value);

// An object written member by member, a key to a line; an array stays on the line of its key. A
// large array is never held as one tree of values, which would take many times its memory.
class JsonObject {
 public:
  explicit JsonObject(io::OutputFile& out, std::string indent = "")
      : out_(out), indent_(std::move(indent)) {}

  void add(const std::string& key, const Json& value);
  // Arrays within arrays, as long as `shape` says from the outermost to the innermost; `values` go
  // through the innermost fastest. A number that is not finite is a fatal stop: JSON has no word
  // for it.
  void add_numbers(const std::string& key, const double* values,
                   const std::vector<std::size_t>& shape);
  // A member that is an object: it ends before the next member of this one.
  JsonObject object(const std::string& key) { return JsonObject(begin(key), indent_ + " "); }
  void end() { out_.text("\n" + indent_ + "}"); }

 private:
  io::OutputFile& begin(const std::string& key);

  io::OutputFile& out_;
  std::string indent_;
  bool empty_ = true;
};

}  // namespace exporting
