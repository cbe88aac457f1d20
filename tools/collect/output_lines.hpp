// The lines of an output, one after the other, taken apart into words. An output of several GB is
// never in memory whole.
#pragma once

#include <Eigen/Dense>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "io/fatal.hpp"

namespace collect {

class OutputLines {
 public:
  // Opens the file: one that cannot be read is a fatal stop.
  explicit OutputLines(const std::string& name);
  ~OutputLines();
  OutputLines(const OutputLines&) = delete;
  OutputLines& operator=(const OutputLines&) = delete;

  // Goes to the next line. False at the end of the file.
  bool next();
  // Has next() give this line once more, the first one behind a block.
  void again() { again_ = true; }
  // As next(), where a line must follow: `what` was expected.
  void need_next(std::string_view what);

  // The line without its end. It holds until the next one.
  std::string_view text() const { return text_; }
  bool holds(std::string_view words) const { return text_.find(words) != text_.npos; }
  bool begins_with(std::string_view words) const { return text_.starts_with(words); }
  // Whether nothing but blanks and tabs, or only rulers, stand in it.
  bool is_blank() const { return words_.empty(); }
  bool is_ruler() const;

  // The words between blanks and tabs, counted from 1; empty behind the last one.
  std::size_t word_count() const { return words_.size(); }
  std::string_view word(std::size_t number) const;
  // The place of a word within the line, counted from 1; 0 where it is not there.
  std::size_t find_word(std::string_view word) const;
  // What stands behind the first `mark`, up to the next blank.
  std::string_view behind(std::string_view mark) const;

  // A finite number or an integer in the place of a word; anything else is a fatal stop that says
  // what was expected. The other form takes a word from elsewhere.
  double number(std::size_t place, std::string_view what) const;
  int integer(std::size_t place, std::string_view what) const;
  double number(std::string_view word, std::string_view what) const;
  int integer(std::string_view word, std::string_view what) const;

  // Takes `count` numbers that fill lines, from the next one on.
  std::vector<double> numbers(std::size_t count, std::string_view what);

  io::Place place() const;
  [[noreturn]] void stop(std::string_view message) const;

 private:
  std::string_view text_;
  std::vector<std::string_view> words_;
  bool again_ = false;
};

// Rows of places or vectors, which become the columns of a matrix.
class Rows {
 public:
  void clear() { values_.clear(); }
  bool empty() const { return values_.empty(); }
  std::size_t size() const { return values_.size() / 3; }
  // The three numbers of the line from the word `first` on.
  void take(const OutputLines& lines, std::size_t first, std::string_view what);
  Eigen::Matrix3Xd matrix() const;

 private:
  std::vector<double> values_;
};

// Digits behind the point of a number as it is printed.
int decimals_of(std::string_view number);

}  // namespace collect
