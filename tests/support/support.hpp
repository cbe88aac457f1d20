// Temporary folders, whole files and child processes for the tests.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace support {

inline constexpr int unit = 20;  // of the file that a test reads

// A folder of its own that becomes the working folder, until the end of the test.
class TempFolder {
 public:
  TempFolder();
  ~TempFolder();
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;
  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
  std::filesystem::path before_;
};

void write_file(const std::filesystem::path& path, const std::string& content);
std::string read_file(const std::filesystem::path& path);

// Replaces the first `from` in a file; the text must be there.
void edit_file(const std::filesystem::path& path, const std::string& from, const std::string& to);

struct Outcome {
  int status = -1;  // exit status, or 1000 + the number of the signal that ended the process
  std::string out;
  std::string err;
};

// Runs a program in the working folder, with nothing on standard input.
Outcome run(const std::vector<std::string>& command);

// Whether the body comes to a fatal stop with this status, and what it shows until then ends with
// its line: "FILE:LINE: MESSAGE", which has to hold the text.
testing::AssertionResult stops(int status, const std::string& text,
                               const std::function<void()>& body);

}  // namespace support
