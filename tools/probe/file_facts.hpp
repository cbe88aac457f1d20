// What the library's probes say of one quantum-chemistry file.
#pragma once

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

// Asks every probe that suits the file. One that cannot be read or breaks off is a fatal stop.
FileFacts probe_file(const std::string& name);

}  // namespace probe
