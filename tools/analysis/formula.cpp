#include "analysis/formula.hpp"

#include <map>

namespace analysis {

std::vector<std::string> symbols(const zandor::RunData& run) {
  std::vector<std::string> symbols;
  for (const auto& symbol : run.symbol) {
    const std::string shown = io::printable(symbol.content());
    symbols.push_back(shown.empty() ? "X" : shown);
  }
  return symbols;
}

std::vector<std::string> formula_parts(const std::vector<std::string>& symbols) {
  std::map<std::string, int> counts;
  for (const std::string& symbol : symbols) ++counts[symbol];
  std::vector<std::string> parts;
  const auto take = [&](const std::string& symbol) {
    const int count = counts[symbol];
    counts.erase(symbol);
    if (count > 0) parts.insert(parts.end(), {symbol, count > 1 ? std::to_string(count) : ""});
  };
  if (counts.contains("C")) {
    take("C");
    take("H");
  }
  while (!counts.empty()) take(std::string(counts.begin()->first));
  return parts;
}

}  // namespace analysis
