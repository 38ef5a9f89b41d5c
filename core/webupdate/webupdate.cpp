// SPDX-License-Identifier: GPL-3.0-or-later
#include "webupdate/webupdate.h"

#include <algorithm>

#include "common/text.h"
#include "platform/programfolder.h"
#include "platform/settings.h"
#include "qbgateway/gateway.h"
#include "qbgateway/response.h"
#include "qbgateway/templates.h"
#include "ui/documentwindow.h"
#include "ui/uiport.h"
#include "webupdate/httppost.h"
#include "xml/xml.h"

namespace dorvane::webupdate {
namespace {

constexpr int kIconReady = 3;

}  // namespace

const ItemKind* itemKindNamed(std::string_view name) {
    for (const ItemKind& k : kItemKinds) {
        if (text::equalsIgnoreCase(name, k.kind) || text::equalsIgnoreCase(name, k.menuEntry)) {
            return &k;
        }
    }
    return nullptr;
}

std::string siteAddress(const platform::SettingsStore& settings) {
    return std::string(text::trim(settings.get("Web", "UpdateURL")));
}

WebUpdater::WebUpdater(ui::DocumentWindow& window, const platform::ProgramFolder& folder,
                       qbgateway::Gateway& gateway, platform::SettingsStore& settings,
                       ui::UiPort& ui)
    : m_window(window), m_folder(folder), m_gateway(gateway), m_settings(settings), m_ui(ui) {}

bool WebUpdater::listItems(const ItemKind& kind) {
    m_kind = &kind;
    m_window.setCaption(std::string("Dorvane ") + kind.label);
    m_window.showSendControls(false);
    m_window.setStatusText("parsing information ...");
    const ui::BusyScope busy(m_ui);
    const std::string request =
        text::replaceAll(ui::textOrShown(m_folder.readProgramFile(kItemsTemplate), m_ui),
                         qbgateway::kFromDatePlaceholder, qbgateway::kFixedFromDate);
    const std::string response = m_gateway.processRequest(request);
    auto doc = xml::Document::parse(response);
    const char* failed = !doc                                                 ? "(1)"
                         : !qbgateway::checkResponseStatus(response, nullptr) ? "(2)"
                                                                              : nullptr;
    if (failed) {
        m_ui.messageBox(std::string(kNoAccess) + failed);
        m_window.setStatusText(kNoAccess);
        return false;
    }
    ui::ListModel& list = m_window.list();
    list.clear();
    const double share = 1.0 / 5;
    list.setColumns({{"ID", 0, share},
                     {"Modified", 0, share},
                     {"Name", 0, share},
                     {"Price", 0, share},
                     {"Description", 0, share}});
    std::vector<ui::ListRow> rows;
    for (const xml::Node& item : doc->selectAll(kind.path)) {
        ui::ListRow row;
        row.checked = true;
        row.icon = kIconReady;
        row.key = item.valueOf("ListID");
        row.cells = {row.key, item.valueOf("TimeModified"), item.valueOf("FullName"),
                     item.valueOf(kind.pricePath), item.valueOf(kind.descPath)};
        rows.push_back(std::move(row));
    }
    list.setRows(std::move(rows));
    m_window.listDocument() = std::move(doc).value();
    m_window.setStatusText({});
    return true;
}

UpdateReport WebUpdater::updateItems() {
    UpdateReport report;
    auto sheet = xml::Stylesheet::load(m_folder.filePath(std::string("/") + kUpdateSheet));
    if (!sheet) {
        report.sheetMissing = true;
        m_window.setStatusText("Conversion failed");
        return report;
    }
    m_settings.reload();
    const std::string url = siteAddress(m_settings);
    report.noSite = url.empty();
    std::unique_ptr<HttpPoster> poster;
    if (!report.noSite) {
        PostOptions options;
        options.url = url;
        options.bearerToken = std::string(text::trim(m_settings.get("Web", "Token")));
        options.timeoutSeconds = std::max<long>(1, m_settings.intValue("Web", "Timeout"));
        poster = std::make_unique<HttpPoster>(std::move(options));
    }
    const ui::BusyScope busy(m_ui);
    ui::ListModel& list = m_window.list();
    const xml::Document& kept = m_window.listDocument();
    int total = 0;
    for (const ui::ListRow& row : list.rows()) {
        total += row.checked ? 1 : 0;
    }
    for (int r = 0; r < list.rowCount(); ++r) {
        if (!list.row(r).checked) {
            continue;
        }
        ++report.ticked;
        const std::string name = list.row(r).cells.size() > 2 ? list.row(r).cells[2] : "";
        std::string why;
        const xml::Node item =
            kept.selectOne("/QBXML/QBXMLMsgsRs/*/*[ListID = $id]", {{"id", list.row(r).key}});
        if (!item) {
            why = name + " is no longer in QuickBooks' answer; list the items again";
        } else if (auto json = sheet->transformNode(item); !json) {
            why = name + " could not be converted: " + json.error().description;
        } else if (poster) {
            m_window.setStatusText("Sending " + name + " ...");
            m_ui.yield();
            auto status = poster->post(*json);
            if (!status) {
                why = status.error().description;
            } else if (*status < 200 || *status > 299) {
                // A redirect is not followed: the post would turn into a fetch of another
                // page, whose success says nothing about the item.
                why = "the web site answered " + std::to_string(*status) + " for " + name;
                if (*status >= 300 && *status <= 399) {
                    why +=
                        " (a redirect: nothing was stored; set Web UpdateURL to the address "
                        "that takes the items)";
                }
            }
        }
        if (why.empty()) {
            ++report.accepted;
            list.setChecked(r, false);
        } else {
            ++report.failed;
            report.refusals.push_back({list.row(r).key, name, why});
            m_window.setStatusText(why);
        }
        if (m_itemDone) {
            m_itemDone(r, why.empty(), why);
        }
        m_window.setProgress(100 * report.ticked / total);
        m_ui.yield();
    }
    m_window.setProgress(-1);
    m_window.setStatusText("Update done");
    if (!report.notes().empty()) {
        showResultPage(report);
    }
    return report;
}

std::vector<std::string> UpdateReport::notes() const {
    std::vector<std::string> out;
    if (noSite && ticked > 0) {
        out.push_back(
            "No web site is set, so nothing was sent: the items were converted and "
            "unticked only. Set the address with: dorvane settings set Web UpdateURL "
            "https://...");
    }
    if (failed > 0) {
        out.push_back(std::to_string(failed) + " of " + std::to_string(ticked) +
                      " not taken by the site, still ticked; press Update again to resend them.");
    }
    return out;
}

void WebUpdater::showResultPage(const UpdateReport& report) {
    std::string page = "<html><body><h3>Web update</h3>";
    for (const std::string& note : report.notes()) {
        page += "<p>" + xml::escapeText(note) + "</p>";
    }
    if (!report.refusals.empty()) {
        page +=
            "<table border=1 cellspacing=0 cellpadding=3><tr><th>Name</th><th>ID</th>"
            "<th>Why it is still ticked</th></tr>";
        for (const UpdateReport::Refusal& r : report.refusals) {
            page += "<tr><td>" + xml::escapeText(r.name) + "</td><td>" + xml::escapeText(r.listId) +
                    "</td><td>" + xml::escapeText(r.why) + "</td></tr>";
        }
        page += "</table>";
    }
    page += "</body></html>";
    if (Status written = m_folder.writeProgramFile(page, kResultPage); !written) {
        m_ui.messageBox("Could not write " + m_folder.filePath(kResultPage) + ": " +
                        written.error().description);
        return;
    }
    m_ui.openWithDesktop(m_folder.filePath(kResultPage));
}

}  // namespace dorvane::webupdate
