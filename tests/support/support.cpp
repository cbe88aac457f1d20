#include "support/support.hpp"

#include <stdlib.h>
#include <sys/wait.h>

#include <cstdlib>
#include <fstream>
#include <iterator>

#include "io/process.hpp"

const char* const io::program_name = "test";

namespace support {

namespace fs = std::filesystem;

TempFolder::TempFolder() : before_(fs::current_path()) {
  std::string name = (fs::temp_directory_path() / "zandor-XXXXXX").string();
  if (::mkdtemp(name.data()) == nullptr) std::abort();
  path_ = name;
  fs::current_path(path_);
}

TempFolder::~TempFolder() {
  fs::current_path(before_);
  fs::remove_all(path_);
}

void write_file(const fs::path& path, const std::string& content) {
  std::ofstream(path, std::ios::binary) << content;
}

std::string read_file(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

void edit_file(const fs::path& path, const std::string& from, const std::string& to) {
  std::string text = read_file(path);
  const std::size_t at = text.find(from);
  ASSERT_NE(at, std::string::npos) << path << " holds no '" << from << "'";
  write_file(path, text.replace(at, from.size(), to));
}

Outcome run(const std::vector<std::string>& command) {
  std::string line;
  for (const std::string& word : command) line += "'" + word + "' ";
  const int raw = std::system((line + "</dev/null >stdout.txt 2>stderr.txt").c_str());
  Outcome outcome;
  outcome.out = read_file("stdout.txt");
  outcome.err = read_file("stderr.txt");
  outcome.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : 1000 + WTERMSIG(raw);
  if (outcome.status > 128 && outcome.status < 1000) outcome.status += 1000 - 128;  // by the shell
  return outcome;
}

testing::AssertionResult stops(int status, const std::string& text,
                               const std::function<void()>& body) {
  std::string said;
  const auto say = [&](const io::Place& place, std::string_view message) {
    said.append(place.file) += ":" + std::to_string(place.line) + ": ";
    said.append(message) += "\n";
  };
  const io::SinkScope sink({.report = say, .warn = say, .print_line = [&](std::string_view line) {
                              said.append(line) += "\n";
                            }});
  const auto stop = io::collect(body);
  if (!stop) return testing::AssertionFailure() << "went on, and said: " << said;
  io::report(*stop);
  if (stop->status == status && said.find(text) != std::string::npos) {
    return testing::AssertionSuccess();
  }
  return testing::AssertionFailure() << "status " << stop->status << ", said: " << said;
}

}  // namespace support
