// Rows with more items than are read, and rows out of order.
#include "check/checks.hpp"
#include "io/values.hpp"

namespace check {

namespace {

void report_odd(const OddLines& odd, const std::string& says, const char* means,
                std::string_view file, int job, Findings& findings) {
  if (odd.count == 0) return;
  findings.warn(
      {file, odd.first}, {job}, says, io::quoted(odd.found), means,
      odd.count == 1 ? "" : " (and " + counted(odd.count - 1, "more line") + " of the block)");
}

void report_rows(const BlockRows& rows, const std::string& what, int read, std::string_view file,
                 int job, Findings& findings) {
  report_odd(rows.extra,
             io::joined(what, " of atom ", rows.extra.atom, ": more items than the ", read,
                        " that are read, the first of them "),
             "; a column too many shifts the numbers", file, job, findings);
  report_odd(rows.unordered,
             io::joined(what, " of atom ", rows.unordered.atom, ": the line is numbered "),
             ", but atoms are read in the order of the lines", file, job, findings);
}

// Layered inputs name the layer behind the coordinates.
bool names_layer(const JobData& jobs, const OddLines& extra) {
  double number = 0.0;
  return jobs.layered && !io::parse_real(extra.found, number);
}

}  // namespace

void check_columns(const JobData& jobs, const Thresholds&, Findings& findings) {
  int lines = 0;
  if (jobs.input && !names_layer(jobs, jobs.input->extra)) {
    report_rows({jobs.input->extra, {}}, "the coordinates", 4, jobs.run.com_name.content(), 0,
                findings);
    lines += jobs.input->extra.count;
  }
  for (int i = 0; i <= jobs.run.n6; ++i) {
    const SignFile& file = jobs.sign_file(i);
    report_rows(file.geometry_rows, "the geometry", 7, jobs.sign_name(i), i, findings);
    report_rows(file.force_rows, "the force", 4, jobs.sign_name(i), i, findings);
    for (const BlockRows* rows : {&file.geometry_rows, &file.force_rows}) {
      lines += rows->extra.count + rows->unordered.count;
    }
  }
  findings.figure("lines that are odd", lines);
}

}  // namespace check
