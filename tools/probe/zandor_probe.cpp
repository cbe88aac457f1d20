// zandor_probe: says of quantum-chemistry files which program wrote them, and what sizes they hold.
#include <iostream>
#include <nlohmann/json.hpp>

#include "io/process.hpp"
#include "options/options.hpp"
#include "probe/file_facts.hpp"

const char* const io::program_name = "zandor_probe";

namespace {

using Record = nlohmann::ordered_json;

// Exit statuses; the larger outranks the smaller.
constexpr int recognised = 0;
constexpr int not_recognised = 1;
constexpr int not_read = 2;

Record record_of(const std::string& name, const probe::FileFacts& facts) {
  Record record;
  record["file"] = name;
  if (!facts.type.empty()) record["type"] = facts.type;
  if (!facts.version.empty()) record["version"] = facts.version;
  record["info"] = facts.info;
  record["oniom"] = facts.oniom;
  for (const auto& [key, count] : facts.counts) record[key] = count;
  return record;
}

std::string shown(const Record& value) {
  if (value.is_boolean()) return value.get<bool>() ? "T" : "F";
  if (value.is_string()) return io::printable(value.get<std::string>());
  return value.dump();
}

void print(const Record& record, bool as_json, bool first) {
  if (as_json) {
    std::cout << record.dump(-1, ' ', false, Record::error_handler_t::replace) << '\n';
    return;
  }
  if (!first) std::cout << '\n';
  for (const auto& [key, value] : record.items()) std::cout << key << " = " << shown(value) << '\n';
}

// Asks about one file and prints what was found; the result is its exit status.
int report_file(const std::string& name, bool as_json, bool first) {
  if (name == "-") {
    io::report({name}, "expected the name of a file, found '-' (standard input is not read)");
    return not_read;
  }
  probe::FileFacts facts;
  if (const auto stop = io::collect([&] { facts = probe::probe_file(name); })) {
    io::report(*stop);
    return not_read;
  }
  print(record_of(name, facts), as_json, first);
  if (!std::cout.flush()) io::fatal_stop({"standard output"}, "cannot write the results");
  if (facts.warning.empty()) return recognised;
  std::cerr << io::printable(facts.warning) << '\n';
  return not_recognised;
}

int report_files(const std::vector<std::string>& names, bool as_json) {
  int status = recognised;
  bool first = true;
  for (const std::string& name : names) {
    const int of_file = report_file(name, as_json, first);
    first = first && of_file == not_read;
    status = std::max(status, of_file);
  }
  return status;
}

int parse_and_report(int argc, char** argv) {
  CLI::App app(
      "Says of each file which quantum-chemistry program wrote it and what sizes it holds.",
      io::program_name);
  app.footer("Exit status: 0 all files recognised, 1 some not, 2 some could not be read.");
  std::vector<std::string> names;
  bool as_json = false;
  app.add_option("FILE", names, "files to look at")->required();
  app.add_flag("--json", as_json, "one JSON object per line");
  if (!options::parse(app, argc, argv)) return recognised;
  return report_files(names, as_json);
}

}  // namespace

int main(int argc, char** argv) {
  return io::run_program([&] { return parse_and_report(argc, argv); });
}
