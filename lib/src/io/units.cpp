#include "io/units.hpp"

#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "io/text.hpp"

namespace io {

namespace {

// An open file and how many were opened before it.
template <class File>
struct Opened {
  std::unique_ptr<File> file;
  long long number = 0;
};

struct Table {
  std::map<int, Opened<InputFile>> inputs;
  std::map<int, Opened<OutputFile>> outputs;
  long long opened = 0;
  // Complete files that wait to be put in place together.
  bool collecting = false;
  std::vector<std::unique_ptr<Replacement>> waiting;
};

Table& table() {
  static Table units;
  return units;
}

[[noreturn]] void stop_at_open(std::string_view name, const char* wanted, int error,
                               std::string_view hint = {}) {
  const std::string_view shown = trimmed(name);
  fatal_stop({shown.empty() ? "''" : shown}, "expected ", wanted, ", found: ", strerror(error),
             hint.empty() ? "" : joined(" (", hint, ")"));
}

using Open = int (OutputFile::*)(const std::string& name);

void connect_output(int fid, std::string_view name, Open open) {
  Table& units = table();
  auto file = std::make_unique<OutputFile>();
  const int error = (*file.*open)(std::string(name));
  if (error != 0) stop_at_open(name, "a file that can be written", error);
  units.outputs[fid] = {std::move(file), ++units.opened};
}

}  // namespace

void open_existing(int fid, std::string_view name, std::string_view hint) {
  const int error = try_open_existing(fid, name);
  if (error != 0) stop_at_open(name, "a file that can be read", error, hint);
}

int try_open_existing(int fid, std::string_view name) {
  // A name with a NUL byte would reach the system cut short and open some other file.
  if (name.find('\0') != std::string_view::npos) return ENOENT;
  auto file = std::make_unique<InputFile>();
  const int error = file->open(std::string(trimmed(name)));
  if (error == 0) table().inputs[fid] = {std::move(file), ++table().opened};
  return error;
}

void open_replaced(int fid, std::string_view name) {
  connect_output(fid, name, &OutputFile::open_replaced);
}

void open_kept(int fid, std::string_view name) {
  connect_output(fid, name, &OutputFile::open_kept);
}

void open_standard_output(int fid) {
  connect_output(fid, "standard output", &OutputFile::open_standard_output);
}

void close(int fid) {
  Table& units = table();
  units.inputs.erase(fid);
  const auto found = units.outputs.find(fid);
  if (found == units.outputs.end()) return;
  const std::unique_ptr<OutputFile> file = std::move(found->second.file);
  units.outputs.erase(found);
  std::unique_ptr<Replacement> complete = file->close();
  if (complete && units.collecting) {
    units.waiting.push_back(std::move(complete));
  } else if (complete) {
    put_in_place({&complete, 1});
  }
}

void begin_results() { table().collecting = true; }

void put_results_in_place() {
  Table& units = table();
  units.collecting = false;
  const auto files = std::exchange(units.waiting, {});
  put_in_place(files);
}

UnitsMark mark_units() {
  const Table& units = table();
  return {units.opened, units.collecting, units.waiting.size()};
}

void drop_units_since(const UnitsMark& mark) {
  Table& units = table();
  const auto is_new = [&](const auto& entry) { return entry.second.number > mark.opened; };
  std::erase_if(units.inputs, is_new);
  std::erase_if(units.outputs, is_new);
  units.collecting = mark.collecting;
  units.waiting.resize(std::min(units.waiting.size(), mark.waiting));
}

bool is_open(int fid) { return table().inputs.count(fid) != 0 || table().outputs.count(fid) != 0; }

int read_line(int fid, std::span<char> line) { return input(fid).read_line(line); }

int read_line_holding(int fid, std::string_view word, bool any_case, std::span<char> line) {
  return input(fid).read_line_holding(word, any_case, line);
}

int read_record(int fid, std::string_view& record) { return input(fid).read_record(record); }

void read_expected_line(int fid, std::span<char> line, std::string_view what) {
  if (read_line(fid, line) == read_ok) return;
  fatal_stop(next_place(fid), "expected ", what, ", found the end of the file");
}

void pass_over_lines(int fid, int count, std::string_view what) {
  Text<1> discarded;
  for (int i = 0; i < count; ++i) read_expected_line(fid, discarded, what);
}

bool step_back(int fid) { return input(fid).step_back(); }

void rewind(int fid) { input(fid).rewind(); }

void go_to_end(int fid) { input(fid).go_to_end(); }

std::string_view name(int fid) { return input(fid).name(); }

long long line_number(int fid) { return input(fid).line_number(); }

std::int64_t position(int fid) { return input(fid).position(); }

long long line_number(int fid, std::int64_t position) { return input(fid).line_number(position); }

Place place(int fid) { return {name(fid), line_number(fid)}; }

Place next_place(int fid) { return {name(fid), line_number(fid) + 1}; }

InputFile& input(int fid) {
  auto& inputs = table().inputs;
  const auto found = inputs.find(fid);
  if (found != inputs.end()) return *found->second.file;
  if (fid != standard_input) {
    fatal_stop({joined("unit ", fid)}, "expected an open file, found none");
  }
  auto& opened = inputs[fid] = {std::make_unique<InputFile>(), 0};
  opened.file->attach(STDIN_FILENO, "standard input");
  return *opened.file;
}

OutputFile& output(int fid) {
  const auto found = table().outputs.find(fid);
  if (found == table().outputs.end()) {
    fatal_stop({joined("unit ", fid)}, "expected a file open for writing, found none");
  }
  return *found->second.file;
}

}  // namespace io
