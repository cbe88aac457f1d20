#include "displace/folder.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>  // for rename
#include <cstring>
#include <filesystem>
#include <fstream>

#include "io/hidden_names.hpp"
#include "io/write_all.hpp"
#include "zandor/run_data.hpp"

namespace displace {

namespace {

namespace fs = std::filesystem;

[[noreturn]] void stop_at(const std::string& name, const char* failed, int error) {
  io::fatal_stop({name}, std::string(failed) + std::strerror(error));
}

// A folder out of sight, which disappears with all that is in it unless it became another.
class HiddenFolder {
 public:
  HiddenFolder(const std::string& parent, const std::string& wanted) {
    for (int i = 0; i < io::most_hidden_names; ++i) {
      path_ = io::hidden_name(parent, i);
      if (::mkdir(path_.c_str(), 0777) == 0) return;
      if (errno != EEXIST) break;
    }
    const int error = errno;
    path_.clear();
    stop_at(wanted, "cannot write: ", error);
  }
  ~HiddenFolder() {
    std::error_code ignored;
    if (!path_.empty()) fs::remove_all(path_, ignored);
  }
  HiddenFolder(const HiddenFolder&) = delete;
  HiddenFolder& operator=(const HiddenFolder&) = delete;

  const std::string& path() const { return path_; }
  void forget() { path_.clear(); }

 private:
  std::string path_;
};

// Writes a new file; `shown` is its name in messages.
void write_file(const std::string& name, const std::string& content, const std::string& shown) {
  const int file = ::open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
  if (file < 0) stop_at(shown, "cannot write: ", errno);
  const int error = io::write_all(file, content);
  if (::close(file) != 0 && error == 0) stop_at(shown, "cannot close: ", errno);
  if (error != 0) stop_at(shown, "cannot write: ", error);
}

std::string parent_of(const std::string& folder) {
  const fs::path parent = fs::path(folder).parent_path();
  return parent.empty() ? "." : parent.string();
}

// What stands in quotes behind `origin` in files.out: how the inputs of an earlier call end.
bool find_origin(const std::string& folder, std::string& ending) {
  std::ifstream list(fs::path(folder) / zandor::job_list_name);
  std::string line;
  for (int i = 0; i < 10 && std::getline(list, line); ++i) {
    if (!line.starts_with(origin) || !line.ends_with('\'')) continue;
    ending = line.substr(std::strlen(origin), line.size() - std::strlen(origin) - 1);
    return true;
  }
  return false;
}

// The inputs that an earlier call wrote: those of the names in its list.
std::vector<std::string> earlier_inputs(const std::string& folder, const std::string& ending) {
  std::vector<std::string> names;
  std::ifstream list(fs::path(folder) / zandor::job_list_name);
  std::string line, number, name;
  while (std::getline(list, line) && !line.starts_with(" number  name")) {
  }
  while (list >> number >> name && std::getline(list, line)) {
    for (const std::string& end : {ending, std::string(number == "0" ? ".com" : ending)}) {
      const std::string input = "coord-" + name + end;
      if (name.find('/') == name.npos && fs::is_regular_file(fs::path(folder) / input)) {
        names.push_back(input);
      }
    }
  }
  std::sort(names.begin(), names.end());
  names.erase(std::unique(names.begin(), names.end()), names.end());
  return names;
}

// Renames that are taken back where one of them fails.
class Renames {
 public:
  bool add(const fs::path& from, const fs::path& to) {
    if (::rename(from.c_str(), to.c_str()) != 0) return false;
    done_.emplace_back(from, to);
    return true;
  }
  void take_back() {
    const int error = errno;
    for (auto r = done_.rbegin(); r != done_.rend(); ++r)
      ::rename(r->second.c_str(), r->first.c_str());
    errno = error;
  }

 private:
  std::vector<std::pair<fs::path, fs::path>> done_;
};

// Moves the files from the hidden folder into the one that holds it, and what an earlier call left
// there out of it.
void put_in_place(const std::string& folder, const std::string& hidden,
                  const std::vector<File>& files, const std::vector<std::string>& earlier) {
  Renames renames;
  const fs::path inside = hidden, old = inside / "old";
  const auto move = [&](const fs::path& from, const fs::path& to) {
    if (renames.add(from, to)) return;
    renames.take_back();
    stop_at((fs::path(folder) / to.filename()).string(), "cannot put in place: ", errno);
  };
  if (::mkdir(old.c_str(), 0777) != 0) stop_at(folder, "cannot write: ", errno);
  for (const std::string& name : earlier) move(fs::path(folder) / name, old / name);
  for (const auto& [name, content] : files) {
    const fs::path place = fs::path(folder) / name;
    if (fs::exists(fs::symlink_status(place))) move(place, old / name);
    move(inside / name, place);
  }
}

// The inputs of an earlier call that are to go; a folder that holds others' files is a fatal stop.
std::vector<std::string> look_into(const std::string& folder, bool force) {
  std::error_code error;
  const fs::directory_iterator entries(folder, error);
  if (error) stop_at(folder, "cannot write: ", error.value());
  if (entries == fs::directory_iterator()) return {};
  std::string ending;
  if (!force)
    io::fatal_stop({folder}, "expected a folder that is empty or not there (see --force)");
  if (find_origin(folder, ending)) return earlier_inputs(folder, ending);
  io::fatal_stop({folder}, "expected a folder that zandor_displace wrote, found another");
}

}  // namespace

void write_folder(const std::string& folder, const std::vector<File>& files, bool force) {
  const io::SignalsHeld held;
  std::string name = folder;
  while (name.size() > 1 && name.back() == '/') name.pop_back();
  const bool is_there = fs::exists(fs::symlink_status(name));
  const auto earlier = is_there ? look_into(name, force) : std::vector<std::string>{};
  HiddenFolder hidden(is_there ? name : parent_of(name), folder);
  for (const auto& [file, content] : files) {
    write_file(hidden.path() + "/" + file, content, folder + "/" + file);
  }
  if (is_there) {
    put_in_place(name, hidden.path(), files, earlier);
  } else if (::rename(hidden.path().c_str(), name.c_str()) != 0) {
    stop_at(folder, "cannot put in place: ", errno);
  } else {
    hidden.forget();
  }
}

}  // namespace displace
