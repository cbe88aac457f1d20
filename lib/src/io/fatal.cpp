#include "io/fatal.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <new>

namespace io {

namespace {

constexpr std::size_t longest_quote = 40;

// Writes all of `text`; the result is 0 or the error number.
int write_all(int descriptor, std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = ::write(descriptor, text.data(), text.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return errno;
    text.remove_prefix(static_cast<std::size_t>(written));
  }
  return 0;
}

std::string located(const Place& place) {
  std::string text = printable(place.file);
  if (place.line > 0) text += ":" + std::to_string(place.line);
  return text + ": ";
}

void write_message(const std::string& message) {
  // Nothing is left to do when standard error itself cannot be written.
  write_all(STDERR_FILENO, std::string(program_name) + ": " + message + "\n");
}

}  // namespace

std::string printable(std::string_view text) {
  constexpr char digits[] = "0123456789abcdef";
  std::string out;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte >= 0x20 && byte < 0x7f) {
      out += c;
    } else {
      out += "\\x";
      out += digits[byte / 16];
      out += digits[byte % 16];
    }
  }
  return out;
}

std::string quoted(std::string_view text) {
  const bool cut = text.size() > longest_quote;
  return "'" + printable(text.substr(0, longest_quote)) + (cut ? "'..." : "'");
}

void fatal_stop(std::string_view message) {
  write_message(std::string(message));
  std::exit(2);
}

void fatal_stop(const Place& place, std::string_view message) {
  fatal_stop(located(place) + std::string(message));
}

void report(const Place& place, std::string_view message) {
  write_message(located(place) + std::string(message));
}

void warn(const Place& place, std::string_view message) {
  write_message("warning: " + located(place) + std::string(message));
}

void print_line(std::string_view line) {
  const int error = write_all(STDOUT_FILENO, std::string(line) + "\n");
  if (error != 0) fatal_stop({"standard output"}, std::string("cannot write: ") + strerror(error));
}

void prepare_process() {
  // A closed standard stream is replaced by one that cannot be written: to write to it stays a
  // failure, and messages cannot end up in the next file that is opened.
  while (true) {
    const int descriptor = ::open("/dev/null", O_RDONLY);
    if (descriptor > STDERR_FILENO) ::close(descriptor);
    if (descriptor < 0 || descriptor > STDERR_FILENO) break;
  }
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
  std::set_new_handler([] {
    // No message is composed here: there is no memory to compose it in.
    write_all(STDERR_FILENO, program_name);
    write_all(STDERR_FILENO, ": expected memory for the input read so far, found none left\n");
    std::_Exit(2);
  });
}

}  // namespace io
