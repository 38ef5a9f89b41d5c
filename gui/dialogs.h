// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — the modal dialogs core opens through the UI port, registered by their names.
#pragma once

#include "platform/settings.h"

class QDialog;
class QLayout;

namespace dorvane::platform {
class ProgramFolder;
}

namespace dorvane::gui {

class QtUiPort;

// Lays a dialog out as `body` above its OKButton and CancelButton, which call the dialog's
// accept() and reject(), at a fixed size.
void layOutWithOkCancel(QDialog* dialog, QLayout* body);

// Registers `Dialog` (mail preferences; OK writes them to `settings`, and with `folder` the
// Documents page its words file), `Dialog2` (company information editor), `Dialog3` (import
// preferences; core saves them on OK) and `Dialog4` (the handheld sync's employee choice) with
// `ui`. All must outlive every dialog shown through `ui`.
void registerDialogs(QtUiPort& ui, platform::SettingsStore& settings,
                     const platform::ProgramFolder* folder = nullptr);

}  // namespace dorvane::gui
