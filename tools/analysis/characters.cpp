#include "analysis/characters.hpp"

#include <algorithm>
#include <bitset>
#include <cmath>
#include <string>

#include "analysis/dipoles.hpp"
#include "analysis/operations.hpp"

namespace analysis {

namespace {

constexpr std::size_t most_operations = 256;  // the largest finite molecular group has 120
constexpr std::size_t most_free = 12;         // 4096 patterns

// A bit per operation, equal ones of the list as one: 1 where the character is -1.
using Pattern = std::bitset<most_operations>;

// What the products demand of the characters. chi_k chi_l = chi_m is a linear equation of their
// bits, modulo 2.
struct Conditions {
  std::vector<std::size_t> bit;  // that of operation k at [k - 1]
  // One per bit: the bits of an equation of which it is the highest, of which an even number is 1;
  // none() where the bit is free.
  std::vector<Pattern> equations;
};

void add_equation(Pattern equation, std::vector<Pattern>& equations) {
  for (std::size_t i = equations.size(); i-- > 0;) {
    if (!equation[i]) continue;
    if (equations[i].none()) {
      equations[i] = equation;
      return;
    }
    equation ^= equations[i];
  }
}

Conditions conditions_of(const zandor::RunData& run) {
  Conditions conditions;
  Matrices different;
  for (int k = 1; k <= run.nop; ++k) {
    const std::size_t place = place_of(operation(run, k), different);
    if (place == most_operations) {
      io::fatal_stop({zandor::job_list_name},
                     "expected at most 256 different operations to find characters, found more");
    }
    if (place == different.size()) different.emplace_back(operation(run, k));
    conditions.bit.push_back(place);
  }
  conditions.equations.resize(different.size());
  for (std::size_t k = 0; k < different.size(); ++k) {
    for (std::size_t l = 0; l < different.size(); ++l) {
      const std::size_t m = place_of(different[k] * different[l], different);
      if (m == different.size()) continue;
      add_equation(Pattern().flip(k).flip(l).flip(m), conditions.equations);
    }
  }
  return conditions;
}

bool meets(const Pattern& pattern, const Pattern& equation) {
  return (pattern & equation).count() % 2 == 0;
}

// The operations that derived jobs use must keep the length of a dipole.
void look_at_operations(const zandor::RunData& run) {
  for (int i = 1; i <= run.n6; ++i) {
    const zandor::Job& job = run.jobs[static_cast<std::size_t>(i)];
    if (job.is_calc) continue;
    if (!(off_orthogonal(operation(run, job.iops)) <= same_within)) {
      io::fatal_stop({zandor::job_list_name}, "expected orthogonal operations, found operation " +
                                                  std::to_string(job.iops) + ", which is not");
    }
  }
}

// Every pattern that meets the equations, plus signs first.
std::vector<Pattern> solutions(const std::vector<Pattern>& equations) {
  const auto free = static_cast<std::size_t>(
      std::count_if(equations.begin(), equations.end(), [](const Pattern& e) { return e.none(); }));
  if (free > most_free) {
    io::fatal_stop({zandor::job_list_name},
                   "expected operations that form a group, found more "
                   "than 4096 patterns of characters");
  }
  std::vector<Pattern> patterns = {Pattern()};
  for (std::size_t i = 0; i < equations.size(); ++i) {
    std::vector<Pattern> longer;
    for (const Pattern& pattern : patterns) {
      if (meets(pattern, equations[i])) longer.push_back(pattern);
      if (equations[i].none() || !meets(pattern, equations[i])) {
        longer.push_back(Pattern(pattern).set(i));
      }
    }
    patterns = std::move(longer);
  }
  return patterns;
}

}  // namespace

bool needs_characters(const zandor::RunData& run) {
  return std::any_of(run.jobs.begin() + 1, run.jobs.end(),
                     [](const zandor::Job& job) { return !job.is_calc; });
}

bool is_identity(const zandor::RunData& run, int k) {
  return alike(operation(run, k), Eigen::Matrix3d::Identity());
}

std::vector<Characters> allowed_characters(const zandor::RunData& run) {
  const Conditions conditions = conditions_of(run);
  look_at_operations(run);
  std::vector<Characters> allowed;
  for (const Pattern& pattern : solutions(conditions.equations)) {
    Characters& characters = allowed.emplace_back();
    for (const std::size_t bit : conditions.bit) characters.push_back(pattern[bit] ? -1 : 1);
  }
  return allowed;
}

bool are_allowed(const zandor::RunData& run, const Characters& characters) {
  const Conditions conditions = conditions_of(run);
  Pattern pattern;
  for (std::size_t k = 0; k < characters.size(); ++k) {
    if (characters[k] < 0) pattern.set(conditions.bit[k]);
  }
  for (std::size_t k = 0; k < characters.size(); ++k) {
    if (pattern[conditions.bit[k]] != (characters[k] < 0)) return false;  // equal to another one
  }
  return std::all_of(conditions.equations.begin(), conditions.equations.end(),
                     [&](const Pattern& equation) { return meets(pattern, equation); });
}

Characters parse_characters(const zandor::RunData& run, const std::string& text) {
  Characters signs;
  bool well_formed = text.size() % 2 == 1;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const std::string_view fitting = i % 2 == 0 ? "+-" : ",";
    well_formed = well_formed && fitting.find(text[i]) != fitting.npos;
    if (i % 2 == 0) signs.push_back(text[i] == '-' ? -1 : 1);
  }
  Characters characters(static_cast<std::size_t>(run.nop), 1);
  std::vector<std::size_t> others;
  for (int k = 1; k <= run.nop; ++k) {
    if (!is_identity(run, k)) others.push_back(static_cast<std::size_t>(k - 1));
  }
  if (!well_formed || (signs.size() != characters.size() && signs.size() != others.size())) {
    io::fatal_stop(
        "expected behind --characters a + or - for each of the " + std::to_string(others.size()) +
        " operations other than the identity, separated by commas, found " + io::quoted(text));
  }
  if (signs.size() == characters.size()) {
    characters = signs;
  } else {
    for (std::size_t i = 0; i < others.size(); ++i) characters[others[i]] = signs[i];
  }
  if (!are_allowed(run, characters)) {
    io::fatal_stop("expected behind --characters signs that multiply as the operations do, found " +
                   io::quoted(text));
  }
  return characters;
}

