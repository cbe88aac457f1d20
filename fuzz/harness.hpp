// What the fuzz targets share: files in memory, the scope in which an input runs, and findings.
#pragma once

#include <fuzzer/FuzzedDataProvider.h>

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "io/fatal.hpp"

namespace fuzz {

// Ends the process with a finding unless `holds`.
void require(bool holds, std::string_view finding);

// Runs `body` as main() would, but gives its fatal stop back and shows nothing. A finding: a stop
// without status 1 or 2 or without any message, a message that is empty or no single printable
// line, a unit left open.
std::optional<io::Stop> run(const std::function<void()>& body);

// A file in memory whose content changes from input to input.
class MemoryFile {
 public:
  MemoryFile();
  // Makes the file the process's standard input, from its beginning.
  void become_standard_input() const;
  void set(std::string_view content) const;
  // A name under which the file can be opened.
  const std::string& name() const { return name_; }

 private:
  int descriptor_;
  std::string name_;
};

// Goes to an empty folder that lies in memory and disappears with the process. File names given to
// the fuzzer must be absolute from then on.
void enter_memory_folder();
// Writes a file of the working folder.
void write_file(const std::string& name, std::string_view content);

// The text with line ends of two bytes.
std::string with_crlf(std::string_view text);

}  // namespace fuzz
