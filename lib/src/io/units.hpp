// The table of units: integer handles of open sequential text files. It is the only state that
// the library keeps between calls.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "io/fatal.hpp"
#include "io/input_file.hpp"
#include "io/output_file.hpp"

namespace io {

// The unit of standard input: always connected, read from where its last reader left it.
inline constexpr int standard_input = 5;

// Opens a file that must exist for reading. Trailing blanks of a name are not part of it. A file
// that cannot be opened, or a directory, is a fatal stop with the system's reason and, in brackets,
// the hint.
void open_existing(int fid, std::string_view name, std::string_view hint = {});

// The same, but the result says how it went: 0 or the system's error number. Nothing is open then.
int try_open_existing(int fid, std::string_view name);

// Opens a file for writing: one that takes the place of what stands under the name when it is
// closed, or (open_kept) the file itself, created if absent and otherwise left as it is. All
// characters belong to the name. Failure is a fatal stop.
void open_replaced(int fid, std::string_view name);
void open_kept(int fid, std::string_view name);

// Opens standard output for writing.
void open_standard_output(int fid);

// Closes a unit; one that is not open is left alone. A failure to write is a fatal stop.
void close(int fid);

// Between the two calls, files that replace others wait after close() and are put in place
// together, in the order in which they were closed: all, or after a failure none.
void begin_results();
void put_results_in_place();

// A moment in the life of the table. Units opened since then are closed and what was written to
// them is dropped, files that wait to be put in place included; standard input stays as it is.
struct UnitsMark {
  long long opened = 0;
  bool collecting = false;
  std::size_t waiting = 0;
};
UnitsMark mark_units();
void drop_units_since(const UnitsMark& mark);

bool is_open(int fid);

// Reads a line into the buffer, cut or padded with blanks; at the end of the file the buffer keeps
// what it held. The result is read_ok or end_of_file.
int read_line(int fid, std::span<char> line);

// Reads on to the next line that holds `word` within the buffer's capacity; see InputFile.
int read_line_holding(int fid, std::string_view word, bool any_case, std::span<char> line);

// Delivers a whole record; the view holds until the next call on this unit.
int read_record(int fid, std::string_view& record);

// Reads a line that must be there: the end of the file is a fatal stop that names `what` was
// expected.
void read_expected_line(int fid, std::span<char> line, std::string_view what);

// The same for `count` lines, whatever they hold.
void pass_over_lines(int fid, int count, std::string_view what);

// Steps back by one record. False at the first record, where nothing changes.
bool step_back(int fid);

void rewind(int fid);

// Goes behind the last record, for searches backwards.
void go_to_end(int fid);

// The file's name, and the number of the record that was read last.
std::string_view name(int fid);
long long line_number(int fid);

// A place between records to name later: the number of the record that ends there.
std::int64_t position(int fid);
long long line_number(int fid, std::int64_t position);

// File name and number of the record read last, for messages.
Place place(int fid);
// The same with the record behind it: where a file ended too early.
Place next_place(int fid);

// The file behind a unit that is open for reading, and for writing.
InputFile& input(int fid);
OutputFile& output(int fid);

}  // namespace io
