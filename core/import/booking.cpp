// SPDX-License-Identifier: GPL-3.0-or-later
#include "import/booking.h"

#include "common/text.h"
#include "import/exchangefile.h"
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
    const bool ok = qbgateway::isResponseOK(response, ui);
    Booking booking{ok ? ImportOutcome::Added : ImportOutcome::Refused, std::nullopt};
    auto answer = xml::Document::parse(response);
    if (ok && answer) {
        if (const xml::Node ret = answer->selectOne("/QBXML/QBXMLMsgsRs/*/*")) {
            booking.added = addedRecord(ret);
        }
    }
    return booking;
}

}  // namespace dorvane::imports
