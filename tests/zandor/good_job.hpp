// A job directory without faults, and what a run makes of one.
#pragma once

#include <filesystem>
#include <string>

const std::filesystem::path good =
    std::filesystem::path(PROJECT_FOLDER) / "tests/zandor/cases/diatomic-dipoles";
constexpr const char* results[] = {"zandor-es.out", "vib.xyz", "vibp.xyz"};

// What every run says of it, and the text without that.
const std::string axes_warning =
    "zandor_gather: warning: coord-ref.com: the axes are not the principal axes of inertia: "
    "rotations stay in the projected frequencies with up to 981 cm-1 (see zandor_check)\n";
inline std::string without_axes_warning(std::string text) {
  const std::size_t at = text.find(axes_warning);
  return at == std::string::npos ? text : text.erase(at, axes_warning.size());
}
