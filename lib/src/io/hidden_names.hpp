// Hidden names of files that are not complete yet, and the signals that must not leave them.
#pragma once

#include <csignal>
#include <string>

namespace io {

// How many hidden names are tried in one folder.
inline constexpr int most_hidden_names = 100;

// The hidden name with this number in a folder. No other process of the machine takes it.
std::string hidden_name(const std::string& folder, int number);

// Creates a file with a hidden name for writing and gives its descriptor and name; -1 and errno
// when that fails. A signal that ends the process, but SIGKILL, removes it first.
int open_hidden(const std::string& folder, std::string& name);

// Removes the file; or forgets it, when it has another name now.
void remove_hidden(const std::string& name);
void forget_hidden(const std::string& name);

// Makes signals wait as long as it lives.
class SignalsHeld {
 public:
  SignalsHeld();
  ~SignalsHeld();
  SignalsHeld(const SignalsHeld&) = delete;
  SignalsHeld& operator=(const SignalsHeld&) = delete;

 private:
  sigset_t before_;
};

}  // namespace io