std::string shown(const zandor::RunData& run, const Characters& characters) {
  std::string text;
  for (int k = 1; k <= run.nop; ++k) {
    if (is_identity(run, k)) continue;
    if (!text.empty()) text += ',';
    text += characters[static_cast<std::size_t>(k - 1)] > 0 ? '+' : '-';
  }
  return text;
}

void derive_dipoles(const zandor::RunData& run, const Characters& characters,
                    Eigen::Matrix3Xd& dipoles) {
  for (int i = 1; i <= run.n6; ++i) {
    const zandor::Job& job = run.jobs[static_cast<std::size_t>(i)];
    if (job.is_calc) continue;
    if (computed_source(run, i) == 0) {
      dipoles.col(i).setZero();
      continue;
    }
    dipoles.col(i) = characters[static_cast<std::size_t>(job.iops - 1)] *
                     (operation(run, job.iops) * dipoles.col(job.calc_m));
  }
}

std::vector<ImageRelation> image_relations(const zandor::RunData& run,
                                           const Characters& characters) {
  std::vector<ImageRelation> relations;
  if (run.atom_m.size() == 0) return relations;
  for (int k = 1; k <= run.nop; ++k) {
    if (is_identity(run, k)) continue;
    const Eigen::Matrix3d image = characters[static_cast<std::size_t>(k - 1)] * operation(run, k);
    relations.push_back({0, 0, image});
    for (int to = 1; to <= run.n6; ++to) {
      if (!run.jobs[static_cast<std::size_t>(to)].is_calc) continue;
      const int from = image_source(run, to, k, same_within);
      if (from > 0 && run.jobs[static_cast<std::size_t>(from)].is_calc) {
        relations.push_back({from, to, image});
      }
    }
  }
  return relations;
}

}  // namespace analysis
