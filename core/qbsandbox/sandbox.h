// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — the embedded QuickBooks: a qbXML request processor over an SQLite company file.
#pragma once

#include <filesystem>

#include "qbgateway/requestprocessor.h"

namespace dorvane::qbsandbox {

// The per-user folder that holds the sandbox's state and its company files:
// $DORVANE_SANDBOX_DIR, else $XDG_DATA_HOME/dorvane/sandbox (~/.local/share when unset).
std::filesystem::path stateFolder();

// Makes request processors that talk to the sandbox QuickBooks of `stateFolder()`.
qbgateway::ProcessorFactory processorFactory();
// The same over the sandbox state of `folder` (a second QuickBooks in one process).
qbgateway::ProcessorFactory processorFactory(std::filesystem::path folder);

}  // namespace dorvane::qbsandbox
