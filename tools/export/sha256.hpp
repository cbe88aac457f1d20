// The SHA-256 digest of a file (FIPS 180-4), by which results name the inputs they come from.
#pragma once

#include <string>
#include <string_view>

namespace exporting {

// The digest of the text, 64 hexadecimal digits.
std::string sha256_of_text(std::string_view text);

// The digest of a file's bytes. One that is no regular file, or cannot be read to its
// end, is a fatal stop.
std::string sha256_of_file(const std::string& name);

}  // namespace exporting
