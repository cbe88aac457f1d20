#include "export/text_columns.hpp"

#include <cmath>

#include "io/fatal.hpp"

namespace exporting {

namespace {

[[noreturn]] void stop_at(double value) {
  io::fatal_stop({}, "expected numbers that fit the columns of the format, found ", value);
}

}  // namespace

std::string fixed_column(double value, int width, int decimals) {
  const std::string text = io::rounded(value, std::chars_format::fixed, decimals);
  const auto columns = static_cast<std::size_t>(width);
  return std::string(text.size() < columns ? columns - text.size() : 1, ' ') + text;
}

io::OutputFile& write_fixed(io::OutputFile& out, double value, int width, int decimals) {
  const long long before = io::overfull_fields();
  out.fixed(value, width, decimals);
  if (io::overfull_fields() > before) stop_at(value);
  return out;
}

io::OutputFile& write_sci(io::OutputFile& out, double value, int width, int decimals) {
  const double magnitude = std::fabs(value);
  if (!(magnitude < 1e99)) stop_at(value);
  return out.sci(magnitude < 1e-99 ? 0.0 : value, width, decimals);
}

}  // namespace exporting
