// The analysis as JSON in atomic units; docs/zandor-vibrations.schema.json describes the keys.
#pragma once

#include <initializer_list>
#include <nlohmann/json_fwd.hpp>
#include <string>

#include "export/content.hpp"
#include "io/output_file.hpp"

namespace exporting {

using Json = nlohmann::ordered_json;

// Arrays within arrays, as long as `shape` says from the outermost to the innermost; `values` go
// through the innermost fastest. A number that is not finite is a fatal stop: JSON has no word for
// it.
Json numbers(const double* values, std::initializer_list<std::size_t> shape);

// The value on one line; bytes that are no UTF-8 become replacement characters.
std::string text_of(const Json& value);

void write_json(const Content& content, io::OutputFile& out);

}  // namespace exporting
