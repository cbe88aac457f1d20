// Free-form reading of items of several kinds, from a file or a line buffer. Every number is
// compared with the same item read as a word and converted by the standard library; line ends of
// two bytes must make no difference.
#include "io/free_form.hpp"

#include <cmath>
#include <cstdlib>
#include <limits>
#include <vector>

#include "harness.hpp"
#include "io/text.hpp"
#include "io/units.hpp"
#include "io/values.hpp"

namespace {

constexpr int unit = 20;

enum class Kind { integer, optional_integer, real, finite_real, logical, word, blank_or_word };
constexpr int kinds = 7;

struct Read {
  bool given = false;
  Kind kind = Kind::word;
  int integer = 0;
  double real = 0.0;
  bool logical = false;
  std::string word;
  bool operator==(const Read& other) const {
    const bool same_real = real == other.real || (std::isnan(real) && std::isnan(other.real));
    return given == other.given && integer == other.integer && same_real &&
           logical == other.logical && word == other.word;
  }
};

Read read_one(io::FreeForm& items, Kind kind) {
  Read read{true, kind, 0, 0.0, false, {}};
  io::Line word;
  switch (kind) {
    case Kind::integer:
      items.integer(read.integer, {"an item"});
      break;
    case Kind::optional_integer:
      read.given = items.optional_integer(read.integer, {"an item"});
      break;
    case Kind::real:
      items.real(read.real, {"an item", 1});
      break;
    case Kind::finite_real:
      items.finite_real(read.real, {"an item"});
      fuzz::require(std::isfinite(read.real), "a finite number that is not");
      break;
    case Kind::logical:
      read.given = items.logical(read.logical, {"an item"});
      break;
    case Kind::word:
      read.given = items.text(word, {"an item"});
      break;
    case Kind::blank_or_word:
      items.text_or_blank(word);
      break;
  }
  read.word = word.content();
  return read;
}

std::vector<Read> read_all(const std::string& text, bool buffered,
                           const std::vector<Kind>& wanted) {
  static const fuzz::MemoryFile file;
  file.set(text);
  std::vector<Read> reads;
  fuzz::run([&] {
    io::open_existing(unit, file.name());
    io::FreeForm items = buffered ? io::FreeForm(unit, text) : io::FreeForm(unit);
    for (const Kind kind : wanted) reads.push_back(read_one(items, kind));
    io::close(unit);
  });
  return reads;
}

// The number as the standard library reads it, with the spellings of the exponent that it does not
// know put right; NaN when it is none.
bool standard_real(const std::string& word, double& value) {
  std::string text;
  for (const char c : word) {
    const bool sign = c == '+' || c == '-';
    const char last = text.empty() ? 'e' : text.back();
    if (sign && last != 'e') text += 'e';
    text += c == 'D' || c == 'd' || c == 'Q' || c == 'q' || c == 'E' ? 'e' : c;
  }
  if (text.empty() || text.find_first_of("xX(") != std::string::npos) return false;
  char* end = nullptr;
  value = std::strtod(text.c_str(), &end);
  return end == text.c_str() + text.size();
}

void compare_real(const Read& read, const std::string& word) {
  double value = 0.0;
  const bool known = standard_real(word, value);
  fuzz::require(known, "a number that the standard library does not know");
  fuzz::require(read.real == value || (std::isnan(read.real) && std::isnan(value)),
                "another number than the standard library's");
  fuzz::require(std::signbit(read.real) == std::signbit(value) || std::isnan(value),
                "another sign than the standard library's");
}

void compare(const Read& read, const Read& as_word) {
  if (read.kind == Kind::blank_or_word) return;
  fuzz::require(read.given == as_word.given, "an item given or not as its kind is");
  if (!read.given || as_word.word.size() >= io::line_capacity) return;
  const std::string& word = as_word.word;
  if (read.kind == Kind::real || read.kind == Kind::finite_real) compare_real(read, word);
  if (read.kind == Kind::integer || read.kind == Kind::optional_integer) {
    char* end = nullptr;
    const long long value = std::strtoll(word.c_str(), &end, 10);
    fuzz::require(*end == '\0' && value == read.integer, "another integer");
  }
  if (read.kind == Kind::logical) {
    const char first = word[word[0] == '.' ? 1 : 0];
    fuzz::require(std::string("tTfF").find(first) != std::string::npos &&
                      read.logical == (first == 't' || first == 'T'),
                  "another truth");
  }
}

// A word made of the characters of numbers is one to both or to none.
void compare_as_single_value(const std::string& word) {
  if (word.empty() || word.find_first_not_of("0123456789+-.eEdDqQ") != std::string::npos) return;
  double ours = 0.0, theirs = 0.0;
  const bool known = standard_real(word, theirs);
  fuzz::require(io::parse_real(word, ours) == known, "a number to one but not the other");
  fuzz::require(!known || ours == theirs, "two values of a number");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzedDataProvider input(data, size);
  const bool buffered = input.ConsumeBool();
  const int count = input.ConsumeIntegralInRange(1, 12);
  std::vector<Kind> wanted(static_cast<std::size_t>(count));
  for (Kind& kind : wanted) kind = static_cast<Kind>(input.ConsumeIntegralInRange(0, kinds - 1));
  const std::string text = input.ConsumeRemainingBytesAsString();
  const auto reads = read_all(text, buffered, wanted);
  std::vector<Kind> words(wanted.size(), Kind::word);
  for (std::size_t i = 0; i < wanted.size(); ++i) {
    if (wanted[i] == Kind::blank_or_word) words[i] = wanted[i];
  }
  const auto as_words = read_all(text, buffered, words);
  fuzz::require(as_words.size() >= reads.size(), "an item that is no word");
  for (std::size_t i = 0; i < reads.size(); ++i) {
    compare(reads[i], as_words[i]);
    compare_as_single_value(as_words[i].word);
  }
  if (!buffered && text.find('\r') == std::string::npos) {
    fuzz::require(read_all(fuzz::with_crlf(text), false, wanted) == reads, "line ends that count");
  }
  return 0;
}
