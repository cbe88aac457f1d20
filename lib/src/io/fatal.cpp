#include "io/fatal.hpp"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <map>
#include <utility>

#include "io/write_all.hpp"

namespace io {

namespace {

constexpr std::size_t longest_quote = 40;

// Warnings of one kind that are shown.
constexpr int most_warnings = 20;

struct Messages {
  Sink sink;
  int output_error = 0;
  // How often the program warned from each place in its code.
  std::map<std::pair<std::string_view, std::uint_least32_t>, int> warnings;
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
  write_all(STDERR_FILENO, std::string(program_name) + ": " + printable(message) + "\n");
}

bool is_continuation(char c) { return (static_cast<unsigned char>(c) & 0xc0) == 0x80; }

// Characters beyond ASCII that are not seen, or turn the direction of what stands around them.
bool is_hidden(std::uint32_t c) {
  constexpr std::uint32_t ranges[][2] = {{0x80, 0x9f},     {0xad, 0xad},     {0x61c, 0x61c},
                                         {0x180e, 0x180e}, {0x200b, 0x200f}, {0x2028, 0x202e},
                                         {0x2060, 0x206f}, {0xd800, 0xdfff}, {0xfe00, 0xfe0f},
                                         {0xfeff, 0xfeff}, {0xfff0, 0xfffb}, {0xe0000, 0x1fffff}};
  return std::any_of(std::begin(ranges), std::end(ranges),
                     [&](const auto& range) { return c >= range[0] && c <= range[1]; });
}

// The bytes of the printable UTF-8 character with which the text begins; 0 where it begins with
// none.
std::size_t printable_size(std::string_view text) {
  const auto first = static_cast<unsigned char>(text.front());
  if (first < 0x80) return first >= 0x20 && first < 0x7f ? 1 : 0;
  const std::size_t size = first < 0xe0 ? 2 : first < 0xf0 ? 3 : 4;
  if (first < 0xc2 || first > 0xf4 || text.size() < size) return 0;
  std::uint32_t c = first & (0x7fU >> size);
  for (const char next : text.substr(1, size - 1)) {
    if (!is_continuation(next)) return 0;
    c = c << 6 | (static_cast<unsigned char>(next) & 0x3f);
  }
  constexpr std::uint32_t shortest[] = {0, 0, 0x80, 0x800, 0x10000};
  return c >= shortest[size] && !is_hidden(c) ? size : 0;
}

}  // namespace

std::string printable(std::string_view text, std::string_view besides) {
  constexpr char digits[] = "0123456789abcdef";
  std::string out;
  while (!text.empty()) {
    const std::size_t size = printable_size(text);
    const std::string_view piece = text.substr(0, std::max<std::size_t>(size, 1));
    text.remove_prefix(piece.size());
    if (size > 0 && besides.find(piece) == std::string_view::npos) {
      out += piece;
      continue;
    }
    const auto byte = static_cast<unsigned char>(piece.front());
    out.append("\\x").append({digits[byte / 16], digits[byte % 16]});
  }
  return out;
}

std::string quoted(std::string_view text) {
  std::size_t kept = std::min(text.size(), longest_quote);
  // No letter is cut in two.
  for (int i = 0; i < 3 && kept < text.size() && is_continuation(text[kept]); ++i) --kept;
  return "'" + printable(text.substr(0, kept)) + (kept < text.size() ? "'..." : "'");
}

std::string shown(double value) {
  if (std::isnan(value)) return "NaN";
  if (std::isinf(value)) return value < 0.0 ? "-Infinity" : "Infinity";
  char text[32];
  return {text, std::to_chars(text, text + sizeof text, value).ptr};
}

std::string rounded(double value, std::chars_format format, int digits) {
  char text[400];  // a double has up to 309 digits before the point
  return {text, std::to_chars(text, text + sizeof text, value, format, digits).ptr};
}

void fatal_stop(std::string_view message) { fatal_stop({}, message); }

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

void warn(const Place& place, std::string_view message, const std::source_location& kind) {
  Messages& state = messages();
  if (state.sink.warn) return state.sink.warn(place, message);
  if (++state.warnings[{kind.file_name(), kind.line()}] > most_warnings) return;
  write_message("warning: " + located(place, message));
}

void show_rest_of_warnings() {
  int more = 0;
  for (const auto& [kind, count] : messages().warnings) more += std::max(count - most_warnings, 0);
  if (more > 0) write_message("warning: ... and " + std::to_string(more) + " more");
}

void print_line(std::string_view line) {
  Messages& state = messages();
  if (state.sink.print_line) return state.sink.print_line(line);
  const int error = write_all(STDOUT_FILENO, std::string(line) + "\n");
  if (state.output_error == 0) state.output_error = error;
}

int output_error() { return messages().output_error; }

}  // namespace io
