// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — judging QuickBooks' answers and reading single values out of them.
#pragma once

#include <string>
#include <string_view>

#include "common/result.h"
#include "xml/xml.h"

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
