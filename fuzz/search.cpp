// Searches and what else moves a file, in any order on one file, held against the list of its
// records: a search passes over no line that holds its keyword, and ends on one that does.
#include <algorithm>
#include <vector>

#include "flib/search_word.hpp"
#include "flib/string.hpp"
#include "harness.hpp"
#include "io/text.hpp"
#include "io/units.hpp"

namespace {

constexpr int unit = 20;

// The records of a text, as a buffer of this capacity takes them.
std::vector<std::string> records_of(const std::string& text, std::size_t capacity) {
  std::vector<std::string> records;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = std::min(text.find('\n', at), text.size());
    std::string record = text.substr(at, end - at);
    if (end < text.size() && record.ends_with('\r')) record.pop_back();
    record.resize(capacity, ' ');
    records.push_back(record);
    at = end + 1;
  }
  return records;
}

std::string without_blanks(std::string text) {
  std::erase(text, ' ');
  return text;
}

enum Action { columns, free_word, any_case, del_space, read_line, step_back, rewind_file, actions };

// Whether a line is what the search looks for.
bool holds(Action action, const std::string& line, const std::string& word) {
  switch (action) {
    case columns:
      return flib::holds_in_columns(line, 1, static_cast<int>(line.size()), word);
    case free_word:
      return line.find(word) != line.npos;
    case any_case:
      return flib::strlowcase(line).find(flib::strlowcase(word)) != line.npos;
    case del_space:
      return without_blanks(line).find(without_blanks(word)) != line.npos;
    default:
      return true;  // the next line, whatever it holds
  }
}

bool search(Action action, const std::string& word, std::string& line) {
  switch (action) {
    case columns:
      return flib::search_word(unit, 1, static_cast<int>(line.size()), word, line);
    case free_word:
      return flib::search_word_free(unit, word, line);
    case any_case:
      return flib::search_word_free_ignorecase_tline(unit, word, line, 0);
    case del_space:
      return flib::search_word_del_space(unit, word, line);
    default:
      return io::read_line(unit, line) == io::read_ok;
  }
}

// A search from record `at` (0: the first) and what must be true of it.
void search_and_compare(Action action, const std::string& word,
                        const std::vector<std::string>& records, std::string& line) {
  const auto at = static_cast<std::ptrdiff_t>(io::line_number(unit));
  const std::string before = line;
  const auto wanted = std::find_if(records.begin() + at, records.end(),
                                   [&](const auto& record) { return holds(action, record, word); });
  const bool found = search(action, word, line);
  if (wanted != records.end()) {
    fuzz::require(found && line == *wanted, "not the first line that holds the keyword");
    fuzz::require(io::line_number(unit) == wanted - records.begin() + 1, "another place");
    return;
  }
  // At the end some searches look once more at what their buffer holds.
  fuzz::require(!found || (holds(action, line, word) && line == before),
                "a line that is not there");
  fuzz::require(io::line_number(unit) == std::ssize(records), "not at the end");
  if (at < std::ssize(records)) fuzz::require(line == records.back(), "not the last line");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const fuzz::MemoryFile file;
  FuzzedDataProvider input(data, size);
  const auto capacity = input.PickValueInArray<std::size_t>({200, 5, 20, 80});
  const std::string whole(reinterpret_cast<const char*>(data), size);
  std::vector<std::pair<Action, std::string>> calls;
  for (int k = input.ConsumeIntegralInRange(1, 8); k > 0; --k) {
    const auto action = static_cast<Action>(input.ConsumeIntegralInRange(0, actions - 1));
    const auto at = input.ConsumeIntegralInRange<std::size_t>(0, whole.size());
    std::string word = whole.substr(at, input.ConsumeIntegralInRange<std::size_t>(1, 12));
    std::erase_if(word, [](char c) { return c == '\n' || c == '\r'; });
    calls.emplace_back(action, word);
  }
  const std::string text = input.ConsumeRemainingBytesAsString();
  file.set(text);
  const std::vector<std::string> records = records_of(text, capacity);
  std::string line(capacity, '#');
  const auto stop = fuzz::run([&] {
    io::open_existing(unit, file.name());
    for (const auto& [action, word] : calls) {
      if (action == step_back) {
        io::step_back(unit);
      } else if (action == rewind_file) {
        io::rewind(unit);
      } else {
        search_and_compare(action, word, records, line);
      }
    }
    io::close(unit);
  });
  fuzz::require(!stop, "a stop");
  return 0;
}
