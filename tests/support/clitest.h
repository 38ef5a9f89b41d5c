// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane tests — the built `dorvane` executable run as a script or cron job runs it, with a
// program folder, settings and QuickBooks of the test's own.
#pragma once

#include <filesystem>
#include <gtest/gtest.h>
#include <string>

#include "support/testsupport.h"

namespace dorvane::test {

class CliTest : public ::testing::Test {
protected:
    CliTest() {
        std::filesystem::create_directories(home / "qb");
        std::filesystem::create_directories(home / "program");
        copyProgram(".xml");
    }
    // Copies the shipped program files whose names end in `extension`.
    void copyProgram(const std::string& extension) {
        for (const auto& f : std::filesystem::directory_iterator(programSource())) {
            if (f.is_regular_file() && f.path().extension() == extension) {
                std::filesystem::copy(f.path(), home / "program" / f.path().filename());
            }
        }
    }
    // Creates and opens a copy of the demo company in the sandbox.
    int newDemo(const std::string& name = "demo.dvq") {
        return dorvane("sandbox new '" + (home / name).string() + "' --demo", "sandbox");
    }
    // Runs dorvane with the program folder and QuickBooks of this test.
    int dorvane(const std::string& args, const std::string& processor = "responses") {
        std::string env = "XDG_CONFIG_HOME=" + (home / "cfg").string() +
                          " DORVANE_SANDBOX_DIR=" + (home / "sandbox").string() +
                          // Each test puts into its program folder what it needs.
                          " DORVANE_SHARE_DIR=" + (home / "no-shipped-files").string() + " ";
        if (processor == "responses") {
            env += "DORVANE_PROCESSOR=responses:" + (home / "qb").string() + " ";
        }
        return runCommand(
            env + DORVANE_EXECUTABLE + " --home " + (home / "program").string() + " " + args, &out,
            &err);
    }

    TempDir home;
    std::string out, err;
};

}  // namespace dorvane::test
