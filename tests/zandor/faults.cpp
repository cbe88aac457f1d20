// Preloaded into the program under test: lets one of its calls that concern files fail, or sends it
// a signal at that call. Settings come by the environment:
//   FAULT_CALL     which call, counted from 1, or from the first file without a name that is asked
//   for
//                  if FAULT_WRITING is 1
//   FAULT_ERROR    the error number with which it fails; negative: the signal to send before it
//   FAULT_UNNAMED  the error number with which files without a name can never be had
//   FAULT_MODES    the error number with which permission bits can never be set
//   FAULT_MARK     a file that is created when the call comes
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>

namespace {

int setting(const char* name) {
  const char* const text = std::getenv(name);
  return text == nullptr ? 0 : std::atoi(text);
}

bool writing = false;
bool finished = false;

// Whether the call that is about to be made is to fail; errno then says why.
bool fails() {
  static int calls = 0;
  if (finished || (!writing && setting("FAULT_WRITING") == 1)) return false;
  if (++calls != setting("FAULT_CALL")) return false;
  const long mark = ::syscall(SYS_openat, AT_FDCWD, std::getenv("FAULT_MARK"), O_CREAT, 0600);
  ::syscall(SYS_close, mark);
  const int error = setting("FAULT_ERROR");
  if (error < 0) ::raise(-error);
  errno = error;
  return error > 0;
}

template <class... Arguments>
int call(long number, Arguments... arguments) {
  return fails() ? -1 : static_cast<int>(::syscall(number, arguments...));
}

}  // namespace

extern "C" {

int open(const char* path, int flags, ...) {
  if (std::strstr(path, ".gcda") != nullptr) finished = true;  // where coverage is measured
  if ((flags & O_TMPFILE) == O_TMPFILE) {
    writing = true;
    if ((errno = setting("FAULT_UNNAMED")) != 0) return -1;
  }
  return call(SYS_openat, AT_FDCWD, path, flags, 0644);
}
int open64(const char* path, int flags, ...) { return open(path, flags); }
ssize_t write(int file, const void* data, size_t size) {
  return fails() ? -1 : ::syscall(SYS_write, file, data, size);
}
// A descriptor is gone even where closing it fails, and so is the content of a file that is not in
// its place yet: some file systems find out only then that it does not fit.
int close(int file) {
  const bool failed = fails();
  const int error = errno;
  struct stat status {};
  const bool unfinished = ::fstat(file, &status) == 0 && S_ISREG(status.st_mode) &&
                          (status.st_nlink == 0 || setting("FAULT_UNNAMED") == EOPNOTSUPP);
  if (failed && unfinished) ::syscall(SYS_ftruncate, file, 0);
  const auto result = static_cast<int>(::syscall(SYS_close, file));
  if (failed) errno = error;
  return failed ? -1 : result;
}
int linkat(int from, const char* old_path, int to, const char* new_path, int flags) {
  return call(SYS_linkat, from, old_path, to, new_path, flags);
}
int rename(const char* from, const char* to) { return call(SYS_rename, from, to); }
int renameat2(int from, const char* old_path, int to, const char* new_path, unsigned flags) {
  return call(SYS_renameat2, from, old_path, to, new_path, flags);
}
int memfd_create(const char* name, unsigned flags) { return call(SYS_memfd_create, name, flags); }
int dup(int file) { return call(SYS_dup, file); }
int fchmod(int file, mode_t mode) {
  if ((errno = setting("FAULT_MODES")) != 0) return -1;
  return call(SYS_fchmod, file, mode);
}
}
