// Symbols and atomic numbers in the job list, the sign files and the input.
#include <algorithm>
#include <cctype>

#include "analysis/isotopes.hpp"
#include "check/checks.hpp"
#include "io/values.hpp"

namespace check {

namespace {

// The element that a word of an input names: C, 6, C1, C(Iso=13), C-CA-0.1. 0 where it is none.
int element_of_word(std::string_view word) {
  int number = 0;
  if (io::parse_integer(word, number)) return number;
  const auto end = std::find_if_not(word.begin(), word.end(),
                                    [](unsigned char c) { return std::isalpha(c) != 0; });
  return analysis::element_number(word.substr(0, static_cast<std::size_t>(end - word.begin())));
}

struct Atom {
  std::string_view symbol;
  int number = 0;
};

std::string text(const Atom& atom) {
  return "'" + io::printable(atom.symbol) + "' " + std::to_string(atom.number);
}

// Unknown symbols are compared by their letters alone.
bool same(const Atom& a, const Atom& b) {
  const auto lower_equal = [](char x, char y) { return io::lowered(x) == io::lowered(y); };
  return a.number == b.number && std::equal(a.symbol.begin(), a.symbol.end(), b.symbol.begin(),
                                            b.symbol.end(), lower_equal);
}

Atom of_list(const JobData& jobs, std::size_t a) {
  return {jobs.list.symbols[a].content(), jobs.list.numbers[a]};
}

void compare_list_with_itself(const JobData& jobs, int& unlike, Report& report) {
  for (std::size_t a = 0; a < jobs.list.numbers.size(); ++a) {
    const Atom atom = of_list(jobs, a);
    const int number = analysis::element_number(atom.symbol);
    if (number == 0 || number == atom.number) continue;
    ++unlike;
    report.add(Severity::warning, {zandor::job_list_name, jobs.run.atom_line[a]},
               "atom " + std::to_string(a + 1) + " is " + text(atom) +
                   ", but the number of that symbol is " + std::to_string(number));
  }
}

// The atom of a sign file; what it leaves out is that of the list.
Atom of_sign_file(const JobData& jobs, int i, std::size_t a) {
  const Atoms& atoms = *jobs.sign_file(i).geometry;
  const Atom listed = of_list(jobs, a);
  const std::string_view symbol = atoms.symbols[a].content();
  return {symbol.empty() ? listed.symbol : symbol,
          atoms.numbers[a] == 0 ? listed.number : atoms.numbers[a]};
}

// The reference's sign file is compared with the list, the others with it.
void compare_sign_file(const JobData& jobs, int i, int& unlike, Report& report) {
  const SignFile& file = jobs.sign_file(i);
  if (!file.geometry) return;
  const bool with_list = i == 0 || !jobs.has_geometry();
  for (std::size_t a = 0; a < file.geometry->numbers.size(); ++a) {
    const Atom found = of_sign_file(jobs, i, a);
    const Atom expected = with_list ? of_list(jobs, a) : of_sign_file(jobs, 0, a);
    if (same(found, expected)) continue;
    report.add(Severity::warning, {jobs.job(i).sgn_name.content(), file.geometry->lines[a]},
               "atom " + std::to_string(a + 1) + " is " + text(found) + ", in " +
                   (with_list ? zandor::job_list_name : "the reference's") + " " + text(expected),
               i);
    ++unlike;
    return;
  }
}

void compare_input(const JobData& jobs, int& unlike, Report& report) {
  const ReferenceInput& input = *jobs.input;
  for (std::size_t a = 0; a < input.words.size(); ++a) {
    const int number = element_of_word(input.words[a]);
    const Atom listed = of_list(jobs, a);
    if (number == 0 || number == listed.number) continue;
    report.add(Severity::warning, {jobs.run.com_name.content(), input.lines[a]},
               "atom " + std::to_string(a + 1) + " is '" + io::printable(input.words[a]) +
                   "', in " + zandor::job_list_name + " " + text(listed),
               0);
    ++unlike;
    return;
  }
}

}  // namespace

void check_symbols(const JobData& jobs, const Thresholds&, Report& report) {
  int unlike = 0;
  compare_list_with_itself(jobs, unlike, report);
  for (int i = 0; i <= jobs.run.n6; ++i) compare_sign_file(jobs, i, unlike, report);
  if (!jobs.has_geometry()) {
    report.note(place_of(jobs, 0), "not looked at: the reference's geometry is missing");
  }
  if (jobs.input) {
    compare_input(jobs, unlike, report);
  } else {
    report.note({jobs.run.com_name.content()}, "not looked at: the input could not be read");
  }
  report.figure("lines of the list and files that differ", unlike);
}

}  // namespace check
