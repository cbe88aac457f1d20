// A file that is written out of sight and takes its place when it is complete, alone or together
// with others. Whatever fails before that leaves the file that stood there as it was.
#pragma once

#include <sys/types.h>

#include <memory>
#include <span>
#include <string>

namespace io {

class Replacement {
 public:
  Replacement() = default;
  Replacement(const Replacement&) = delete;
  Replacement& operator=(const Replacement&) = delete;
  // What was not put in place disappears, and what stood there before it.
  ~Replacement();

  // Opens a file to write what `name` is to hold. The result is 0 or the error number of a name
  // that cannot be written. The content reaches its place in one of three ways:
  //   - rename: It is written to an anonymous file in the folder of its destination (to a file with
  //     a hidden name if the file system has no anonymous ones), which then takes the place and the
  //     permission bits of the old file. Links are followed: the file to which they lead is
  //     replaced.
  //   - write_through: The name leads to a device or to a pipe that somebody reads. The content is
  //     kept in memory and written when it is complete.
  //   - write_in_place: The file can be written, but its folder takes no new file, or none with the
  //     old one's permission bits. The content is kept in memory, and so is the old content while
  //     the file is written.
  int begin(const std::string& name);

  // The descriptor to write to.
  int descriptor() const { return descriptor_; }
  const std::string& name() const { return name_; }

  // Says that nothing more will be written. The result is 0 or the error number.
  int complete();

 private:
  friend void put_in_place(std::span<const std::unique_ptr<Replacement>> files);
  enum class Way { rename, write_through, write_in_place };
  // How it came to its place, as it is to be taken back.
  enum class Placed { not_yet, created, exchanged, overwritten };

  int begin_renaming(bool exists, mode_t mode);
  int begin_writing(Way way);
  void drop();
  int link_hidden(int first);
  int keep_old();
  int copy_through();
  int swap_in();
  void swap_back();

  std::string name_;    // as the program calls it
  std::string target_;  // the file to which it leads
  std::string hidden_;  // a hidden name in the target's folder; empty where there is none
  Way way_ = Way::rename;
  bool replaces_ = false;   // something stood there at the beginning
  bool anonymous_ = false;  // the descriptor is the only way to the content
  Placed placed_ = Placed::not_yet;
  int descriptor_ = -1;
  int destination_ = -1;  // of a device or pipe, open from the beginning
  int old_content_ = -1;  // of a file that is written itself, in memory
};

// Puts complete files in place in their order, all or none: a failure is a fatal stop that takes
// back those already in place. What goes to a device or pipe goes first, since only it cannot be
// taken back.
// Signals wait until it is done, and so does another program that does this in the same folder.
void put_in_place(std::span<const std::unique_ptr<Replacement>> files);

}  // namespace io
