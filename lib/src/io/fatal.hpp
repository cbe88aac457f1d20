// The fatal stop, and the messages and lines that a program shows while it runs.
#pragma once

#include <charconv>
#include <functional>
#include <source_location>
#include <string>
#include <string_view>
#include <type_traits>

namespace io {

// The name that heads every message. Each program of the project defines it.
extern const char* const program_name;

// A place in a text file. A line of 0 or less stands for the file as a whole; no file, for a
// message without a place.
struct Place {
  std::string_view file = {};
  long long line = 0;
};

// A fatal stop on its way to main() or to the scope that collects it (io/process.hpp). Routines
// neither catch nor mention it; nothing else is thrown.
struct Stop {
  int status = 2;       // exit status of the program
  std::string file;     // where the fault lies; empty where there is no file to name
  long long line = 0;   // 0 for the file as a whole
  std::string message;  // empty where everything has been printed already
};

// Writes `text` so that it stays on one line: control characters, bytes that are no UTF-8, and
// characters that cannot be seen or that turn the direction of writing become \xNN, byte by byte.
// So do the ASCII characters in `besides`.
std::string printable(std::string_view text, std::string_view besides = {});

// Quotes what was found: printable, cut to 40 characters, in single quotes.
std::string quoted(std::string_view text);

// A number as messages show it: the fewest digits that give it back, NaN, Infinity or -Infinity.
std::string shown(double value);

// A finite number with so many digits: those that count or, in another format, those behind the
// point.
std::string rounded(double value, std::chars_format format = std::chars_format::general,
                    int digits = 3);

// The parts of a text in a row: texts as they stand, numbers as messages show them.
template <class... Parts>
std::string joined(const Parts&... parts) {
  std::string text;
  const auto add = [&text](const auto& part) {
    using Part = std::decay_t<decltype(part)>;
    if constexpr (std::is_floating_point_v<Part>) {
      text += shown(part);
    } else if constexpr (std::is_integral_v<Part>) {
      text += std::to_string(part);
    } else {
      text += part;
    }
  };
  (add(parts), ...);
  return text;
}

// Stops with "FILE:LINE: MESSAGE" (what is not given is left out) and exit status 2.
[[noreturn]] void fatal_stop(std::string_view message);
template <class... Parts>
[[noreturn]] void fatal_stop(const Place& place, const Parts&... parts) {
  throw Stop{2, std::string(place.file), place.line, joined(parts...)};
}

// Stops with this exit status and without a message: everything has been printed.
[[noreturn]] void silent_stop(int status);

// Where messages and lines go. What is not set keeps the standard way: standard error, each line
// headed by the program's name, and standard output.
struct Sink {
  std::function<void(const Place& place, std::string_view message)> report = nullptr;
  std::function<void(const Place& place, std::string_view message)> warn = nullptr;
  std::function<void(std::string_view line)> print_line = nullptr;
};

// Sends messages and lines to another sink as long as it lives.
class SinkScope {
 public:
  explicit SinkScope(Sink sink);
  ~SinkScope();
  SinkScope(const SinkScope&) = delete;
  SinkScope& operator=(const SinkScope&) = delete;

 private:
  Sink before_;
};

// Shows "PROGRAM: FILE:LINE: MESSAGE" and goes on: to the next of several faults, or to a stop that
// has no message of its own.
void report(const Place& place, std::string_view message);
void report(const Stop& stop);

// Shows "PROGRAM: warning: FILE:LINE: MESSAGE" and goes on. Of the warnings from one place in the
// code the first 20 are shown; the second function says at the end how many more there were.
void warn(const Place& place, std::string_view message,
          const std::source_location& kind = std::source_location::current());
void show_rest_of_warnings();

// Prints one line on standard output at once. A failure does not end the run, which may have better
// things to write: it is kept, and the program ends with it (see output_error).
void print_line(std::string_view line);

// The error number of the first line that could not be printed, or 0.
int output_error();

}  // namespace io
