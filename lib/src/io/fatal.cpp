#include "io/fatal.hpp"

#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cmath>
#include <utility>

#include "io/write_all.hpp"

namespace io {

namespace {

constexpr std::size_t longest_quote = 40;

struct Messages {
  Sink sink;
  int output_error = 0;
};

Messages& messages() {
  static Messages state;
  return state;
}

std::string located(const Place& place, std::string_view message) {
  std::string text = printable(place.file);
  if (place.line > 0) text += ":" + std::to_string(place.line);
  if (!text.empty()) text += ": ";
  return text.append(message);
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

std::string shown(double value) {
  if (std::isnan(value)) return "NaN";
  if (std::isinf(value)) return value < 0.0 ? "-Infinity" : "Infinity";
  char text[32];
  return {text, std::to_chars(text, text + sizeof text, value).ptr};
}

void fatal_stop(std::string_view message) { fatal_stop({}, message); }

void fatal_stop(const Place& place, std::string_view message) {
  throw Stop{2, std::string(place.file), place.line, std::string(message)};
}

void silent_stop(int status) { throw Stop{status, {}, 0, {}}; }

SinkScope::SinkScope(Sink sink) : before_(std::exchange(messages().sink, std::move(sink))) {}

SinkScope::~SinkScope() { messages().sink = std::move(before_); }

void report(const Place& place, std::string_view message) {
  if (messages().sink.report) return messages().sink.report(place, message);
  write_message(located(place, message));
}

void report(const Stop& stop) {
  if (!stop.message.empty()) report({stop.file, stop.line}, stop.message);
}

void warn(const Place& place, std::string_view message) {
  if (messages().sink.warn) return messages().sink.warn(place, message);
  write_message("warning: " + located(place, message));
}

void print_line(std::string_view line) {
  Messages& state = messages();
  if (state.sink.print_line) return state.sink.print_line(line);
  const int error = write_all(STDOUT_FILENO, std::string(line) + "\n");
  if (state.output_error == 0) state.output_error = error;
}

int output_error() { return messages().output_error; }

}  // namespace io
