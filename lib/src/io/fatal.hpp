// The fatal stop and the warnings: one line on standard error, headed by the program's name.
#pragma once

#include <string>
#include <string_view>

namespace io {

// The name that heads every message. Each program of the project defines it.
extern const char* const program_name;

// A place in a text file. A line of 0 or less stands for the file as a whole.
struct Place {
  std::string_view file;
  long long line = 0;
};

// `text` with every byte that is not printable ASCII written as \xNN, so that it stays on one line.
std::string printable(std::string_view text);

// `text` as messages quote what was found: printable, cut to 40 characters, in single quotes.
std::string quoted(std::string_view text);

// Writes "PROGRAM: MESSAGE" to standard error and ends the process with exit status 2.
[[noreturn]] void fatal_stop(std::string_view message);

// Writes "PROGRAM: FILE:LINE: MESSAGE" (no line number where there is none), exit status 2.
[[noreturn]] void fatal_stop(const Place& place, std::string_view message);

// Writes "PROGRAM: FILE:LINE: MESSAGE" to standard error and goes on, to a stop of another kind.
void report(const Place& place, std::string_view message);

// Writes "PROGRAM: warning: FILE:LINE: MESSAGE" to standard error and goes on.
void warn(const Place& place, std::string_view message);

// Writes one line to standard output at once; a failure is a fatal stop.
void print_line(std::string_view line);

// Makes a full disk, a closed pipe and memory that runs out end in a fatal stop with its message
// instead of a signal or an exception, and keeps files from taking the place of a standard stream
// that is closed. Called once, by main().
void prepare_process();

}  // namespace io
