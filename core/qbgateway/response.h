// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — judging QuickBooks' answers and reading single values out of them.
#pragma once

#include <string>
#include <string_view>

#include "common/result.h"

namespace dorvane::ui {
class UiPort;
}

namespace dorvane::qbgateway {

// Judges the first response element of a qbXML response (QBXML → QBXMLMsgsRs → its first
// element). Succeeds when the request counts as successful: status 0, a warning (shown as
// "Warning from QuickBooks" when `ui` is given), an informational status such as "no match"
// or an error status without a message. An error status fails with its code and message
// (shown as "Error from QuickBooks"); a text that does not load fails with "loadXML failed,
// reason: " and the parser's reason (shown as "Error"), an element without its status
// attributes with what it lacks (shown as "Error"), both with code 0. With `ui` null nothing
// is shown.
Status checkResponseStatus(std::string_view response, ui::UiPort* ui);

// checkResponseStatus with messages shown; true when it succeeded.
bool isResponseOK(std::string_view response, ui::UiPort& ui);

}  // namespace dorvane::qbgateway
