// SPDX-License-Identifier: GPL-3.0-or-later
#include "fuzzkit.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <system_error>

#include "platform/programhome.h"
#include "tempfolder.h"

namespace dorvane::fuzz {

const std::filesystem::path& scratch() {
    static const auto folder = std::make_unique<testkit::TempFolder>("dorvane-fuzz");
    return folder->path();
}

std::filesystem::path shippedFiles() {
    return DORVANE_FUZZ_PROGRAM_DIR;
}

const std::filesystem::path& programFolder() {
    static const std::filesystem::path home = [] {
        const auto path = scratch() / "home";
        const auto report = platform::prepareProgramHome(path, shippedFiles());
        if (!report.error.empty()) {
            std::fprintf(stderr, "the program folder could not be prepared: %s\n",
                         report.error.c_str());
            std::abort();
        }
        return path;
    }();
    return home;
}

void writeFile(const std::filesystem::path& file, std::string_view bytes) {
    // A new file rather than the old one cut short: ext4 flushes a file truncated and written
    // again when it is closed, which costs milliseconds an input.
    std::error_code ec;
    std::filesystem::remove(file, ec);
    std::ofstream out(file, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

}  // namespace dorvane::fuzz
