#include "io/process.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstring>
#include <new>

#include "io/units.hpp"

namespace io {

namespace {

// What the process was started with.
void (*before_closed_pipes)(int) = SIG_DFL;

void prepare_process() {
  // A closed standard stream is replaced by one that cannot be written: to write to it stays a
  // failure, and messages cannot end up in the next file that is opened.
  while (true) {
    const int descriptor = ::open("/dev/null", O_RDONLY);
    if (descriptor > STDERR_FILENO) ::close(descriptor);
    if (descriptor < 0 || descriptor > STDERR_FILENO) break;
  }
  before_closed_pipes = std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
}

}  // namespace

std::optional<Stop> collect(const std::function<void()>& body) {
  const UnitsMark mark = mark_units();
  std::optional<Stop> stop;
  try {
    body();
  } catch (Stop& thrown) {
    stop = std::move(thrown);
  } catch (const std::bad_alloc&) {
    stop = Stop{2, {}, 0, "expected memory for the input read so far, found none left"};
  }
  if (stop) drop_units_since(mark);
  return stop;
}

void end_at_closed_pipes() { std::signal(SIGPIPE, before_closed_pipes); }

int run_program(const std::function<int()>& body) {
  prepare_process();
  int status = 0;
  const auto stop = collect([&] { status = body(); });
  show_rest_of_warnings();
  if (stop) {
    report(*stop);
    return stop->status;
  }
  if (output_error() != 0) {
    report({"standard output"}, std::string("cannot write: ") + strerror(output_error()));
    return 2;
  }
  return status;
}

}  // namespace io
