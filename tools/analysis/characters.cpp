#include "characters.hpp"

#include <algorithm>
#include <limits>
#include <set>
#include <string>

#include "dipoles.hpp"

namespace analysis {

namespace {

constexpr double operation_tolerance = 1e-4;
constexpr int most_operations = 256;  // the largest finite molecular group has 120
constexpr std::size_t most_patterns = 4096;

Eigen::Map<const Eigen::Matrix3d> operation(const zandor::RunData& run, int k) {
  return Eigen::Map<const Eigen::Matrix3d>(run.op.column(1, k));
}

bool alike(const Eigen::Matrix3d& a, const Eigen::Matrix3d& b) {
  return (a - b).cwiseAbs().maxCoeff() <= operation_tolerance;
}

struct Product {
  int k, l, m;  // op_k op_l = op_m
};

std::vector<Product> products_of(const zandor::RunData& run) {
  if (run.nop > most_operations) {
    io::fatal_stop({zandor::job_list_name}, "expected at most " + std::to_string(most_operations) +
                                                " operations to find characters, found " +
                                                std::to_string(run.nop));
  }
  std::vector<Product> products;
  for (int k = 1; k <= run.nop; ++k) {
    for (int l = 1; l <= run.nop; ++l) {
      const Eigen::Matrix3d product = operation(run, k) * operation(run, l);
      for (int m = 1; m <= run.nop; ++m) {
        if (alike(product, operation(run, m))) products.push_back({k, l, m});
      }
    }
  }
  return products;
}

// Whether the pattern meets every product whose last operation in the list is `known`.
bool agrees(const Characters& characters, const std::vector<Product>& products, int known) {
  const auto chi = [&](int k) { return characters[static_cast<std::size_t>(k - 1)]; };
  return std::all_of(products.begin(), products.end(), [&](const Product& product) {
    const int last = std::max({product.k, product.l, product.m});
    return last != known || chi(product.k) * chi(product.l) == chi(product.m);
  });
}

std::vector<char> operations_used(const zandor::RunData& run) {
  std::vector<char> used(static_cast<std::size_t>(run.nop), 0);
  for (int i = 1; i <= run.n6; ++i) {
    const zandor::Job& job = run.jobs[static_cast<std::size_t>(i)];
    if (!job.is_calc) used[static_cast<std::size_t>(job.iops - 1)] = 1;
  }
  return used;
}

// Keeps one of the patterns that agree in the operations that derived jobs use.
std::vector<Characters> distinct(std::vector<Characters> patterns, const std::vector<char>& used) {
  std::set<Characters> seen;
  std::vector<Characters> kept;
  for (Characters& pattern : patterns) {
    Characters counted;
    for (std::size_t k = 0; k < used.size(); ++k) {
      if (used[k] != 0) counted.push_back(pattern[k]);
    }
    if (seen.insert(counted).second) kept.push_back(std::move(pattern));
  }
  return kept;
}

// The largest change that print rounding makes in an element of the gradient.
double gradient_rounding(const zandor::RunData& run) {
  return print_rounding(run).tail(run.n6).maxCoeff() / std::abs(run.dx);
}

double midpoint_ratio(const zandor::RunData& run, const Eigen::Matrix3Xd& dipoles) {
  const Eigen::Matrix3Xd midpoints = dipole_midpoints(run, dipoles);
  if (midpoints.cwiseAbs().maxCoeff() <= 3.0 * gradient_rounding(run)) return 0.0;
  return midpoints.norm() / dipole_gradient(run, dipoles).norm();
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
  const std::vector<Product> products = products_of(run);
  std::vector<Characters> patterns = {{}};
  for (int k = 1; k <= run.nop; ++k) {
    std::vector<Characters> longer;
    for (const Characters& pattern : patterns) {
      for (const int chi : {1, -1}) {
        Characters next = pattern;
        next.push_back(chi);
        if (agrees(next, products, k)) longer.push_back(std::move(next));
      }
    }
    patterns = std::move(longer);
    if (patterns.size() > most_patterns) {
      io::fatal_stop({zandor::job_list_name},
                     "expected operations that form a group, found more "
                     "than 4096 patterns of characters");
    }
  }
  return distinct(std::move(patterns), operations_used(run));
}

bool are_allowed(const zandor::RunData& run, const Characters& characters) {
  const std::vector<Product> products = products_of(run);
  for (int known = 1; known <= run.nop; ++known) {
    if (!agrees(characters, products, known)) return false;
  }
  return true;
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

CharacterChoice find_characters(const zandor::RunData& run, const Eigen::Matrix3Xd& dipoles) {
  CharacterChoice best;
  std::vector<SumRuleResidual> residuals;
  std::vector<Eigen::Matrix3Xd> gradients;
  Eigen::Matrix3Xd chosen;
  for (const Characters& characters : allowed_characters(run)) {
    Eigen::Matrix3Xd filled = dipoles;
    derive_dipoles(run, characters, filled);
    residuals.push_back(sum_rule_residual(run, filled));
    gradients.push_back(dipole_gradient(run, filled));
    if (residuals.size() == 1 || residuals.back().absolute < best.residual.absolute) {
      best.residual = residuals.back();
      best.characters = characters;
      best.midpoint_ratio = midpoint_ratio(run, filled);
      chosen = gradients.back();
    }
  }
  best.next_best = std::numeric_limits<double>::infinity();
  const double rounding = gradient_rounding(run);
  for (std::size_t i = 0; i < residuals.size(); ++i) {
    if ((gradients[i] - chosen).cwiseAbs().maxCoeff() <= rounding) continue;
    best.next_best = std::min(best.next_best, residuals[i].absolute);
  }
  return best;
}

}  // namespace analysis
