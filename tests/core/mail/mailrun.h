// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane tests — one send run's surroundings: a program folder, a scripted person, the
// status bar and the run's mail settings.
#pragma once

#include <string>
#include <vector>

#include "mail/mailer.h"
#include "platform/programfolder.h"
#include "platform/settings.h"
#include "support/testsupport.h"

namespace dorvane::test {

struct MailRun {
    TempDir dir;
    ScriptedUi ui;
    platform::ProgramFolder folder{dir.path()};
    platform::MailSettings settings;
    std::vector<std::string> statuses;
    bool preview = false;

    mail::MailContext context() {
        return {ui, folder, [this](const std::string& text) { statuses.push_back(text); }, settings,
                preview};
    }
    std::string file(const std::string& name) const { return readFile(dir / name); }
    bool exists(const std::string& name) const { return std::filesystem::exists(dir / name); }
};

}  // namespace dorvane::test
