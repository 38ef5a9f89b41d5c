// SPDX-License-Identifier: GPL-3.0-or-later
#include "browser/loaders.h"

#include <cstdlib>
#include <unordered_map>
#include <utility>

#include "browser/sentlog.h"
#include "common/memory.h"
#include "common/text.h"
#include "company/companyinfo.h"
#include "platform/programfolder.h"
#include "platform/settings.h"
#include "qbgateway/gateway.h"
#include "qbgateway/templates.h"
#include "ui/documentwindow.h"
#include "ui/uiport.h"

namespace dorvane::browser {
namespace {

constexpr const char* kNoCompanyFile = "Could not access the company file";
constexpr std::size_t kProgressEvery = 100;
constexpr const char* kCompanySwitched =
    "QuickBooks opened another company file while the list was loading.";

std::vector<ui::ListColumn> columns(const DocumentType& type, const ListView& view) {
    std::vector<ui::ListColumn> out;
    for (const char* c : type.columns) {
        if (!c) {
            break;
        }
        out.push_back({c, 0, 1.0 / 6});  // each a sixth of the list's width
    }
    if (view.extraColumns()) {
        out.push_back({kNumberCaption});  // as wide as their contents
        out.push_back({kOpenBalanceCaption});
    }
    return out;
}

// The element of a record that names whom it goes to.
const char* recipientRef(AddressSource source) {
    switch (source) {
        case AddressSource::Vendor:
            return "VendorRef";
        case AddressSource::Entity:
            return "EntityRef";
        case AddressSource::Customer:
        case AddressSource::Record:
            break;
    }
    return "CustomerRef";
}

double number(const std::string& text) {
    return std::strtod(text.c_str(), nullptr);
}

// An amount as two decimals; empty stays empty.
std::string money(const std::string& text) {
    if (text.empty()) {
        return text;
    }
    return text::twoDecimals(number(text));
}

}  // namespace

const std::string& rowStatus(const DocumentType& type, const ui::ListRow& row) {
    static const std::string none;
    const std::size_t status = statusColumn(type);
    return status < row.cells.size() ? row.cells[status] : none;
}

ListView listViewSettings(const platform::SettingsStore& settings) {
    return {.openBalances = settings.intValue(kViewSection, kOpenBalancesKey) != 0,
            .unpaidOnly = settings.intValue(kViewSection, kUnpaidOnlyKey) != 0};
}

std::optional<std::int16_t> durationToMinutes(std::string_view duration) {
    // PT2H30M → 2:30:00, read as a time of day.
    std::string t = text::replaceAll(duration, "PT", "");
    t = text::replaceAll(t, "H", ":");
    t = text::replaceAll(t, "M", ":00");
    std::vector<std::string> parts = text::split(t, ':');
    if (parts.size() < 2 || parts.size() > 3) {
        return std::nullopt;
    }
    auto whole = [](const std::string& s) -> std::optional<int> {
        std::string_view v = text::trim(s);
        if (v.empty() || v.size() > 4) {
            return std::nullopt;
        }
        int n = 0;
        for (char c : v) {
            if (c < '0' || c > '9') {
                return std::nullopt;
            }
            n = n * 10 + (c - '0');
        }
        return n;
    };
    auto hours = whole(parts[0]);
    // "PT1H" leaves "1:" behind: an hour with no minutes.
    auto minutes = parts.size() == 2 && parts[1].empty() ? std::optional<int>(0) : whole(parts[1]);
    std::optional<int> seconds = 0;
    if (parts.size() == 3) {
        // "PT2H30M15S" leaves "15S" behind the minutes; seconds only count when well formed.
        std::string s = parts[2];
        if (!s.empty() && s.back() == 'S') {
            s.pop_back();
        }
        seconds = whole(s);
    }
    if (!hours || !minutes || !seconds || *hours > 23 || *minutes > 59 || *seconds > 59) {
        return std::nullopt;
    }
    return static_cast<std::int16_t>(*hours * 60 + *minutes);
}

DocumentBrowser::DocumentBrowser(ui::DocumentWindow& window, qbgateway::Gateway& gateway,
                                 const platform::ProgramFolder& folder,
                                 company::CompanyInfo& company, ui::UiPort& ui)
    : m_window(window),
      m_gateway(gateway),
      m_folder(folder),
      m_company(company),
      m_ui(ui),
      m_recipients(folder, gateway, ui) {}

void DocumentBrowser::loadList(const std::string& name, const std::string& timeframe,
                               ListView view) {
    m_view = view;
    const DocumentType* type = findDocumentType(name);
    if (!type || !fetch(*type, timeframe)) {
        return;
    }
    switch (type->shape) {
        case ListShape::Transactions:
            loadTransactions(*type);
            break;
        case ListShape::Statements:
            loadStatements(*type);
            break;
        case ListShape::Timesheets:
            loadTimesheets(*type);
            break;
    }
}

bool DocumentBrowser::fetch(const DocumentType& type, const std::string& timeframe) {
    m_window.setStatusText("parsing information ...");
    const std::string request = qbgateway::fillDateMacro(
        ui::textOrShown(m_folder.readProgramFile(type.requestTemplate), m_ui), timeframe);
    // The last list's document goes before the new one is read (a failed answer would
    // replace it anyway). Freeing a tree of a million nodes takes a while: a worker does it
    // while QuickBooks answers, and the new tree is built in the memory the old one leaves.
    m_recipients.indexListDocument(xml::Document());
    memory::disposeLater(std::exchange(m_window.listDocument(), xml::Document()));
    const std::string response = m_gateway.processCompanyRequest(request);
    auto doc = xml::Document::parse(response);
    // The failed answer replaces the list document too; the rows stay as they were.
    m_window.listDocument() = doc ? std::move(doc).value() : xml::Document();
    m_recipients.indexListDocument(m_window.listDocument());
    m_window.setStatusText("");
    if (m_window.listDocument().empty()) {
        m_ui.messageBox(std::string(kNoCompanyFile) + "(1)");
        m_window.setStatusText(kNoCompanyFile);
        return false;
    }
    m_window.setCompanyText(m_company.companyAddressText());
    if (m_window.companyText().empty()) {
        m_ui.messageBox(std::string(kNoCompanyFile) + "(2)");
        m_window.setStatusText(kNoCompanyFile);
    }
    m_window.list().clear();
    m_window.sentLogText() = ui::textOrShown(m_folder.readProgramFile(kSentLogFile), m_ui);
    m_window.list().setColumns(columns(type, m_view));
    return true;
}

namespace {

// A row ready to send: checked, icon 3, "Ready to send" after the cells (moved in).
ui::ListRow readyRow(std::string text, std::initializer_list<std::string*> cells, std::string key) {
    ui::ListRow row;
    row.checked = true;
    row.icon = kIconReady;
    row.cells.reserve(cells.size() + 2);
    row.cells.push_back(std::move(text));
    for (std::string* c : cells) {
        row.cells.push_back(std::move(*c));
    }
    row.cells.emplace_back(kReady);
    row.key = std::move(key);
    return row;
}

// Unchecks a row and says why in its status cell (the type's last column).
void markRow(ui::ListRow& row, int icon, const char* status, const DocumentType& type) {
    row.checked = false;
    row.icon = icon;
    row.cells[statusColumn(type)] = status;
}

// The fields a transaction row shows, gathered in one walk over the record's children (the
// first of each name counts, as a path lookup would find it).
struct TxnFields {
    std::string txnId, date, amount, name, listId, memo;
    std::string number, open;  // RefNumber and the type's open-balance element
    bool anyReceived = false;  // purchase orders: a line with a received quantity above 0
};

void readParty(xml::Node ref, TxnFields& f) {
    bool haveId = false;
    bool haveName = false;
    for (xml::Node c = ref.firstChildElement(); c && !(haveId && haveName);
         c = c.nextSiblingElement()) {
        const std::string n = c.name();
        if (!haveId && n == "ListID") {
            f.listId = c.text();
            haveId = true;
        } else if (!haveName && n == "FullName") {
            f.name = c.text();
            haveName = true;
        }
    }
}

TxnFields readTransaction(xml::Node record, const DocumentType& type, std::string_view ref,
                          bool purchaseOrder, double& lastReceived) {
    TxnFields f;
    const std::string_view amount = type.amount;
    const std::string_view remaining = type.remaining ? type.remaining : "";
    bool haveId = false, haveDate = false, haveAmount = false, haveRef = false, haveMemo = false;
    bool haveNumber = false, haveOpen = false;
    for (xml::Node c = record.firstChildElement(); c; c = c.nextSiblingElement()) {
        const std::string n = c.name();
        if (!haveId && n == "TxnID") {
            f.txnId = c.text();
            haveId = true;
        } else if (!haveDate && n == "TxnDate") {
            f.date = c.text();
            haveDate = true;
        } else if (!haveAmount && n == amount) {
            f.amount = c.text();
            haveAmount = true;
        } else if (!haveRef && n == ref) {
            readParty(c, f);
            haveRef = true;
        } else if (!haveNumber && n == "RefNumber") {
            f.number = c.text();
            haveNumber = true;
        } else if (!haveOpen && n == remaining) {
            f.open = c.text();
            haveOpen = true;
        } else if (purchaseOrder && !haveMemo && n == "Memo") {
            f.memo = c.text();
            haveMemo = true;
        } else if (purchaseOrder && !f.anyReceived && n == "PurchaseOrderLineRet") {
            // The received quantities in order, up to the first one above 0; the last value
            // looked at carries over to the next order.
            for (xml::Node q = c.firstChildElement(); q; q = q.nextSiblingElement()) {
                if (q.name() == "ReceivedQuantity") {
                    lastReceived = number(q.text());
                    if (lastReceived > 0) {
                        f.anyReceived = true;
                        break;
                    }
                }
            }
        }
    }
    return f;
}

// A load that stops half-way leaves rows with figures that may be short: none of them may
// stay checked.
void markIncomplete(const DocumentType& type, std::vector<ui::ListRow>& rows) {
    for (ui::ListRow& row : rows) {
        if (row.checked) {
            markRow(row, 0, kIncomplete, type);
        }
    }
}

}  // namespace

void DocumentBrowser::stopIncomplete(const DocumentType& type, std::vector<ui::ListRow> rows,
                                     const std::string& why) {
    markIncomplete(type, rows);
    m_window.list().setRows(std::move(rows));
    m_ui.messageBox(why + " The list is incomplete: no row is checked.");
    m_window.setStatusText(kIncompleteStatus);
}

void DocumentBrowser::progress(std::size_t done, std::size_t total) {
    if (done % kProgressEvery == 0 && done > 0) {
        m_window.setStatusText("parsing information ... " + std::to_string(done) + " of " +
                               std::to_string(total));
        m_ui.yield();
    }
}

bool DocumentBrowser::hidden(const DocumentType& type, const std::string& open) const {
    // A type without an open balance is never filtered, nor is a record that does not say.
    return m_view.unpaidOnly && type.openBalance != OpenBalance::None && !open.empty() &&
           number(open) <= 0;
}

void DocumentBrowser::addViewCells(ui::ListRow& row, std::string number, std::string open) const {
    if (m_view.extraColumns()) {
        row.cells.push_back(std::move(number));
        row.cells.push_back(money(open));
    }
}

std::string DocumentBrowser::recipientEmail(AddressSource source, const std::string& listId) {
    switch (source) {
        case AddressSource::Customer:
            return m_recipients.getCustomerEmail(listId);
        case AddressSource::Vendor:
            return m_recipients.getVendorEmail(listId);
        case AddressSource::Entity:
            return m_recipients.getEntityEmail(listId);
        case AddressSource::Record:
            break;
    }
    return {};
}

void DocumentBrowser::loadTransactions(const DocumentType& type) {
    auto& list = m_window.list();
    const SentLogIndex sent(m_window.sentLogText());
    // Purchase orders, the only documents for vendors, have rules of their own.
    const bool purchaseOrders = type.address == AddressSource::Vendor;
    const std::string_view ref = recipientRef(type.address);
    double lastReceived = 0;  // carried over from one purchase order to the next
    // A lookup that finds another company file open has the company reloaded; the rows so far
    // belong to the list of the one before.
    const std::string companyFile = m_gateway.currentCompanyFile();

    const auto records = m_window.listDocument().selectAll(type.recordPath);
    std::vector<ui::ListRow> rows;
    rows.reserve(records.size());
    std::size_t done = 0;
    for (xml::Node record : records) {
        progress(done++, records.size());
        TxnFields f = readTransaction(record, type, ref, purchaseOrders, lastReceived);
        // An order with any received line is not listed; an order without received
        // quantities is judged by the value the order before it ended on.
        if (purchaseOrders && lastReceived != 0) {
            continue;
        }
        if (type.openBalance == OpenBalance::Paid) {
            f.open = "0.00";
        }
        if (hidden(type, f.open)) {
            continue;
        }
        if (purchaseOrders && !f.memo.empty()) {
            f.name += "/" + f.memo;
        }
        std::string email = recipientEmail(type.address, f.listId);
        if (m_gateway.currentCompanyFile() != companyFile) {
            stopIncomplete(type, std::move(rows), kCompanySwitched);
            return;
        }
        const bool noAddress = email.empty();
        const bool alreadySent = sent.contains(f.txnId);
        std::string key = f.txnId;
        ui::ListRow& row = rows.emplace_back(
            readyRow(std::move(f.date), {&f.txnId, &f.name, &f.amount, &email}, std::move(key)));
        addViewCells(row, std::move(f.number), std::move(f.open));
        // The sent-log test comes last: an already-sent row without address says so.
        if (alreadySent) {
            markRow(row, kIconAlreadySent, kAlreadySent, type);
        } else if (noAddress) {
            markRow(row, kIconInvalid, kMissingEmail, type);
        }
    }
    list.setRows(std::move(rows));
    m_window.setStatusText("");
}

void DocumentBrowser::loadStatements(const DocumentType& type) {
    auto& list = m_window.list();
    const auto customers = m_window.listDocument().selectAll(type.recordPath);
    std::vector<ui::ListRow> rows;
    std::size_t done = 0;
    for (xml::Node customer : customers) {
        progress(done++, customers.size());
        if (customer.valueOf("IsActive") != "true") {
            continue;
        }
        std::string balance = customer.valueOf("Balance");
        std::string open = openBalanceText(type, customer);
        if (hidden(type, open)) {
            continue;
        }
        std::string email = customer.valueOf("Email");
        std::string name = customer.valueOf("FullName");
        std::string listId = customer.valueOf("ListID");
        const bool noAddress = email.empty();
        const bool balanced = balance == "0.00";
        std::string key = listId;
        std::string number = customer.valueOf("AccountNumber");
        ui::ListRow& row =
            rows.emplace_back(readyRow("", {&listId, &name, &balance, &email}, std::move(key)));
        addViewCells(row, std::move(number), std::move(open));
        // A zero balance wins over a missing address.
        if (balanced) {
            markRow(row, kIconBalanced, kBalanced, type);
        } else if (noAddress) {
            markRow(row, kIconInvalid, kMissingEmail, type);
        }
    }
    list.setRows(std::move(rows));
    m_window.setStatusText("");
}

void DocumentBrowser::loadTimesheets(const DocumentType& type) {
    auto& list = m_window.list();
    const std::string ref = recipientRef(type.address);
    std::vector<ui::ListRow> rows;
    std::unordered_map<std::string, std::size_t> rowOfName;
    const std::string companyFile = m_gateway.currentCompanyFile();
    const auto entries = m_window.listDocument().selectAll(type.recordPath);
    std::size_t done = 0;
    for (xml::Node entry : entries) {
        progress(done++, entries.size());
        const std::string durationText = entry.valueOf("Duration");
        auto minutes = durationToMinutes(durationText);
        if (!minutes) {
            stopIncomplete(type, std::move(rows),
                           "The time entry of " + entry.valueOf("TxnDate") +
                               " has a duration that cannot be read: \"" + durationText + "\".");
            return;
        }
        std::string name = entry.valueOf(ref + "/FullName");
        const std::string listId = entry.valueOf(ref + "/ListID");
        std::string email = recipientEmail(type.address, listId);
        if (m_gateway.currentCompanyFile() != companyFile) {
            stopIncomplete(type, std::move(rows), kCompanySwitched);
            return;
        }
        auto found = rowOfName.find(name);
        if (found == rowOfName.end()) {
            const bool noAddress = email.empty();
            std::string key = name;
            std::string total = std::to_string(*minutes);
            rowOfName.emplace(name, rows.size());
            ui::ListRow& row = rows.emplace_back(
                readyRow(entry.valueOf("TxnDate"), {&name, &total, &email}, std::move(key)));
            addViewCells(row, {}, {});
            if (noAddress) {
                markRow(row, kIconInvalid, kMissingEmail, type);
            }
            continue;
        }
        std::string& cell = rows[found->second].cells[2];
        const long total = std::strtol(cell.c_str(), nullptr, 10) + *minutes;
        if (total > INT16_MAX) {
            stopIncomplete(type, std::move(rows),
                           "The time of " + name + " is too long to add up.");
            return;
        }
        cell = std::to_string(total);
    }
    list.setRows(std::move(rows));
    m_window.setStatusText("");
}

}  // namespace dorvane::browser
