// The analysis as one page that opens from disk and needs no network.
#pragma once

#include <string>

#include "export/content.hpp"
#include "io/output_file.hpp"

namespace exporting {

// Writes the page of page.html with the molecule and both lists of modes in it.
void write_html(const Content& content, io::OutputFile& out);

// The numbers as 16-bit integers, low byte first, in base64: value = integer / 32767 * scale, where
// `scale` is the largest magnitude among them.
std::string packed_displacements(const double* values, std::size_t size, double& scale);

}  // namespace exporting
