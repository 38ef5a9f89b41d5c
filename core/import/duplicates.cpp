// SPDX-License-Identifier: GPL-3.0-or-later
#include "import/duplicates.h"

#include "common/text.h"
#include "import/booking.h"
#include "qbgateway/gateway.h"
#include "qbgateway/response.h"
#include "ui/uiport.h"
#include "xml/xml.h"

namespace dorvane::imports {

bool confirmAgain(ui::UiPort& ui, DuplicatePolicy policy, const std::string& question) {
    switch (policy) {
        case DuplicatePolicy::Allow:
            return true;
        case DuplicatePolicy::Refuse:
            ui.messageBox(question + "\r\nIt was not imported again.", ui::kProgramTitle,
                          ui::Icon::Exclamation);
            return false;
        case DuplicatePolicy::Ask:
            break;
    }
    return ui.messageBox(question + "\r\n\r\nImport it again?", ui::kProgramTitle,
                         ui::Icon::Question, ui::Buttons::YesNo) == ui::Answer::Yes;
}

DuplicateQuery queryBooked(qbgateway::Gateway& gateway, ui::UiPort& ui, std::string_view request) {
    using Result = DuplicateQuery::Result;
    auto doc = xml::Document::parse(request);
    if (!doc) {
        return {};  // QuickBooks will say what is wrong with it
    }
    const BookedKind* kind = nullptr;
    xml::Node add;
    for (const BookedKind& k : kBookedKinds) {
        if ((add = doc->firstElementByTagName(k.add))) {
            kind = &k;
            break;
        }
    }
    const std::string refNumber = add.valueOf("RefNumber");
    if (!kind || refNumber.empty()) {
        return {};  // nothing to know it by
    }
    const std::string payee = add.valueOf(kind->payee);
    const std::string type = bookedType(*kind);
    const std::string query =
        "<?xml version=\"1.0\" ?>\r\n<?qbxml version=\"2.0\"?>\r\n"
        "<QBXML><QBXMLMsgsRq onError=\"continueOnError\"><" +
        type + "QueryRq requestID=\"1\"><RefNumber>" + xml::escapeText(refNumber) +
        "</RefNumber></" + type + "QueryRq></QBXMLMsgsRq></QBXML>";
    const std::string response = gateway.processRequest(query);
    if (response.empty()) {
        return {Result::Unreachable, {}};
    }
    auto answer = xml::Document::parse(response);
    if (!answer || !qbgateway::isResponseOK(response, ui)) {
        return {Result::Refused, {}};
    }
    for (const xml::Node& booked : answer->selectAll("//" + type + "Ret")) {
        const std::string vendor = booked.valueOf(kind->payee);
        if (text::equalsIgnoreCase(vendor, payee)) {
            return {Result::Booked, std::string(kAlreadyInQuickBooks) + kind->label + " " +
                                        booked.valueOf("RefNumber") + " from " + vendor +
                                        ", dated " + booked.valueOf("TxnDate") + ", amount " +
                                        booked.valueOf(kind->amount) + "."};
        }
    }
    return {};
}

}  // namespace dorvane::imports
