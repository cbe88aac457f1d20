#include "io/hidden_names.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <iterator>

namespace io {

namespace {

// Signals that cannot be caught, or that do not end a process.
constexpr int others[] = {SIGKILL, SIGSTOP, SIGCHLD, SIGCONT, SIGTSTP,
                          SIGTTIN, SIGTTOU, SIGURG,  SIGWINCH};

// What a signal handler may look at: plain memory, changed only while signals are held.
constexpr int most_files = 8;
char hidden_files[most_files][PATH_MAX];

void remove_and_end(int signal) {
  for (const auto& file : hidden_files) {
    if (file[0] != '\0') ::unlink(file);
  }
  std::signal(signal, SIG_DFL);
  ::raise(signal);  // delivered when the handler returns
}

// Once, and not for a signal that the process was told to ignore (nohup) or that somebody else
// looks at.
void watch_signals() {
  static bool watched = false;
  if (watched) return;
  watched = true;
  struct sigaction action {};
  struct sigaction before {};
  action.sa_handler = remove_and_end;
  for (int signal = 1; signal <= SIGRTMAX; ++signal) {
    if (std::find(std::begin(others), std::end(others), signal) != std::end(others)) continue;
    if (::sigaction(signal, &action, &before) != 0) continue;  // the C library's own
    if (before.sa_handler != SIG_DFL) ::sigaction(signal, &before, nullptr);
  }
}

void remember(const std::string& name) {
  for (auto& file : hidden_files) {
    if (file[0] != '\0' || name.size() >= sizeof file) continue;
    std::memcpy(file, name.c_str(), name.size() + 1);
    return;
  }
}

}  // namespace

std::string hidden_name(const std::string& folder, int number) {
  return folder + "/.zandor-" + std::to_string(::getpid()) + "-" + std::to_string(number);
}

int open_hidden(const std::string& folder, std::string& name) {
  const SignalsHeld held;
  watch_signals();
  for (int i = 0; i < most_hidden_names; ++i) {
    const std::string hidden = hidden_name(folder, i);
    const int descriptor = ::open(hidden.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (descriptor < 0 && errno == EEXIST) continue;
    if (descriptor >= 0) {
      name = hidden;
      remember(hidden);
    }
    return descriptor;
  }
  errno = EEXIST;
  return -1;
}

void remove_hidden(const std::string& name) {
  const SignalsHeld held;
  ::unlink(name.c_str());
  forget_hidden(name);
}

void forget_hidden(const std::string& name) {
  for (auto& file : hidden_files) {
    if (name == file) file[0] = '\0';
  }
}

SignalsHeld::SignalsHeld() {
  sigset_t set;
  ::sigfillset(&set);
  ::sigprocmask(SIG_BLOCK, &set, &before_);
}

SignalsHeld::~SignalsHeld() { ::sigprocmask(SIG_SETMASK, &before_, nullptr); }

}  // namespace io
