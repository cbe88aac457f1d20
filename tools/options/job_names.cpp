#include "options/job_names.hpp"

#include "io/fatal.hpp"

namespace options {

CLI::Option* add_job_names(CLI::App& app, const std::string& name, std::string& kind,
                           const std::string& meaning) {
  const auto settle = [name](std::string& value) {
    if (value == "true") value = "names";  // as the parser has it where no value is given
    if (value == "names" || value == "numbers") return std::string();
    return "expected " + name + " alone or " + name + "=numbers, found " + io::quoted(value);
  };
  return app.add_flag(name, kind, meaning)->transform(CLI::Validator(settle, ""));
}

}  // namespace options
