// A job directory without faults, and what a run makes of one.
#pragma once

#include <filesystem>

const std::filesystem::path good =
    std::filesystem::path(PROJECT_FOLDER) / "tests/zandor/cases/diatomic-dipoles";
constexpr const char* results[] = {"zandor-es.out", "vib.xyz", "vibp.xyz"};
