#include "io/hidden_names.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstring>

namespace io {

namespace {

constexpr int interrupts[] = {SIGINT, SIGTERM, SIGHUP};

// What a signal handler may look at: plain memory, changed only while interrupts are held.
constexpr int most_files = 8;
char hidden_files[most_files][PATH_MAX];

void remove_and_end(int signal) {
  for (const auto& file : hidden_files) {
    if (file[0] != '\0') ::unlink(file);
  }
  std::signal(signal, SIG_DFL);
  ::raise(signal);  // delivered when the handler returns
}

// Once, and not for an interrupt that the process was told to ignore (nohup).
void watch_interrupts() {
  static bool watched = false;
  if (watched) return;
  watched = true;
  for (const int signal : interrupts) {
    struct sigaction action {};
    if (::sigaction(signal, nullptr, &action) != 0 || action.sa_handler != SIG_DFL) continue;
    action.sa_handler = remove_and_end;
    ::sigaction(signal, &action, nullptr);
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
  const InterruptsHeld held;
  watch_interrupts();
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
  const InterruptsHeld held;
  ::unlink(name.c_str());
  forget_hidden(name);
}

void forget_hidden(const std::string& name) {
  for (auto& file : hidden_files) {
    if (name == file) file[0] = '\0';
  }
}

InterruptsHeld::InterruptsHeld() {
  sigset_t set;
  ::sigemptyset(&set);
  for (const int signal : interrupts) ::sigaddset(&set, signal);
  ::sigprocmask(SIG_BLOCK, &set, &before_);
}

InterruptsHeld::~InterruptsHeld() { ::sigprocmask(SIG_SETMASK, &before_, nullptr); }

}  // namespace io
