// SPDX-License-Identifier: GPL-3.0-or-later
#include "qbgateway/response.h"

#include <cstdlib>

#include "ui/uiport.h"
#include "xml/xml.h"

namespace dorvane::qbgateway {
namespace {

void show(ui::UiPort* ui, const std::string& text, std::string_view title) {
    if (ui) {
        ui->messageBox(text, title, ui::Icon::Exclamation, ui::Buttons::Ok);
    }
}

}  // namespace

Status checkResponseStatus(std::string_view response, ui::UiPort* ui) {
    auto doc = xml::Document::parse(response);
    if (!doc) {
        std::string error = "loadXML failed, reason: " + doc.error().description;
        show(ui, error, "Error");
        return Error{0, std::move(error)};
    }
    // QBXML → QBXMLMsgsRs → the first response element.
    xml::Node first = doc->root().firstChildElement().firstChildElement();
    static constexpr const char* kAttributes[] = {"statusCode", "statusSeverity", "statusMessage"};
    for (const char* attribute : kAttributes) {
        if (!first.hasAttribute(attribute)) {
            std::string error = first ? "The response element " + first.name() +
                                            " has no attribute " + attribute + "."
                                      : std::string("The response holds no response element.");
            show(ui, error, "Error");
            return Error{0, std::move(error)};
        }
    }
    const std::string code = first.attribute("statusCode");
    const std::string severity = first.attribute("statusSeverity");
    const std::string message = first.attribute("statusMessage");
    if (code == "0") {
        return Ok{};
    }
    if (severity == "Warning") {
        show(ui, message, "Warning from QuickBooks");
        return Ok{};
    }
    if (severity == "Error") {
        show(ui, message, "Error from QuickBooks");
        if (!message.empty()) {
            return Error{static_cast<std::int32_t>(std::strtol(code.c_str(), nullptr, 10)),
                         message};
        }
    }
    return Ok{};
}

bool isResponseOK(std::string_view response, ui::UiPort& ui) {
    return checkResponseStatus(response, &ui).ok();
}

}  // namespace dorvane::qbgateway
