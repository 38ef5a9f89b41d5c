// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — the check-up: component by component, what is ready and what to do.
//
// Each component the program depends on is looked at as a job would meet it, without doing any
// job: the program folder, the settings, the QuickBooks connection in use, the SMTP server (a
// connection and login, no mail), direct delivery's DNS, the handheld's folder, the web
// update's address and the display. Nothing is shown here; the front ends print or show
// `checkupText`.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "common/result.h"

namespace dorvane::platform {
class SettingsStore;
}

namespace dorvane::shell {

class Application;

enum class CheckState {
    Ok,
    Problem,        // configured (or needed) and not working
    NotConfigured,  // optional and not set up
};

struct CheckResult {
    std::string component;
    CheckState state = CheckState::Ok;
    std::string detail;  // what was found
    std::string remedy;  // what to do, for a problem
};

// Where the check-up looks.
struct CheckupSources {
    std::filesystem::path programHome;
    std::filesystem::path shippedFiles;  // empty when none were found
    const platform::SettingsStore& settings;
    std::filesystem::path sandboxFolder;
    // The company's sender address when known: direct delivery looks up its domain's mail
    // exchanger, else that of a well-known domain.
    std::string senderAddress;
};

std::vector<CheckResult> runCheckup(const CheckupSources& sources);
// The check-up of the program `app` runs as.
std::vector<CheckResult> runCheckup(Application& app);

// One line per component: "NAME: ok — detail", "NAME: PROBLEM — detail To fix: remedy",
// "NAME: not configured — detail".
std::string checkupText(const std::vector<CheckResult>& results);
// Whether no component has a problem (the exit status of `dorvane check` is 0 then, else 1).
bool checkupPassed(const std::vector<CheckResult>& results);

}  // namespace dorvane::shell
