// SPDX-License-Identifier: GPL-3.0-or-later
#include "tempfolder.h"

#include <cstdio>
#include <random>
#include <stdexcept>

namespace dorvane::testkit {

TempFolder::TempFolder(const std::string& prefix) {
    std::random_device rd;
    const auto base = std::filesystem::temp_directory_path();
    for (int i = 0; i < 100; ++i) {
        auto p = base / (prefix + "-" + std::to_string(rd()));
        if (std::filesystem::create_directory(p)) {
            m_path = p;
            return;
        }
    }
    throw std::runtime_error("cannot create a temporary folder");
}

TempFolder::~TempFolder() {
    if (m_keep) {
        std::fprintf(stderr, "kept %s\n", m_path.c_str());
        return;
    }
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

}  // namespace dorvane::testkit
