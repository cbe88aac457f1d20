// Rows with more items than are read, and rows out of order.
#include "check/checks.hpp"
#include "io/values.hpp"

namespace check {

namespace {

std::string more_lines(const OddLines& odd) {
  return odd.count == 1 ? "" : " (and " + counted(odd.count - 1, "more line") + " of the block)";
}

void report_rows(const BlockRows& rows, const char* what, int read, std::string_view file, int job,
                 Report& report) {
  if (rows.extra.count > 0) {
    report.add(Severity::warning, {file, rows.extra.first},
               std::string(what) + " of atom " + std::to_string(rows.extra.atom) +
                   ": more items than the " + std::to_string(read) +
                   " that are read, the first of them " + io::quoted(rows.extra.found) +
                   "; a column too many shifts the numbers" + more_lines(rows.extra),
               job);
  }
  if (rows.unordered.count > 0) {
    report.add(Severity::warning, {file, rows.unordered.first},
               std::string(what) + " of atom " + std::to_string(rows.unordered.atom) +
                   ": the line is numbered " + io::quoted(rows.unordered.found) +
                   ", but atoms are read in the order of the lines" + more_lines(rows.unordered),
               job);
  }
}

// Layered inputs name the layer behind the coordinates.
bool names_layer(const JobData& jobs, const OddLines& extra) {
  double number = 0.0;
  return jobs.layered && !io::parse_real(extra.found, number);
}

}  // namespace

void check_columns(const JobData& jobs, const Thresholds&, Report& report) {
  int lines = 0;
  if (jobs.input && !names_layer(jobs, jobs.input->extra)) {
    report_rows({jobs.input->extra, {}}, "the coordinates", 4, jobs.run.com_name.content(), 0,
                report);
    lines += jobs.input->extra.count;
  }
  for (int i = 0; i <= jobs.run.n6; ++i) {
    const SignFile& file = jobs.sign_file(i);
    const std::string_view name = jobs.job(i).sgn_name.content();
    report_rows(file.geometry_rows, "the geometry", 7, name, i, report);
    report_rows(file.force_rows, "the force", 4, name, i, report);
    for (const BlockRows* rows : {&file.geometry_rows, &file.force_rows}) {
      lines += rows->extra.count + rows->unordered.count;
    }
  }
  report.figure("lines that are odd", lines);
}

}  // namespace check
