// SPDX-License-Identifier: GPL-3.0-or-later
#include "import/booking.h"

#include "common/text.h"
#include "import/exchangefile.h"
#include "platform/activitylog.h"
#include "qbgateway/gateway.h"
#include "qbgateway/response.h"

namespace dorvane::imports {

std::string bookedType(const BookedKind& kind) {
    const std::string_view add(kind.add);
    return std::string(add.substr(0, add.size() - 3));
}

AddedRecord addedRecord(const xml::Node& ret) {
    const std::string name = ret.name();
    if (name == "VendorRet") {
        return {"vendor", ret.valueOf("Name"), {}, {}, {}, {}};
    }
    if (name == "CustomerRet") {
        return {"customer", ret.valueOf("FullName"), {}, {}, {}, {}};
    }
    for (const BookedKind& k : kBookedKinds) {
        if (bookedType(k) + "Ret" == name) {
            return {k.noun,
                    {},
                    ret.valueOf("RefNumber"),
                    ret.valueOf(k.amount),
                    k.account ? ret.valueOf(k.account) : std::string(),
                    ret.valueOf(k.payee)};
        }
    }
    return {text::toLower(name), {}, ret.valueOf("RefNumber"), {}, {}, {}};
}

Booking sendAddRequest(qbgateway::Gateway& gateway, ui::UiPort& ui, std::string_view body) {
    const std::string response = gateway.processRequest(withRequestProlog(body));
    if (response.empty()) {
        return {ImportOutcome::Unreachable, std::nullopt};
    }
    const Status judged = qbgateway::checkResponseStatus(response, &ui);
    const bool ok = judged.ok();
    Booking booking{ok ? ImportOutcome::Added : ImportOutcome::Refused, std::nullopt,
                    ok ? std::string() : judged.error().description};
    auto answer = xml::Document::parse(response);
    if (ok && answer) {
        if (const xml::Node ret = answer->selectOne("/QBXML/QBXMLMsgsRs/*/*")) {
            booking.added = addedRecord(ret);
        }
    }
    return booking;
}

void noteBooking(const platform::ProgramFolder& folder, DocumentKind kind, const xml::Node& source,
                 std::string_view request, const Booking& booking) {
    std::string_view root = rootElementName(kind);  // "InvoiceRet"
    if (root.ends_with("Ret")) {
        root.remove_suffix(3);
    }
    platform::Activity a{.event = std::string(platform::kActivityImport),
                         .kind = std::string(root)};
    for (const BookedKind& k : kBookedKinds) {
        if (request.find("<" + std::string(k.add) + ">") != std::string_view::npos) {
            a.type = bookedType(k);
            break;
        }
    }
    if (booking.added) {
        a.number = booking.added->refNumber;
        a.amount = booking.added->total;
        a.party = booking.added->party;
    }
    // What QuickBooks did not describe, the document that came in says.
    if (source) {
        if (a.number.empty()) {
            a.number = source.valueOf("RefNumber");
        }
        for (const char* amount : {"TotalAmount", "Subtotal", "Amount"}) {
            if (a.amount.empty()) {
                a.amount = source.valueOf(amount);
            }
        }
        if (a.party.empty()) {
            a.party = source.valueOf("//CompanyRet/CompanyName");
        }
    }
    switch (booking.outcome) {
        case ImportOutcome::Added:
            a.outcome = "booked";
            break;
        case ImportOutcome::Refused:
            a.outcome = "refused: " + booking.refusal;
            break;
        default:
            a.outcome = "QuickBooks not reached";
            break;
    }
    platform::noteActivity(folder, std::move(a));
}

}  // namespace dorvane::imports
