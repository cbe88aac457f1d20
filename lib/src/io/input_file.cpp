#include "io/input_file.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "io/block.hpp"
#include "io/fatal.hpp"
#include "io/text.hpp"
#include "io/values.hpp"

namespace io {

namespace {

// A free-form record must lie in memory whole, and so must what comes through a pipe.
constexpr std::size_t largest_held = std::size_t{64} * 1024 * 1024;

std::string_view without_line_end(std::string_view record) {
  if (!record.empty() && record.back() == '\n') {
    record.remove_suffix(1);
    if (!record.empty() && record.back() == '\r') record.remove_suffix(1);
  }
  return record;
}

}  // namespace

int InputFile::open(const std::string& name) {
  // Without O_NONBLOCK a named pipe that nobody writes to would hang the run here.
  const int descriptor = ::open(name.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (descriptor < 0) return errno;
  struct stat status {};
  attach(descriptor, name);
  owned_ = true;
  if (::fstat(descriptor, &status) != 0) return errno;
  if (S_ISDIR(status.st_mode)) return EISDIR;
  seekable_ = S_ISREG(status.st_mode);
  if (!seekable_) ::fcntl(descriptor, F_SETFL, 0);
  return 0;
}

InputFile::~InputFile() {
  if (owned_) ::close(descriptor_);
}

void InputFile::reserve(std::size_t size) {
  if (capacity_ >= size) return;
  // Not cleared: a small file touches no more of a block than it fills.
  auto larger = std::make_unique_for_overwrite<char[]>(size);
  std::copy_n(buffer_.get(), used_, larger.get());
  buffer_ = std::move(larger);
  capacity_ = size;
}

// Reads up to `size` bytes to the given place in the buffer: all that a regular file has there, or
// what a pipe gives at once.
std::size_t InputFile::read_into(std::size_t place, std::size_t size, std::int64_t offset) {
  std::size_t total = 0;
  while (total < size) {
    char* const to = buffer_.get() + place + total;
    const ssize_t got =
        seekable_ ? ::pread(descriptor_, to, size - total, offset + static_cast<off_t>(total))
                  : ::read(descriptor_, to, size - total);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) fatal_stop({name_}, "cannot read: ", strerror(errno));
    total += static_cast<std::size_t>(got);
    if (got == 0 || !seekable_) break;
  }
  return total;
}

// Loads a window that begins at `offset`. What is no regular file is never dropped from the buffer.
void InputFile::load(std::int64_t offset) {
  if (!seekable_) return;
  reserve(block_size);
  start_ = offset;
  used_ = read_into(0, capacity_, offset);
  at_end_ = used_ < capacity_;
}

// Brings more of the file behind the unread part of the window, unless its end is there.
void InputFile::load_more() {
  if (at_end_) return;
  if (seekable_) {
    const std::string_view kept = ahead();
    std::copy(kept.begin(), kept.end(), buffer_.get());
    start_ = next_;
    used_ = kept.size();
  } else if (used_ > largest_held) {
    fatal_stop({name_}, "expected a regular file or at most 64 MiB from a pipe, found more");
  }
  reserve(std::max(block_size, 2 * used_));
  const std::size_t wanted = capacity_ - used_;
  const std::size_t got = read_into(used_, wanted, start_ + static_cast<std::int64_t>(used_));
  used_ += got;
  at_end_ = seekable_ ? got < wanted : got == 0;
}

int InputFile::read_record(std::string_view& record) {
  std::size_t searched = 0;
  for (;;) {
    const std::string_view text = ahead();
    const std::size_t line_end = text.find('\n', searched);
    if (line_end != std::string_view::npos || (at_end_ && !text.empty())) {
      const std::string_view whole =
          text.substr(0, line_end == std::string_view::npos ? text.size() : line_end + 1);
      next_ += static_cast<std::int64_t>(whole.size());
      record = without_line_end(whole);
      last_record_open_ = line_end == std::string_view::npos;
      return read_ok;
    }
    if (at_end_) {
      hit_end_ = true;
      return end_of_file;
    }
    if (text.size() > largest_held) {
      fatal_stop({name_, line_number() + 1},
                 "expected a line of at most 64 MiB, found a longer one");
    }
    searched = text.size();
    load_more();
  }
}

int InputFile::read_line(std::span<char> line) {
  continued_ = -1;
  // Two characters more than the line takes tell a line end of two bytes apart from content.
  while (ahead().size() < line.size() + 2 && !at_end_ &&
         ahead().find('\n') == std::string_view::npos) {
    load_more();
  }
  const std::string_view head = ahead().substr(0, line.size() + 2);
  if (head.empty()) {
    hit_end_ = true;
    return end_of_file;
  }
  assign(line, without_line_end(head.substr(0, std::min(head.find('\n'), head.size()) + 1)));
  for (;;) {  // on to the next record, without holding this one
    const std::size_t line_end = ahead().find('\n');
    const bool found = line_end != std::string_view::npos;
    next_ += static_cast<std::int64_t>(found ? line_end + 1 : ahead().size());
    if (found || at_end_) return read_ok;
    load_more();
  }
}

bool InputFile::step_back() {
  if (hit_end_) {
    hit_end_ = false;
    return true;
  }
  if (next_ == 0) return false;
  std::int64_t end = next_ - 1;  // the record's own line end is not the one looked for
  for (;;) {
    const auto size = static_cast<std::size_t>(std::max<std::int64_t>(end - start_, 0));
    const std::size_t line_end = window().substr(0, size).rfind('\n');
    if (line_end != std::string_view::npos || start_ == 0) {
      next_ = start_ + static_cast<std::int64_t>(line_end + 1);  // none is found: 0
      return true;
    }
    end = std::min(end, start_);
    load_around(end);
  }
}

void InputFile::rewind() {
  continued_ = -1;
  next_ = 0;
  hit_end_ = false;
  if (start_ != 0) load(0);
}

void InputFile::go_to_end() {
  while (!seekable_ && !at_end_) load_more();
  next_ = seekable_ ? ::lseek(descriptor_, 0, SEEK_END) : static_cast<std::int64_t>(used_);
  hit_end_ = false;
  load_around(next_);
}

// Loads a window for reading backwards from `end`, and the line there forwards.
void InputFile::load_around(std::int64_t end) {
  constexpr std::int64_t behind = block_size / 4;
  const auto size = static_cast<std::int64_t>(std::max(capacity_, block_size));
  load(std::max<std::int64_t>(0, end - (size - behind)));
}

// The part of the window ahead that ends with a whole record; loads more until there is one or
// the window has no room for it (then the part is empty, as it is at the end of the file).
std::string_view InputFile::complete_records() {
  for (;;) {
    const std::string_view text = ahead();
    if (at_end_) return text;
    const std::size_t line_end = text.rfind('\n');
    if (line_end != std::string_view::npos) return text.substr(0, line_end + 1);
    if (text.size() >= block_size) return {};
    load_more();
  }
}

// Where the first of the records begins that holds `word` within its first `capacity` characters;
// npos when none does.
std::size_t InputFile::find_in_records(std::string_view records, std::string_view word,
                                       bool any_case, std::size_t capacity) {
  if (any_case) {
    lowered_.resize(records.size());
    std::transform(records.begin(), records.end(), lowered_.begin(), lowered);
    records = {lowered_.data(), lowered_.size()};
  }
  for (std::size_t from = 0; from < records.size();) {
    const void* const hit =
        ::memmem(records.data() + from, records.size() - from, word.data(), word.size());
    if (hit == nullptr) break;
    const auto place = static_cast<std::size_t>(static_cast<const char*>(hit) - records.data());
    const std::size_t begin = records.substr(0, place).rfind('\n') + 1;
    if (place - begin + word.size() <= capacity) return begin;
    from = std::min(records.find('\n', place), records.size());
  }
  return records.npos;
}

int InputFile::read_line_holding(std::string_view word, bool any_case, std::span<char> line) {
  for (;;) {
    const std::string_view records = complete_records();
    if (records.empty()) {
      // The end of the file, or a record too long for the window: read it by itself.
      if (read_line(line) != read_ok) return end_of_file;
      std::string text(view(line));
      if (any_case) std::transform(text.begin(), text.end(), text.begin(), lowered);
      if (text.find(word) != std::string::npos) return read_ok;
      continue;
    }
    const std::size_t found = find_in_records(records, word, any_case, line.size());
    const bool is_found = found != records.npos;
    // Without a match the line becomes the last of them.
    const std::size_t last = records.substr(0, records.size() - 1).rfind('\n') + 1;
    next_ += static_cast<std::int64_t>(is_found ? found : last);
    const int status = read_line(line);
    if (is_found) return status;
  }
}

long long InputFile::line_number(std::int64_t position) {
  if (position < counted_to_) counted_to_ = counted_ = 0;
  char block[4096];
  std::string_view text;
  while (counted_to_ < position) {
    if (counted_to_ >= start_ && counted_to_ < start_ + static_cast<std::int64_t>(used_)) {
      text = window().substr(static_cast<std::size_t>(counted_to_ - start_));
    } else {
      const ssize_t got = ::pread(descriptor_, block, sizeof block, counted_to_);
      if (got <= 0) break;  // the file has shrunk
      text = {block, static_cast<std::size_t>(got)};
    }
    text = text.substr(0, static_cast<std::size_t>(position - counted_to_));
    counted_ += std::count(text.begin(), text.end(), '\n');
    counted_to_ += static_cast<std::int64_t>(text.size());
    last_counted_ = text.back();
  }
  // The last line may lack its end.
  return counted_ + (counted_to_ > 0 && last_counted_ != '\n' ? 1 : 0);
}

}  // namespace io
