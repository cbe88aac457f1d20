#include "displace/contents.hpp"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "io/fields.hpp"
#include "io/values.hpp"

namespace displace {

namespace {

std::string right(std::string text, std::size_t width) {
  if (text.size() < width) text.insert(0, width - text.size(), ' ');
  return text;
}

std::string fixed(double value, int width, int decimals) {
  char field[io::widest_field];
  return {field, io::fixed_field(field, value, width, decimals)};
}

std::string symbol_of(const zandor::RunData& run, int a) {
  std::string symbol(run.symbol[static_cast<std::size_t>(a - 1)].content());
  return symbol.append(3 - symbol.size(), ' ');
}

// Lines of symbol and coordinates in Angstrom, the last without its end; job 0 is the reference.
std::string geometry_of(const Plan& plan, int job) {
  const zandor::RunData& run = plan.run;
  std::string text;
  for (int a = 1; a <= run.natom; ++a) {
    text += (a == 1 ? " " : "\n ") + symbol_of(run, a);
    for (int k = 1; k <= 3; ++k) {
      const bool moves = job > 0 && (job + 1) / 2 == 3 * (a - 1) + k;
      const double step = moves ? (job % 2 == 0 ? plan.step : -plan.step) : 0.0;
      text += fixed(rounded_place(run.xa(k, a) + step), 18, 10);
    }
  }
  return text;
}

std::string input_of(const Plan& plan, const Template& input, int job) {
  std::string symbols;
  for (const auto& symbol : plan.run.symbol) {
    symbols.append(symbols.empty() ? "" : " ").append(symbol.content());
  }
  return fill(input, {{"name", plan.names[static_cast<std::size_t>(job)]},
                      {"reference", plan.names[0]},
                      {"geometry", geometry_of(plan, job)},
                      {"charge", std::to_string(plan.charge)},
                      {"multiplicity", std::to_string(plan.multiplicity)},
                      {"symbols", symbols},
                      {"natom", std::to_string(plan.run.natom)}});
}

// The line with the charge is the first that begins with a digit, so that a negative charge stands
// without its sign.
std::string reference_com(const Plan& plan) {
  return "# input of the reference as zandor_gather reads it\n\nreference geometry of " +
         plan.names[0] + "\n\n" + std::to_string(std::abs(plan.charge)) + " " +
         std::to_string(plan.multiplicity) + "\n" + geometry_of(plan, 0) + "\n\n";
}

std::string operations_of(const Plan& plan) {
  const zandor::RunData& run = plan.run;
  std::string text;
  for (int k = 1; k <= run.nop; ++k) {
    text += " Operation " + right(std::to_string(k), 3) + "   " +
            caption_of(plan.orientation.group[static_cast<std::size_t>(k - 1)].matrix) + "\n";
    for (int row = 1; row <= 3; ++row) {
      for (int column = 1; column <= 3; ++column) text += fixed(run.op(row, column, k), 16, 10);
      text += "\n";
    }
  }
  return text;
}

std::string atom_table_of(const zandor::RunData& run) {
  std::string text;
  for (int a = 1; a <= run.natom; ++a) {
    text += right(std::to_string(a), 5) + "   " + symbol_of(run, a) +
            right(std::to_string(run.nat[static_cast<std::size_t>(a - 1)]), 6) + "   ";
    for (int k = 1; k <= run.nop; ++k) text += right(std::to_string(run.atom_m(a, k)), 5);
    text += "\n";
  }
  return text;
}

std::string jobs_of(const Plan& plan) {
  std::string text;
  for (int i = 0; i <= plan.run.n6; ++i) {
    const auto place = static_cast<std::size_t>(i);
    const zandor::Job& job = plan.run.jobs[place];
    std::string name = plan.names[place];
    if (name.size() < 24) name.append(24 - name.size(), ' ');
    text += right(std::to_string(i), 6) + "   " + name + (job.is_calc ? " T" : " F") +
            right(std::to_string(job.calc_m), 8) + right(std::to_string(job.iops), 4) + "\n";
  }
  return text;
}

std::string job_list_of(const Plan& plan, const std::string& ending) {
  const std::string rule = " " + std::string(60, '-') + "\n";
  return " Number of atoms " + std::to_string(plan.run.natom) + "\n Number of files " +
         std::to_string(plan.run.n6 + 1) + "\n step " + io::shown(plan.step) +
         "\n\n Displaced jobs of " + plan.formula + "\n" + origin + ending +
         "'\n\nBegin_zand_info\n Symmetry operations\n Number of operations " +
         std::to_string(plan.run.nop) + "\n" + rule + operations_of(plan) + rule +
         " atom  symbol  number  images\n" + atom_table_of(plan.run) + rule +
         " Jobs\n number  name                 computed  from  operation\n" + jobs_of(plan);
}

// Whether an input can serve as the reference's .com file, as the run reads it.
bool serves_as_com(const Plan& plan, std::string_view text) {
  const auto next = [](std::string_view lines) {
    const std::size_t end = lines.find('\n');
    return end == lines.npos ? std::string_view{} : lines.substr(end + 1);
  };
  for (; !text.empty(); text = next(text)) {
    const std::string_view line = io::without_leading_blanks(text);
    if (line.empty() || !io::is_digit(line.front())) continue;
    return io::without_leading_blanks(next(text))
        .starts_with(std::string(io::without_leading_blanks(geometry_of(plan, 0))));
  }
  return false;
}

}  // namespace

std::vector<File> contents_of(const Plan& plan, const Template& input) {
  std::vector<File> files = {{"control.inp", std::string("&control\n symm = ") +
                                                 (plan.run.symm ? ".true." : ".false.") + "\n/\n"}};
  const std::string com = "coord-" + plan.names[0] + ".com";
  for (const int job : jobs_to_run(plan.run)) {
    files.emplace_back("coord-" + plan.names[static_cast<std::size_t>(job)] + input.ending,
                       input_of(plan, input, job));
    if (files.back().first != com || serves_as_com(plan, files.back().second)) continue;
    io::fatal_stop(
        "expected a template .com with charge and multiplicity in the first line that "
        "begins with a digit, without a sign, and the geometry behind it, as the run "
        "reads it; give the template another ending, as .gjf");
  }
  if (input.ending != ".com") files.emplace_back(com, reference_com(plan));
  files.emplace_back(zandor::job_list_name, job_list_of(plan, input.ending));
  return files;
}

}  // namespace displace
