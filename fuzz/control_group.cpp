// The control group, with keys of every type. What stands before and behind the group and line ends
// of two bytes must make no difference.
#include "io/control_group.hpp"

#include <bit>
#include <cstdint>

#include "harness.hpp"
#include "io/units.hpp"

namespace {

constexpr int unit = 20;

struct Outcome {
  bool symm = true, std_orient = false;
  int disp_mode = 7, disp_sign = 1;
  double dx = 0.5, disp_a = 1.0;
  io::Line qctype, fxyz, task;
  std::optional<io::Stop> stop;
};

Outcome read(const std::string& text) {
  static const fuzz::MemoryFile file;
  file.set(text);
  Outcome out;
  const io::ControlKey keys[] = {
      {"symm", &out.symm},           {"qctype", &out.qctype},
      {"fxyz", &out.fxyz},           {"dx", &out.dx},
      {"task", &out.task},           {"std_orient", &out.std_orient},
      {"disp_mode", &out.disp_mode}, {"disp_a", &out.disp_a},
      {"disp_sign", &out.disp_sign},
  };
  out.stop = fuzz::run([&] {
    io::open_existing(unit, file.name());
    io::read_control_group(unit, keys);
    io::close(unit);
  });
  return out;
}

// `lines` more stand before the group.
void require_same(const Outcome& a, const Outcome& b, long long lines, const char* what) {
  const auto same_real = [](double x, double y) {
    return std::bit_cast<std::uint64_t>(x) == std::bit_cast<std::uint64_t>(y);
  };
  const bool same = a.symm == b.symm && a.std_orient == b.std_orient &&
                    a.disp_mode == b.disp_mode && a.disp_sign == b.disp_sign &&
                    same_real(a.dx, b.dx) && same_real(a.disp_a, b.disp_a) &&
                    a.qctype.padded() == b.qctype.padded() && a.fxyz.padded() == b.fxyz.padded() &&
                    a.task.padded() == b.task.padded() && a.stop.has_value() == b.stop.has_value();
  fuzz::require(same, what);
  if (!a.stop) return;
  const long long moved = a.stop->line == 0 ? 0 : lines;
  fuzz::require(a.stop->line + moved == b.stop->line, what);
  // Messages may name the line in which something was opened.
  fuzz::require(lines != 0 || a.stop->message == b.stop->message, what);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  const Outcome plain = read(text);
  if (!plain.stop) require_same(plain, read(text + "\n dx = 1 / &control\n"), 0, "text behind it");
  require_same(plain, read("& dx\n ! &control dx = 5 /\n&controls /\n" + text), 3,
               "text before it");
  if (text.find('\r') == std::string::npos) {
    require_same(plain, read(fuzz::with_crlf(text)), 0, "line ends");
  }
  return 0;
}
