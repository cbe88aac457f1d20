// Hidden names of files that are not complete yet, and the interrupts that must not leave them.
#pragma once

#include <csignal>
#include <string>

namespace io {

// How many hidden names are tried in one folder.
inline constexpr int most_hidden_names = 100;

// The hidden name with this number in a folder. No other process of the machine takes it.
std::string hidden_name(const std::string& folder, int number);

// Creates a file with a hidden name for writing and gives its descriptor and name; -1 and errno
// when that fails. An interrupt (SIGINT, SIGTERM, SIGHUP) removes it before it ends the process,
// unless the process ignores it.
int open_hidden(const std::string& folder, std::string& name);

// Removes the file; or forgets it, when it has another name now.
void remove_hidden(const std::string& name);
void forget_hidden(const std::string& name);

// Makes interrupts wait as long as it lives.
class InterruptsHeld {
 public:
  InterruptsHeld();
  ~InterruptsHeld();
  InterruptsHeld(const InterruptsHeld&) = delete;
  InterruptsHeld& operator=(const InterruptsHeld&) = delete;

 private:
  sigset_t before_;
};

}  // namespace io
