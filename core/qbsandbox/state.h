// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane sandbox — what the simulated QuickBooks is doing, shared by every process of the user.
//
// The state folder holds `state.ini` (is QuickBooks running, which company file is open),
// the company files themselves, `faults.ini` (injected failures) and `qbsdklog.txt` (why a
// request was refused). State changes are written atomically; request processors read the
// state on every call, so the window and the CLI always see the same QuickBooks.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "common/result.h"

namespace dorvane::qbsandbox {

struct SandboxState {
    SandboxState() = default;
    SandboxState(bool running_, std::filesystem::path company_, std::filesystem::path last_ = {})
        : running(running_), company(std::move(company_)), last(std::move(last_)) {}

    bool running = true;
    std::filesystem::path company;  // empty = no company file open
    std::filesystem::path last;     // the company file open last (kept when it is closed)
};

// The state as stored; nullopt when the folder has none yet.
std::optional<SandboxState> readState(const std::filesystem::path& folder);
Status writeState(const std::filesystem::path& folder, const SandboxState& state);

// The state, created on first use: the demo company is generated in the folder and opened,
// as QuickBooks opens its sample company.
Result<SandboxState> currentState(const std::filesystem::path& folder);
std::filesystem::path demoCompanyPath(const std::filesystem::path& folder);

// Appends a line to the folder's qbsdklog.txt.
void logToSdkLog(const std::filesystem::path& folder, const std::string& line);

// An injected failure: the next `remaining` calls of `operation` fail with `code`, or, with
// code 0, answer normally after `delayMs`.
struct Fault {
    std::string operation;  // OpenConnection, BeginSession, ProcessRequest, ...
    int remaining = 0;
    std::uint32_t code = 0;
    int delayMs = 0;
};
std::vector<Fault> readFaults(const std::filesystem::path& folder);
Status writeFaults(const std::filesystem::path& folder, const std::vector<Fault>& faults);
// Parses "ProcessRequest:2:0x80040400" or "BeginSession:1:delay=500" (comma-separated list).
std::vector<Fault> parseFaults(const std::string& text);
// Consumes one use of the fault that applies to this call, from DORVANE_SANDBOX_FAULTS (counted
// per process) or from the state folder (counted across processes).
std::optional<Fault> takeFault(const std::filesystem::path& folder, const std::string& operation);

// QuickBooks' description of a request-processor error code.
std::string hresultText(std::uint32_t code);

}  // namespace dorvane::qbsandbox
