// A sequential text file being read: records (lines without their ends), a step back, a search.
// A regular file of any size is seen through one window of bounded size; a log of several GB is
// never in memory whole. A pipe or device is read piece by piece as well, but what was read is
// kept, since it cannot be read again, and so is limited.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace io {

// Read status: success, or nothing left to read. A failing device is a fatal stop.
inline constexpr int read_ok = 0;
inline constexpr int end_of_file = -1;

class InputFile {
 public:
  InputFile() = default;
  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;
  ~InputFile();

  // Opens an existing file, once; the result is 0 or the error number (EISDIR for a directory).
  int open(const std::string& name);
  // Reads from an open descriptor, which stays open; in place of open().
  void attach(int descriptor, const std::string& name) {
    descriptor_ = descriptor;
    name_ = name;
  }

  // Places the file behind its last record.
  void go_to_end();
  void rewind();

  // Reads a record into `line` (cut or padded with blanks); unchanged at the end of the file.
  int read_line(std::span<char> line);
  // Delivers a whole record; the view holds until the next call on this file.
  int read_record(std::string_view& record);
  // Goes back by one record. After a read that hit the end it only clears that condition; at the
  // first record it changes nothing. False when there was no record to go back to.
  bool step_back();

  // Reads on to the next record that holds `word` within its first line.size() characters, as
  // repeated read_line() calls would; with `any_case` the word is given in small letters and
  // matches either case. The status is that of the last read.
  int read_line_holding(std::string_view word, bool any_case, std::span<char> line);

  // For free-form reads in a row: notes that one of them goes on to a further record because the
  // one read last held too few items, and gives the number of the record with which the first such
  // read began; 0 for none. Any other way of reading begins anew.
  void note_continuation() {
    if (continued_ < 0) continued_ = next_;
  }
  long long read_began() { return continued_ < 0 ? 0 : line_number(continued_); }

  // Whether the record read last is the last of its file and lacks its line end.
  bool last_record_is_open() const { return last_record_open_; }

  const std::string& name() const { return name_; }
  // A place between records, and the number of the record that ends there. The lines are counted
  // only when asked for, which may read the file again.
  std::int64_t position() const { return next_; }
  long long line_number(std::int64_t position);
  // The number of the record that was read last.
  long long line_number() { return line_number(next_); }

 private:
  std::string_view window() const { return {buffer_.get(), used_}; }
  std::string_view ahead() const {
    return window().substr(static_cast<std::size_t>(next_ - start_));
  }
  void load(std::int64_t offset);
  void load_around(std::int64_t end);
  void load_more();
  std::size_t read_into(std::size_t place, std::size_t size, std::int64_t offset);
  void reserve(std::size_t size);
  std::string_view complete_records();
  std::size_t find_in_records(std::string_view records, std::string_view word, bool any_case,
                              std::size_t capacity);

  int descriptor_ = -1;
  bool owned_ = false;
  bool seekable_ = false;
  std::string name_;
  std::unique_ptr<char[]> buffer_;
  std::size_t capacity_ = 0;
  std::vector<char> lowered_;  // a copy of the records being searched in any case
  std::size_t used_ = 0;       // bytes of the file in the buffer
  std::int64_t start_ = 0;     // file offset of the first byte in the buffer
  std::int64_t next_ = 0;      // file offset of the next record
  bool at_end_ = false;        // no byte of the file lies behind the window
  bool hit_end_ = false;       // the last read found nothing left
  bool last_record_open_ = false;
  std::int64_t continued_ = -1;  // end of the record with which the read noted above began
  std::int64_t counted_to_ = 0;  // line ends before this offset have been counted
  long long counted_ = 0;
  char last_counted_ = '\n';
};

}  // namespace io
