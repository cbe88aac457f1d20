// A job directory without faults, and what a run makes of one.
#pragma once

#include <filesystem>
#include <string>

const std::filesystem::path good =
    std::filesystem::path(PROJECT_FOLDER) / "tests/zandor/cases/diatomic-dipoles";
constexpr const char* results[] = {"zandor-es.out", "vib.xyz", "vibp.xyz"};

// What a run says, without what it says of the axes of this directory: they are not the principal
// ones.
inline std::string without_axes_warning(std::string text) {
  const std::size_t at = text.find("zandor_gather: warning: coord-ref.com: the axes are");
  return at == std::string::npos ? text : text.erase(at, text.find('\n', at) + 1 - at);
}
