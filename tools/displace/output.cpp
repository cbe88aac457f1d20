#include "displace/output.hpp"

#include <nlohmann/json.hpp>

#include "io/fatal.hpp"
#include "io/fields.hpp"

namespace displace {

namespace {

constexpr double worth_saying = 1e-4;  // Angstrom: a move that shows in a frequency

std::string plain(double value) {
  char field[io::widest_field];
  return {field, io::fixed_field(field, value, 6, 4)};
}

}  // namespace

std::string summary_of(const Plan& plan) {
  const Orientation& found = plan.orientation;
  const int displaced = plan.run.n6;
  std::string text =
      plan.formula + ", " + (found.symbol.empty() ? "symmetry not used" : found.symbol) + ": " +
      std::to_string(displaced) + " displaced jobs, " + std::to_string(found.to_run) + " to run";
  if (found.to_run < displaced) {
    text += ", " + std::to_string(displaced - found.to_run) + " derived by " +
            std::to_string(plan.run.nop) + " operations";
  }
  if (found.moved > worth_saying) {
    text += "; atoms moved by up to " + plain(found.moved) + " Angstrom to make it symmetric";
  }
  if (!found.principal) {
    text +=
        "; not in principal axes, where alone the projected set is exact off a stationary point "
        "(--axes principal)";
  }
  return text;
}

void print_json(const Plan& plan) {
  nlohmann::ordered_json document;
  const Orientation& found = plan.orientation;
  document["program"] = io::program_name;
  document["summary"] = summary_of(plan);
  document["formula"] = plan.formula;
  document["point_group"] =
      found.symbol.empty() ? nlohmann::ordered_json() : nlohmann::ordered_json(found.symbol);
  document["operations"] = plan.run.nop;
  document["displaced_jobs"] = plan.run.n6;
  document["displaced_jobs_to_run"] = found.to_run;
  document["step"] = plan.step;
  document["moved"] = found.moved;
  document["principal_axes"] = found.principal;
  auto& atoms = document["atoms"] = nlohmann::ordered_json::array();
  for (int a = 1; a <= plan.run.natom; ++a) {
    const auto place = static_cast<std::size_t>(a - 1);
    atoms.push_back({{"symbol", std::string(plan.run.symbol[place].content())},
                     {"place", {plan.run.xa(1, a), plan.run.xa(2, a), plan.run.xa(3, a)}}});
  }
  auto& jobs = document["run"] = nlohmann::ordered_json::array();
  for (const int i : jobs_to_run(plan.run)) {
    jobs.push_back({{"number", i}, {"name", plan.names[static_cast<std::size_t>(i)]}});
  }
  io::print_line(document.dump(1));
}

}  // namespace displace
