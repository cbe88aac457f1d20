// What the library's probes say of one quantum-chemistry file.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace probe {

struct FileFacts {
  std::string type, version;  // empty where there is none
  int info = -1;              // class code
  bool oniom = false;
  std::string warning;  // the line that recognition printed; empty for a recognised file
  // Name and value of every count that was found, in the order of the output.
  std::vector<std::pair<std::string, int>> counts;
};

// Asks every probe that suits the file. Runs in a child process, because a file that cannot be read
// or breaks off ends it: the message is then on standard error and nothing comes back.
std::optional<FileFacts> probe_file(const std::string& name);

}  // namespace probe
