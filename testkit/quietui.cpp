// SPDX-License-Identifier: GPL-3.0-or-later
#include "quietui.h"

#include <cstdio>

namespace dorvane::testkit {

ui::Answer QuietUi::messageBox(std::string_view text, std::string_view, ui::Icon,
                               ui::Buttons buttons) {
    if (++m_messages <= m_echo) {
        std::fprintf(stderr, "message box: %.*s\n", static_cast<int>(text.size()), text.data());
    }
    switch (buttons) {
        case ui::Buttons::YesNo:
        case ui::Buttons::YesNoCancel:
            return ui::Answer::Yes;
        case ui::Buttons::RetryCancel:
            return ui::Answer::Cancel;
        default:
            return ui::Answer::Ok;
    }
}

std::optional<std::string> QuietUi::inputBox(std::string_view, std::string_view,
                                             std::string_view preset) {
    return std::string(preset);
}

}  // namespace dorvane::testkit
