// The analysis as JSON in atomic units; docs/zandor-vibrations.schema.json describes the keys.
#pragma once

#include "export/results.hpp"
#include "io/output_file.hpp"

namespace exporting {

// Writes it number by number. An input that cannot be read again for its digest is a fatal stop.
void write_json(const Results& results, io::OutputFile& out);

}  // namespace exporting
