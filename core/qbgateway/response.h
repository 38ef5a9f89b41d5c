// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — judging QuickBooks' answers and reading single values out of them.
#pragma once

#include <string>
#include <string_view>

#include "xml/xml.h"

namespace dorvane::ui {
class UiPort;
}

namespace dorvane::qbgateway {

// Judges the first response element of a qbXML response (QBXML → QBXMLMsgsRs → its first
// element). Answers "" when the request counts as successful: status 0, a warning (shown as
// "Warning from QuickBooks" when `ui` is given) or an informational status such as "no
// match". An error status answers its message (shown as "Error from QuickBooks"); a text that
// does not load answers "loadXML failed, reason: " and the parser's reason (shown as "Error").
// With `ui` null nothing is shown.
std::string checkResponseStatus(std::string_view response, ui::UiPort* ui);

// checkResponseStatus with messages shown; true when it answered "".
bool isResponseOK(std::string_view response, ui::UiPort& ui);

// The text of the first node `xpath` selects below `node`; "" when nothing is selected.
std::string getNodeValue(xml::Node node, std::string_view xpath);

// Thrown by getXMLNodeValueAsString when the document has no such element.
class MissingElement : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// The text of the first element named `tagName` anywhere in the document. Throws
// MissingElement when there is none.
std::string getXMLNodeValueAsString(std::string_view tagName, const xml::Document& doc);

}  // namespace dorvane::qbgateway
