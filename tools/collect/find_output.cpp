#include "collect/find_output.hpp"

#include <algorithm>
#include <filesystem>

#include "collect/output_lines.hpp"

namespace collect {

namespace {

namespace fs = std::filesystem;

constexpr const char* log_mark = " zandor_collect found these results elsewhere: ";

// The errors of the file system tell that there is no such file, which is all that is asked.
bool is_file(const fs::path& path) {
  std::error_code error;
  return fs::is_regular_file(path, error);
}

fs::file_time_type time_of(const std::string& file) {
  std::error_code error;
  return fs::last_write_time(file, error);
}

bool is_for_the_run(const std::string& file) {
  OutputLines lines(file);
  return lines.next() && lines.begins_with(log_mark);
}

std::vector<std::string> files_in(const fs::path& folder,
                                  const std::vector<std::string>& suffixes) {
  std::vector<std::string> files;
  std::error_code error;
  for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
       entry.increment(error)) {
    const std::string name = entry->path().string();
    if (is_file(entry->path()) && std::any_of(suffixes.begin(), suffixes.end(),
                                              [&](const auto& s) { return name.ends_with(s); })) {
      files.push_back(name);
    }
  }
  return files;
}

}  // namespace

FoundOutput find_output(const std::string& job_name, const std::vector<std::string>& suffixes) {
  std::vector<std::string> files;
  const std::string folder = "coord-" + job_name;
  for (const std::string& suffix : suffixes) {
    std::string file = folder;
    file += suffix;
    if (is_file(file) && !is_for_the_run(file)) files.push_back(file);
  }
  const std::vector<std::string> inside = files_in(folder, suffixes);
  if (inside.size() == 1) files.push_back(inside.front());
  std::stable_sort(files.begin(), files.end(), [](const std::string& a, const std::string& b) {
    return time_of(a) > time_of(b);
  });
  for (const std::string& file : files) {
    if (const Reader* const reader = find_reader(file)) return {file, reader};
  }
  return {files.empty() ? "" : files.front(), nullptr};
}

std::string log_text(const std::string& source, const std::string& program) {
  return log_mark + source + "\n " + program + "\n";
}

}  // namespace collect
