// Symbols and atomic numbers in the job list, the sign files and the input.
#include <algorithm>
#include <cctype>
#include <functional>

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
  return io::joined("'", io::printable(atom.symbol), "' ", atom.number);
}

// Unknown symbols are compared by their letters alone.
bool same(const Atom& a, const Atom& b) {
  return a.number == b.number && io::equal_in_any_case(a.symbol, b.symbol);
}

// Atom a, from 0.
Atom of_list(const JobData& jobs, int a) {
  return {at(jobs.list.symbols, a).content(), at(jobs.list.numbers, a)};
}

// The atom of a sign file; what it leaves out is that of the list.
Atom of_sign_file(const JobData& jobs, int i, int a) {
  const Atoms& atoms = *jobs.sign_file(i).geometry;
  const Atom listed = of_list(jobs, a);
  const std::string_view symbol = at(atoms.symbols, a).content();
  const int number = at(atoms.numbers, a);
  return {symbol.empty() ? listed.symbol : symbol, number == 0 ? listed.number : number};
}

// Adds what is wrong with atom a at a place, of a job (-1: of the list).
using Add = std::function<void(int a, const io::Place& place, const std::string& is, int job)>;

void compare_list_with_itself(const JobData& jobs, const Add& add) {
  for (int a = 0; a < jobs.run.natom; ++a) {
    const int number = analysis::element_number(of_list(jobs, a).symbol);
    if (number == 0 || number == of_list(jobs, a).number) continue;
    add(a, {zandor::job_list_name, at(jobs.run.atom_line, a)},
        io::joined(text(of_list(jobs, a)), ", but the number of that symbol is ", number), -1);
  }
}

// The reference's sign file is compared with the list, the others with it.
void compare_sign_file(const JobData& jobs, int i, const Add& add) {
  if (!jobs.sign_file(i).geometry) return;
  const bool with_list = i == 0 || !jobs.has_geometry();
  for (int a = 0; a < jobs.run.natom; ++a) {
    const Atom found = of_sign_file(jobs, i, a);
    const Atom expected = with_list ? of_list(jobs, a) : of_sign_file(jobs, 0, a);
    if (same(found, expected)) continue;
    return add(a, sign_line(jobs, i, at(jobs.sign_file(i).geometry->lines, a)),
               text(found) + ", in " + (with_list ? zandor::job_list_name : "the reference's") +
                   " " + text(expected),
               i);
  }
}

void compare_input(const JobData& jobs, const Add& add) {
  for (int a = 0; a < jobs.run.natom; ++a) {
    const std::string& word = at(jobs.input->words, a);
    const int number = element_of_word(word);
    if (number == 0 || number == of_list(jobs, a).number) continue;
    return add(
        a, {jobs.run.com_name.content(), at(jobs.input->lines, a)},
        "'" + io::printable(word) + "', in " + zandor::job_list_name + " " + text(of_list(jobs, a)),
        0);
  }
}

}  // namespace

void check_symbols(const JobData& jobs, const Thresholds&, Findings& findings) {
  int unlike = 0;
  const Add add = [&](int a, const io::Place& place, const std::string& is, int job) {
    ++unlike;
    findings.warn(place, {job}, "atom ", a + 1, " is ", is);
  };
  compare_list_with_itself(jobs, add);
  for (int i = 0; i <= jobs.run.n6; ++i) compare_sign_file(jobs, i, add);
  if (!jobs.has_geometry()) {
    findings.note(place_of(jobs, 0), "not looked at: the reference's geometry is missing");
  }
  if (jobs.input) {
    compare_input(jobs, add);
  } else {
    findings.note({jobs.run.com_name.content()}, "not looked at: the input could not be read");
  }
  findings.figure("lines of the list and files that differ", unlike);
}

}  // namespace check
