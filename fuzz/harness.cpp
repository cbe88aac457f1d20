#include "harness.hpp"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "io/process.hpp"
#include "io/units.hpp"
#include "io/write_all.hpp"

const char* const io::program_name = "fuzz";

namespace fuzz {

namespace {

constexpr int most_units = 110;  // above those of the program and the first that the library takes

void require_one_line(std::string_view message) {
  require(!message.empty(), "an empty message");
  require(io::printable(message) == message, "a message that is not one printable line");
}

}  // namespace

void require(bool holds, std::string_view finding) {
  if (holds) return;
  std::fprintf(stderr, "FINDING: %s\n", std::string(finding).c_str());
  std::abort();
}

std::optional<io::Stop> run(const std::function<void()>& body) {
  bool said = false, printed = false;
  const auto warn = [](const io::Place&, std::string_view message) { require_one_line(message); };
  const auto report = [&](const io::Place&, std::string_view message) {
    require_one_line(message);
    said = true;
  };
  const io::SinkScope sink(
      {.report = report, .warn = warn, .print_line = [&](std::string_view) { printed = true; }});
  auto stop = io::collect(body);
  if (stop) {
    require(stop->status == 1 || stop->status == 2, "another status");
    require(stop->status == 2 || printed, "status 1 without a line");
    require(said || printed || !stop->message.empty(), "a stop that says nothing");
    if (!stop->message.empty()) require_one_line(stop->message);
  }
  io::close(io::standard_input);
  for (int fid = 0; fid < most_units; ++fid) {
    if (io::is_open(fid)) require(false, "unit " + std::to_string(fid) + " left open");
  }
  return stop;
}

MemoryFile::MemoryFile() : descriptor_(::memfd_create("fuzz", 0)) {
  require(descriptor_ >= 0, "no file in memory can be had");
  name_ = "/proc/self/fd/" + std::to_string(descriptor_);
}

void MemoryFile::become_standard_input() const {
  ::lseek(descriptor_, 0, SEEK_SET);
  ::dup2(descriptor_, STDIN_FILENO);
}

void MemoryFile::set(std::string_view content) const {
  const auto size = static_cast<off_t>(content.size());
  require(::ftruncate(descriptor_, size) == 0 &&
              ::pwrite(descriptor_, content.data(), content.size(), 0) == size,
          "a file in memory cannot be written");
}

void enter_memory_folder() {
  static std::string folder;
  if (!folder.empty()) return;
  const char* const parent = std::getenv("TMPDIR");
  folder = std::string(parent != nullptr ? parent : "/dev/shm") + "/zandor-fuzz-XXXXXX";
  require(::mkdtemp(folder.data()) != nullptr && ::chdir(folder.c_str()) == 0,
          "no folder in memory can be had");
  std::atexit([] {
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
  });
}

void write_file(const std::string& name, std::string_view content) {
  const int descriptor = ::open(name.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
  require(descriptor >= 0 && io::write_all(descriptor, content) == 0, "cannot write " + name);
  ::close(descriptor);
}

std::string with_crlf(std::string_view text) {
  std::string result;
  for (const char c : text) {
    if (c == '\n') result += '\r';
    result += c;
  }
  return result;
}

}  // namespace fuzz
