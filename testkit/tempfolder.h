// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane tests and benchmarks — a temporary folder that goes with its owner.
#pragma once

#include <filesystem>
#include <string>

namespace dorvane::testkit {

// A fresh folder below the system's temporary folder, named after `prefix`, removed with
// everything in it when the object goes; a kept one stays, and its path is printed then.
class TempFolder {
public:
    explicit TempFolder(const std::string& prefix = "dorvane-test");
    ~TempFolder();
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    const std::filesystem::path& path() const { return m_path; }
    std::filesystem::path operator/(const std::string& name) const { return m_path / name; }
    // Leaves the folder in place, for a look afterwards.
    void keep() { m_keep = true; }

private:
    std::filesystem::path m_path;
    bool m_keep = false;
};

}  // namespace dorvane::testkit
