#include "check/support/findings.hpp"

#include <algorithm>
#include <cmath>

namespace check {

bool Findings::blames(int job) const {
  return std::ranges::any_of(list, [&](const Finding& finding) {
    return finding.severity != Severity::note && finding.check != check &&
           (finding.job == job || std::ranges::find(finding.rerun, job) != finding.rerun.end());
  });
}

double Findings::headline(std::string_view of_check) const {
  const auto first =
      std::ranges::find_if(figures, [&](const Figure& f) { return f.check == of_check; });
  return first == figures.end() ? not_known : first->values.front();
}

const char* name_of(Severity severity) {
  constexpr const char* names[] = {"note", "warning", "error"};
  return names[static_cast<int>(severity)];
}

std::string line_of(const Finding& finding) {
  return io::joined(
      io::printable(finding.file), finding.line > 0 ? io::joined(":", finding.line) : "", ": ",
      name_of(finding.severity), ": ", io::printable(finding.text), " [", finding.check, "]");
}

std::string words_of(const Finding& finding) {
  std::string words = name_of(finding.severity) + finding.check;
  const std::string_view text =
      std::string_view(finding.text).substr(0, finding.text.find_first_of(":;"));
  for (std::size_t at = 0; at < text.size();) {
    const std::string_view word = text.substr(at, text.find(' ', at) - at);
    at += word.size() + 1;
    if (word.size() > 2 && word.find_first_of("0123456789(") == word.npos)
      words += " " + std::string(word);
  }
  return words;
}

std::string counted(long long count, std::string_view what) {
  return io::joined(count, " ", what, count == 1 ? "" : "s");
}

}  // namespace check
