// SPDX-License-Identifier: GPL-3.0-or-later
#include "browser/documenttypes.h"

namespace dorvane::browser {

const DocumentType* findDocumentType(std::string_view name) {
    for (const DocumentType& type : kDocumentTypes) {
        if (name == type.name) {
            return &type;
        }
    }
    return nullptr;
}

}  // namespace dorvane::browser
