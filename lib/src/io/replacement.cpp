#include "io/replacement.hpp"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <utility>

#include "io/fatal.hpp"
#include "io/hidden_names.hpp"
#include "io/write_all.hpp"

namespace io {

namespace {

std::string folder_of(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

// Follows links to the file that is to be replaced, which need not exist. False where one of them
// is an open descriptor (/dev/stdout): that file belongs to whoever opened it.
bool follow_links(std::string& path) {
  constexpr int most_links = 40;  // as the system itself follows
  for (int i = 0; i < most_links; ++i) {
    struct stat status {};
    if (::lstat(path.c_str(), &status) != 0 || !S_ISLNK(status.st_mode)) return true;
    if (path.starts_with("/proc/")) return false;
    char text[4096];
    const ssize_t size = ::readlink(path.c_str(), text, sizeof text);
    if (size <= 0) return true;
    const std::string link(text, static_cast<std::size_t>(size));
    path = link.front() == '/' ? link : folder_of(path).append("/").append(link);
  }
  return true;
}

// Whether a folder takes no new file, though files in it may be written.
bool is_closed_folder(int error) { return error == EACCES || error == EPERM || error == EROFS; }

std::string path_of_descriptor(int descriptor) {
  return "/proc/self/fd/" + std::to_string(descriptor);
}

// Copies all that stands in a file to another one; the result is 0 or the error number.
int copy_all(int from, int to) {
  if (::lseek(from, 0, SEEK_SET) != 0) return errno;
  char block[65536];
  for (;;) {
    const ssize_t got = ::read(from, block, sizeof block);
    if (got == 0) return 0;
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return errno;
    const int error = write_all(to, {block, static_cast<std::size_t>(got)});
    if (error != 0) return error;
  }
}

// Writes into a file what it held before: all of that, or rather nothing than half of it.
void restore(const std::string& name, int old_content) {
  const int file = ::open(name.c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC);
  int error = old_content < 0 ? EBADF : copy_all(old_content, file);
  if (error != 0) error = ::ftruncate(file, 0);
  ::close(file);
}

// Holds other programs off that put files into the same folder. They need microseconds; one that
// holds the folder for longer has stopped, and is not waited for.
class FolderLock {
 public:
  explicit FolderLock(const std::string& folder)
      : descriptor_(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
    constexpr int most_tries = 200;
    for (int i = 0; i < most_tries && ::flock(descriptor_, LOCK_EX | LOCK_NB) != 0; ++i) {
      if (errno != EWOULDBLOCK) return;  // a file system without such locks
      ::usleep(10000);
    }
  }
  ~FolderLock() {
    if (descriptor_ >= 0) ::close(descriptor_);
  }
  FolderLock(const FolderLock&) = delete;
  FolderLock& operator=(const FolderLock&) = delete;

 private:
  int descriptor_;
};

}  // namespace

Replacement::~Replacement() { drop(); }

void Replacement::drop() {
  if (!hidden_.empty()) remove_hidden(hidden_);
  hidden_.clear();
  for (int* const descriptor : {&descriptor_, &destination_, &old_content_}) {
    if (*descriptor >= 0) ::close(*descriptor);
    *descriptor = -1;
  }
}

int Replacement::begin(const std::string& name) {
  name_ = target_ = name;
  if (name.empty()) return ENOENT;
  struct stat status {};
  const bool exists = ::stat(name.c_str(), &status) == 0;
  if (!exists && errno != ENOENT) return errno;
  if (exists && S_ISDIR(status.st_mode)) return EISDIR;
  if (exists && ::faccessat(AT_FDCWD, name.c_str(), W_OK, AT_EACCESS) != 0) return errno;
  if (exists && !S_ISREG(status.st_mode)) return begin_writing(Way::write_through);
  if (!follow_links(target_)) return begin_writing(Way::write_in_place);
  const int error = begin_renaming(exists, status.st_mode & 07777);
  if (!exists || !is_closed_folder(error)) return error;
  drop();  // what could be had, but not with the old file's permission bits
  return begin_writing(Way::write_in_place);
}

int Replacement::begin_renaming(bool exists, mode_t mode) {
  way_ = Way::rename;
  replaces_ = exists;
  const std::string folder = folder_of(target_);
  // Without /proc an anonymous file could not be given its name.
  static const bool has_proc = ::access("/proc/self/fd", X_OK) == 0;
  anonymous_ = has_proc;
  if (anonymous_) {
    descriptor_ = ::open(folder.c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, 0666);
    anonymous_ = descriptor_ >= 0;
    // These two say that the file system or the system has no such files.
    if (!anonymous_ && errno != EOPNOTSUPP && errno != EISDIR) return errno;
  }
  if (!anonymous_) descriptor_ = open_hidden(folder, hidden_);
  if (descriptor_ < 0) return errno;
  struct stat status {};
  if (!exists || (::fstat(descriptor_, &status) == 0 && (status.st_mode & 07777) == mode)) return 0;
  return ::fchmod(descriptor_, mode) == 0 ? 0 : EPERM;  // as if the folder took no such file
}

int Replacement::begin_writing(Way way) {
  way_ = way;
  anonymous_ = true;
  if (way == Way::write_through) {
    // Without O_NONBLOCK a named pipe that nobody reads would hang the run here.
    destination_ = ::open(name_.c_str(), O_WRONLY | O_CLOEXEC | O_NONBLOCK);
    if (destination_ < 0) return errno;
    ::fcntl(destination_, F_SETFL, 0);
  }
  descriptor_ = ::memfd_create("results", MFD_CLOEXEC);
  return descriptor_ < 0 ? errno : 0;
}

int Replacement::complete() {
  // Some file systems say only when a descriptor is closed that the content did not fit. The one
  // to an anonymous file is still needed, so a second one to it is closed.
  const int closed = anonymous_ ? ::dup(descriptor_) : std::exchange(descriptor_, -1);
  return closed < 0 || ::close(closed) != 0 ? errno : 0;
}

// Gives an anonymous file a hidden name, the first that is free from number `first` on.
int Replacement::link_hidden(int first) {
  const std::string path = path_of_descriptor(descriptor_);
  for (int i = 0; i < most_hidden_names; ++i) {
    const std::string hidden = hidden_name(folder_of(target_), first + i);
    if (::linkat(AT_FDCWD, path.c_str(), AT_FDCWD, hidden.c_str(), AT_SYMLINK_FOLLOW) == 0) {
      hidden_ = hidden;
      return 0;
    }
    if (errno != EEXIST) return errno;
  }
  return EEXIST;
}

// Keeps what stands in the file that is about to be overwritten, to be able to take that back.
int Replacement::keep_old() {
  const int file = ::open(name_.c_str(), O_RDONLY | O_CLOEXEC);
  if (file < 0) return errno == EACCES ? 0 : errno;  // a file that may be written only
  old_content_ = ::memfd_create("old results", MFD_CLOEXEC);
  const int error = old_content_ < 0 ? errno : copy_all(file, old_content_);
  ::close(file);
  return error;
}

// Writes the content to a device, a pipe or a file that cannot be replaced.
int Replacement::copy_through() {
  if (way_ == Way::write_in_place) {
    if (const int error = keep_old(); error != 0) return error;
    destination_ = ::open(name_.c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC);
    if (destination_ < 0) return errno;
    placed_ = Placed::overwritten;
  }
  const int error = copy_all(descriptor_, destination_);
  const int closed = std::exchange(destination_, -1);
  return ::close(closed) != 0 && error == 0 ? errno : error;
}

int Replacement::swap_in() {
  if (anonymous_ && !replaces_) {
    const std::string path = path_of_descriptor(descriptor_);
    if (::linkat(AT_FDCWD, path.c_str(), AT_FDCWD, target_.c_str(), AT_SYMLINK_FOLLOW) == 0) {
      placed_ = Placed::created;
      return 0;
    }
    if (errno != EEXIST) return errno;
    if (const int error = link_hidden(0); error != 0) return error;  // somebody was faster
  }
  if (::renameat2(AT_FDCWD, hidden_.c_str(), AT_FDCWD, target_.c_str(), RENAME_EXCHANGE) == 0) {
    placed_ = Placed::exchanged;
    return 0;
  }
  // Nothing stands there, or the file system cannot exchange: there is then no way back.
  const bool nothing_there = errno == ENOENT;
  if (!nothing_there && errno != EINVAL && errno != ENOSYS) return errno;
  if (::rename(hidden_.c_str(), target_.c_str()) != 0) return errno;
  if (nothing_there) placed_ = Placed::created;
  forget_hidden(hidden_);
  hidden_.clear();
  return 0;
}

void Replacement::swap_back() {
  if (placed_ == Placed::created) ::unlink(target_.c_str());
  if (placed_ == Placed::exchanged) {
    ::renameat2(AT_FDCWD, hidden_.c_str(), AT_FDCWD, target_.c_str(), RENAME_EXCHANGE);
  }
  if (placed_ == Placed::overwritten) restore(name_, old_content_);
}

void put_in_place(std::span<const std::unique_ptr<Replacement>> files) {
  if (files.empty()) return;
  using Way = Replacement::Way;
  const SignalsHeld held;
  const FolderLock lock(folder_of(files.back()->target_));
  const auto stop_at = [&](const Replacement& file, const char* failed, int error) {
    for (const auto& other : files) {
      other->swap_back();
      other->drop();
    }
    fatal_stop({file.name_}, failed, strerror(error));
  };
  for (std::size_t i = 0; i < files.size(); ++i) {
    Replacement& file = *files[i];
    if (file.way_ != Way::rename || !file.replaces_ || !file.anonymous_) continue;
    const int error = file.link_hidden(static_cast<int>(i));
    if (error != 0) stop_at(file, "cannot put in place: ", error);
  }
  for (const auto& file : files) {
    if (file->way_ == Way::rename) continue;
    if (const int error = file->copy_through()) stop_at(*file, "cannot write: ", error);
  }
  for (const auto& file : files) {
    if (file->way_ != Way::rename) continue;
    if (const int error = file->swap_in()) stop_at(*file, "cannot put in place: ", error);
  }
  for (const auto& file : files) file->drop();
}

}  // namespace io
