#include "collect/output_lines.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

#include "io/units.hpp"
#include "io/values.hpp"

namespace collect {

namespace {

constexpr int lines_unit = 14;

bool is_separator(char c) { return c == ' ' || c == '\t' || c == '\r'; }

}  // namespace

OutputLines::OutputLines(const std::string& name) { io::open_existing(lines_unit, name); }

OutputLines::~OutputLines() { io::close(lines_unit); }

bool OutputLines::next() {
  if (std::exchange(again_, false)) return text_.data() != nullptr;
  words_.clear();
  if (io::read_record(lines_unit, text_) != io::read_ok) {
    text_ = {};
    return false;
  }
  // No line of interest is longer; one of many MB need not be taken apart.
  const std::string_view head = text_.substr(0, 4096);
  for (std::size_t i = 0; i < head.size();) {
    if (is_separator(head[i])) {
      ++i;
      continue;
    }
    const std::size_t begin = i;
    while (i < head.size() && !is_separator(head[i])) ++i;
    words_.push_back(head.substr(begin, i - begin));
  }
  return true;
}

void OutputLines::need_next(std::string_view what) {
  if (next()) return;
  io::fatal_stop(io::next_place(lines_unit),
                 "expected " + std::string(what) + ", found the end of the file");
}

bool OutputLines::is_ruler() const {
  return !words_.empty() && std::all_of(words_.begin(), words_.end(), [](std::string_view word) {
    return word.find_first_not_of("-*=") == word.npos;
  });
}

std::string_view OutputLines::word(std::size_t number) const {
  return number >= 1 && number <= words_.size() ? words_[number - 1] : std::string_view{};
}

std::size_t OutputLines::find_word(std::string_view word) const {
  const auto found = std::find(words_.begin(), words_.end(), word);
  return found == words_.end() ? 0 : static_cast<std::size_t>(found - words_.begin()) + 1;
}

std::string_view OutputLines::behind(std::string_view mark) const {
  const std::size_t at = text_.find(mark);
  if (at == text_.npos) return {};
  std::string_view rest = text_.substr(at + mark.size());
  while (!rest.empty() && is_separator(rest.front())) rest.remove_prefix(1);
  return rest.substr(0, static_cast<std::size_t>(
                            std::find_if(rest.begin(), rest.end(), is_separator) - rest.begin()));
}

double OutputLines::number(std::string_view word, std::string_view what) const {
  double value = 0.0;
  if (!io::parse_real(word, value) || !std::isfinite(value)) {
    stop("expected " + std::string(what) + " (finite number), found " +
         (word.empty() ? "the end of the line" : io::quoted(word)));
  }
  return value;
}

int OutputLines::integer(std::string_view word, std::string_view what) const {
  int value = 0;
  if (!io::parse_integer(word, value)) {
    stop("expected " + std::string(what) + " (integer), found " +
         (word.empty() ? "the end of the line" : io::quoted(word)));
  }
  return value;
}

double OutputLines::number(std::size_t place, std::string_view what) const {
  return number(word(place), what);
}

int OutputLines::integer(std::size_t place, std::string_view what) const {
  return integer(word(place), what);
}

std::vector<double> OutputLines::numbers(std::size_t count, std::string_view what) {
  std::vector<double> values;
  while (values.size() < count) {
    need_next(what);
    if (is_blank()) stop("expected " + std::string(what) + " (finite number), found a blank line");
    for (std::size_t i = 1; i <= word_count() && values.size() < count; ++i) {
      values.push_back(number(i, what));
    }
  }
  return values;
}

io::Place OutputLines::place() const { return io::place(lines_unit); }

void OutputLines::stop(std::string_view message) const { io::fatal_stop(place(), message); }

void Rows::take(const OutputLines& lines, std::size_t first, std::string_view what) {
  for (std::size_t k = 0; k < 3; ++k) values_.push_back(lines.number(first + k, what));
}

Eigen::Matrix3Xd Rows::matrix() const {
  return Eigen::Map<const Eigen::Matrix3Xd>(values_.data(), 3,
                                            static_cast<Eigen::Index>(values_.size() / 3));
}

int decimals_of(std::string_view number) {
  const std::size_t point = number.find('.');
  if (point == number.npos) return 0;
  const std::size_t end = number.find_first_not_of("0123456789", point + 1);
  return static_cast<int>(std::min(end, number.size()) - point) - 1;
}

}  // namespace collect
