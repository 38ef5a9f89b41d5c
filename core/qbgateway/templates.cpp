// SPDX-License-Identifier: GPL-3.0-or-later
#include "qbgateway/templates.h"

#include "common/text.h"

namespace dorvane::qbgateway {

std::string buildDateMacro(std::string_view timeframe) {
    if (timeframe == "ALL") {
        return {};
    }
    return "<DateMacro>" + std::string(timeframe) + "</DateMacro>";
}

std::string fillDateMacro(std::string_view request, std::string_view timeframe) {
    return text::replaceAll(request, kDateMacroPlaceholder, buildDateMacro(timeframe));
}

std::string fillListId(std::string_view request, std::string_view listId) {
    return text::replaceAll(request, kListIdPlaceholder,
                            "<ListID>" + std::string(listId) + "</ListID>");
}

std::string fillWholeList(std::string_view request) {
    return text::replaceAll(request, kListIdPlaceholder, "");
}

}  // namespace dorvane::qbgateway
