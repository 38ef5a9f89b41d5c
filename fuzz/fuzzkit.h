// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane fuzzing — what the fuzz targets share: the input as text, a scratch folder for the
// process, and a program folder seeded with the shipped files.
//
// A target is one file, NAME.cpp, with LLVMFuzzerTestOneInput; it is listed in
// fuzz/CMakeLists.txt, its seeds are in fuzz/corpus/NAME and what fuzzing found in
// fuzz/regressions/NAME. A target never prints per input and never keeps state from one input
// to the next that could change what the next one does.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string_view>

namespace dorvane::fuzz {

inline std::string_view text(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

// A folder of this process's own, removed when it ends.
const std::filesystem::path& scratch();

// A program folder below scratch(), seeded once with the shipped files (templates, style
// sheets). Targets may write their logs there.
const std::filesystem::path& programFolder();

// The shipped files themselves.
std::filesystem::path shippedFiles();

// Writes `bytes` to `file`, replacing it.
void writeFile(const std::filesystem::path& file, std::string_view bytes);

}  // namespace dorvane::fuzz
