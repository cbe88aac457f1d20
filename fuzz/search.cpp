// The searches, the step back and the rest that moves a file, in any order on one file, compared
// with the slowest and most obvious version of each: all records in a list.
#include <algorithm>
#include <vector>

#include "flib/search_word.hpp"
#include "harness.hpp"
#include "io/text.hpp"
#include "io/units.hpp"

namespace {

constexpr int unit = 20;

struct OutsideTheLine {};  // what a slice outside the buffer comes to

// A file and the line buffer of its reader.
struct PlainFile {
  std::vector<std::string> records;
  std::size_t next = 0;
  bool hit_end = false;
  std::string line;

  PlainFile(const std::string& text, std::size_t capacity) : line(capacity, '#') {
    for (std::size_t at = 0; at < text.size();) {
      const std::size_t end = text.find('\n', at);
      std::string record = text.substr(at, end == std::string::npos ? end : end - at);
      if (end != std::string::npos && record.ends_with('\r')) record.pop_back();
      records.push_back(record);
      at = end == std::string::npos ? text.size() : end + 1;
    }
  }
  bool read() {
    hit_end = next == records.size();
    if (hit_end) return false;
    std::string record = records[next++];
    record.resize(line.size(), ' ');
    line = record;
    return true;
  }
  bool step_back() {
    if (hit_end) {
      hit_end = false;
      return true;
    }
    if (next == 0) return false;
    --next;
    return true;
  }
  void go_to(std::size_t record) {
    next = record;
    hit_end = false;
  }
};

std::string without_trailing_blanks(std::string text) {
  while (text.ends_with(' ')) text.pop_back();
  return text;
}

std::string without_blanks(std::string text) {
  std::erase(text, ' ');
  return text;
}

std::string in_small_letters(std::string text) {
  for (char& c : text) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return text;
}

bool equals(const std::string& line, int i, int j, const std::string& word) {
  std::string slice;
  if (i <= j) {
    if (i < 1 || j > static_cast<int>(line.size())) throw OutsideTheLine();
    slice = line.substr(static_cast<std::size_t>(i - 1), static_cast<std::size_t>(j - i + 1));
  }
  return without_trailing_blanks(slice) == without_trailing_blanks(word);
}

bool contains(const std::string& line, const std::string& word) {
  return line.find(word) != std::string::npos;
}

bool is_separator(char c) { return c == ' ' || c == '\t' || c == ',' || c == '/'; }

// The first item of a line; empty when there is none, when it is null or malformed.
std::string first_item(const std::string& line) {
  std::size_t at = line.find_first_not_of(" \t");
  if (at == std::string::npos) return {};
  const std::size_t behind_digits = line.find_first_not_of("0123456789", at);
  if (behind_digits != std::string::npos && behind_digits > at && line[behind_digits] == '*') {
    const std::string digits = line.substr(at, behind_digits - at);
    const std::size_t nonzero = digits.find_first_not_of('0');
    if (nonzero == std::string::npos) return {};
    const std::string count = digits.substr(nonzero);
    if (count.size() > 19 || (count.size() == 19 && count > "9223372036854775807")) return {};
    at = behind_digits + 1;
    if (at == line.size()) return {};
  }
  std::string item;
  const char quote = line[at];
  if (quote != '\'' && quote != '"') {
    while (at < line.size() && !is_separator(line[at])) item += line[at++];
    return item;
  }
  for (++at; at < line.size(); ++at) {
    if (line[at] != quote) {
      item += line[at];
    } else if (at + 1 < line.size() && line[at + 1] == quote) {
      item += line[at++];
    } else {
      return at + 1 == line.size() || is_separator(line[at + 1]) ? item : "";
    }
  }
  return {};
}

bool begins_with_number(const std::string& line) {
  std::string item = without_trailing_blanks(first_item(line));
  item.erase(0, std::min(item.find_first_not_of(' '), item.size()));
  return !item.empty() && item.find_first_not_of("0123456789") == std::string::npos;
}

enum Action {
  columns,
  columns_tline,
  back,
  free_word,
  free_tline,
  any_case,
  del_space,
  first_number,
  read_line,
  step_back,
  rewind_file,
  go_to_end,
  actions
};

struct Call {
  Action action;
  int i, j, tline;
  bool limit;
  std::string word;
};

bool plain_search(PlainFile& file, const Call& call, const auto& matches, bool first_anyway) {
  if (call.limit) {
    for (int count = 0; count < call.tline; ++count) {
      if (!file.read()) return false;
      if (matches()) return true;
    }
    return false;
  }
  bool read = file.read();
  if (!read && first_anyway) return matches();
  for (; read; read = file.read()) {
    if (matches()) return true;
  }
  return false;
}

// From the line read last towards the first, where the search ends.
bool plain_search_back(PlainFile& file, const Call& call) {
  file.step_back();
  if (!file.read()) return false;
  while (!equals(file.line, call.i, call.j, call.word)) {
    if (file.next == 1) return false;
    file.go_to(file.next - 2);
    file.read();
  }
  return true;
}

bool plain_search_any_case(PlainFile& file, const Call& call) {
  const std::string word = in_small_letters(call.word);
  const auto matches = [&] { return contains(in_small_letters(file.line), word); };
  int examined = 1;
  for (bool read = file.read();; read = file.read(), ++examined) {
    if (matches()) return true;
    if (!read || (call.tline > 0 && examined > call.tline)) return false;
  }
}

bool act_plainly(PlainFile& file, const Call& call) {
  const auto in_columns = [&] { return equals(file.line, call.i, call.j, call.word); };
  const auto anywhere = [&] { return contains(file.line, call.word); };
  Call unlimited = call;
  unlimited.limit = false;
  switch (call.action) {
    case columns:
      return plain_search(file, unlimited, in_columns, false);
    case columns_tline:
      return plain_search(file, call, in_columns, true);
    case back:
      return plain_search_back(file, call);
    case free_word:
      return plain_search(file, unlimited, anywhere, true);
    case free_tline:
      return plain_search(file, call, anywhere, true);
    case any_case:
      return plain_search_any_case(file, call);
    case del_space: {
      const std::string word = without_blanks(call.word);
      const auto matches = [&] { return contains(without_blanks(file.line), word); };
      return plain_search(file, unlimited, matches, false);
    }
    case first_number:
      return plain_search(
          file, unlimited, [&] { return begins_with_number(file.line); }, true);
    case read_line:
      return file.read();
    case step_back:
      return file.step_back();
    case rewind_file:
      file.go_to(0);
      return true;
    default:
      file.go_to(file.records.size());
      return true;
  }
}

bool act(const Call& call, std::span<char> line) {
  switch (call.action) {
    case columns:
      return flib::search_word(unit, call.i, call.j, call.word, line);
    case columns_tline:
      return flib::search_word_tline(unit, call.i, call.j, call.word, call.tline, call.limit, line);
    case back:
      return flib::search_word_back(unit, call.i, call.j, call.word, line);
    case free_word:
      return flib::search_word_free(unit, call.word, line);
    case free_tline:
      return flib::search_word_free_tline(unit, call.word, call.tline, call.limit, line);
    case any_case:
      return flib::search_word_free_ignorecase_tline(unit, call.word, line, call.tline);
    case del_space:
      return flib::search_word_del_space(unit, call.word, line);
    case first_number:
      return flib::search_word_first_number(unit, line);
    case read_line:
      return io::read_line(unit, line) == io::read_ok;
    case step_back:
      return io::step_back(unit);
    case rewind_file:
      io::rewind(unit);
      return true;
    default:
      io::go_to_end(unit);
      return true;
  }
}

// A keyword: a piece of the text, or a piece and a change. Keywords lie within a line.
std::string take_word(FuzzedDataProvider& input, const std::string& text) {
  const auto at = input.ConsumeIntegralInRange<std::size_t>(0, text.size());
  std::string word = text.substr(at, input.ConsumeIntegralInRange<std::size_t>(0, 12));
  const int change = input.ConsumeIntegralInRange(0, 7);
  if (change == 1) word += ' ';
  if (change == 2) word = in_small_letters(word);
  if (change == 3) word = without_blanks(word);
  if (change == 4) word += input.ConsumeIntegral<char>();
  if (change == 5) word.insert(0, " ");
  std::erase_if(word, [](char c) { return c == '\n' || c == '\r'; });
  return word;
}

Call take_call(FuzzedDataProvider& input, const std::string& text, int capacity) {
  Call call;
  call.action = static_cast<Action>(input.ConsumeIntegralInRange(0, actions - 1));
  call.i = input.ConsumeIntegralInRange(0, capacity + 1);
  call.j = input.ConsumeIntegralInRange(0, capacity + 1);
  call.tline = input.ConsumeIntegralInRange(-1, 5);
  call.limit = input.ConsumeBool();
  call.word = take_word(input, text);
  return call;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const fuzz::MemoryFile file;
  FuzzedDataProvider input(data, size);
  constexpr int capacities[] = {200, 1, 5, 20, 80, 0};
  const int capacity = capacities[input.ConsumeIntegralInRange<std::size_t>(0, 5)];
  const int count = input.ConsumeIntegralInRange(1, 8);
  const std::string whole(reinterpret_cast<const char*>(data), size);
  std::vector<Call> calls(static_cast<std::size_t>(count));
  for (Call& call : calls) call = take_call(input, whole, capacity);
  const std::string text = input.ConsumeRemainingBytesAsString();
  file.set(text);
  PlainFile plain(text, static_cast<std::size_t>(capacity));
  std::string line(static_cast<std::size_t>(capacity), '#');
  std::size_t done = 0;
  bool outside = false;
  const auto stop = fuzz::run([&] {
    io::open_existing(unit, file.name());
    for (; done < calls.size() && !outside; ++done) {
      const Call& call = calls[done];
      bool expected = false;
      try {
        expected = act_plainly(plain, call);
      } catch (const OutsideTheLine&) {
        outside = true;
      }
      const bool found = act(call, line);
      fuzz::require(!outside, "a slice outside the line that does not stop");
      fuzz::require(found == expected, "another result");
      fuzz::require(line == plain.line, "another line");
      const auto number = static_cast<std::size_t>(io::line_number(unit));
      fuzz::require(number == plain.next, "another place");
    }
    io::close(unit);
  });
  fuzz::require(stop.has_value() == outside, "a stop");
  return 0;
}
