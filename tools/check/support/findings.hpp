// What the checks say: findings, and the figures behind them.
#pragma once

#include <Eigen/Dense>
#include <limits>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "io/fatal.hpp"

namespace check {

// Stands in a figure for what was not looked at; null in the JSON document.
inline constexpr double not_known = std::numeric_limits<double>::quiet_NaN();

enum class Severity { note, warning, error };

// Whom a finding blames.
struct Blame {
  int job = -1;                 // the job that it is about; -1: the directory as a whole
  std::vector<int> rerun = {};  // computed jobs that may have to be run again because of it
  double figure = not_known;    // how bad it is, beside others that are alike
};

struct Finding : Blame {
  Severity severity = Severity::note;
  std::string check;
  std::string file;    // the sign file, where a job is blamed
  long long line = 0;  // 0 for the file as a whole
  std::string text;
};

// The largest of the numbers that are known; not_known where none is.
inline double largest_known(const Eigen::VectorXd& values) {
  return values.maxCoeff<Eigen::PropagateNumbers>();
}

// One figure of a check: a number, or one number per coordinate or job in their order.
struct Figure {
  std::string check;
  std::string name;  // with its unit, as "largest (Hartree/Bohr**2)"
  std::vector<double> values;
  bool is_list = false;
};

// Filled by the checks in turn. `check` is the name of the one that is at work.
struct Findings {
  std::string check;
  std::vector<Finding> list;
  std::vector<Figure> figures;

  // The text is that of its parts in a row (io::joined).
  template <class... Parts>
  void add(Severity severity, const io::Place& place, Blame blame, const Parts&... parts) {
    list.push_back({std::move(blame), severity, check, std::string(place.file), place.line,
                    io::joined(parts...)});
  }
  template <class... Parts>
  void error(const io::Place& place, Blame blame, const Parts&... parts) {
    add(Severity::error, place, std::move(blame), parts...);
  }
  template <class... Parts>
  void warn(const io::Place& place, Blame blame, const Parts&... parts) {
    add(Severity::warning, place, std::move(blame), parts...);
  }
  template <class... Parts>
  void note(const io::Place& place, const Parts&... parts) {
    add(Severity::note, place, {}, parts...);
  }
  // The first figure of a check; not_known where it has none yet.
  double headline(std::string_view of_check) const;
  // Whether a check other than the one at work says more of the job than a note.
  bool blames(int job) const;
  void figure(std::string name, double value) {
    figures.push_back({check, std::move(name), {value}, false});
  }
  void figure(std::string name, const Eigen::VectorXd& values) {
    figures.push_back({check, std::move(name), {values.begin(), values.end()}, true});
  }
};

const char* name_of(Severity severity);

// "FILE:LINE: error|warning|note: text [check]".
std::string line_of(const Finding& finding);

// Alike are findings of one check whose texts differ only behind the first colon or semicolon, in
// words that hold a digit or stand in brackets, and in words of one or two letters.
std::string words_of(const Finding& finding);

// A number in a sentence: four significant digits.
inline std::string rounded(double value) {
  return io::rounded(value, std::chars_format::general, 4);
}

// "1 job", "3 jobs".
std::string counted(long long count, std::string_view what);

}  // namespace check
