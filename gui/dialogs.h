// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — the modal dialogs core opens through the UI port, registered by their names.
#pragma once

#include "shell/settings.h"

namespace dorvane::gui {

class QtUiPort;

// Registers `Dialog` (mail preferences; OK writes them to `settings`) and `Dialog2` (company
// information editor) with `ui`. Both must outlive every dialog shown through `ui`.
void registerDialogs(QtUiPort& ui, shell::SettingsStore& settings);

}  // namespace dorvane::gui
