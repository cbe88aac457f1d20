// A whole run in a job directory in memory. The input is the files of the directory, each behind a
// line "=== NAME". All three results come to stand there, or none, and no other file.
#include <dirent.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <map>

#include "harness.hpp"
#include "zandor/phases.hpp"

namespace {

constexpr std::string_view mark = "=== ";
constexpr std::size_t most_files = 100;
constexpr std::array<std::string_view, 3> results = {"zandor-es.out", "vib.xyz", "vibp.xyz"};

using Directory = std::map<std::string, std::string_view>;

bool is_usable(const std::string& name) {
  return !name.empty() && name.size() <= 200 && name[0] != '.' &&
         name.find_first_of(std::string_view("/\0", 2)) == std::string::npos;
}

// The files of an input; a name that is no plain one drops its file.
Directory split(std::string_view input) {
  Directory files;
  while (input.starts_with(mark) && files.size() < most_files) {
    const std::size_t line_end = std::min(input.find('\n'), input.size());
    const std::string name(input.substr(mark.size(), line_end - mark.size()));
    input.remove_prefix(std::min(line_end + 1, input.size()));
    // The mark of the next file stands at the beginning of a line.
    const std::size_t before = input.find("\n=== ");
    const std::size_t end = input.starts_with(mark)            ? 0
                            : before == std::string_view::npos ? input.size()
                                                               : before + 1;
    if (is_usable(name)) files[name] = input.substr(0, end);
    input.remove_prefix(end);
  }
  return files;
}

// Removes everything from the working folder and counts the results that stood there.
int remove_all(const Directory& files) {
  int found = 0;
  DIR* const folder = ::opendir(".");
  while (const dirent* const entry = ::readdir(folder)) {
    const std::string name = entry->d_name;
    if (name == "." || name == "..") continue;
    ::unlink(name.c_str());
    if (files.count(name) != 0 || name == "result.log") continue;
    const bool result = std::find(results.begin(), results.end(), name) != results.end();
    fuzz::require(result, "a file left behind: " + name);
    ++found;
  }
  ::closedir(folder);
  return found;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::enter_memory_folder();
  Directory files = split({reinterpret_cast<const char*>(data), size});
  for (const std::string_view result : results) files.erase(std::string(result));
  for (const auto& [name, content] : files) fuzz::write_file(name, content);
  const auto stop = fuzz::run([] {
    const char* const argv[] = {"zandor_gather", "control.inp"};
    zandor::run_phases(2, argv);
  });
  const int expected = stop ? 0 : static_cast<int>(results.size());
  fuzz::require(remove_all(files) == expected, "some of the results, or results and a stop");
  return 0;
}
