// SPDX-License-Identifier: GPL-3.0-or-later
#include "browser/documenttypes.h"

namespace dorvane::browser {

std::string openBalanceText(const DocumentType& type, xml::Node record) {
    switch (type.openBalance) {
        case OpenBalance::Remaining:
            return record.valueOf(type.remaining);
        case OpenBalance::Paid:
            return "0.00";
        case OpenBalance::Customer: {
            std::string total = record.valueOf("TotalBalance");
            return total.empty() ? record.valueOf("Balance") : total;
        }
        case OpenBalance::None:
            break;
    }
    return {};
}

const DocumentType* findDocumentType(std::string_view name) {
    for (const DocumentType& type : kDocumentTypes) {
        if (name == type.name) {
            return &type;
        }
    }
    return nullptr;
}

}  // namespace dorvane::browser
