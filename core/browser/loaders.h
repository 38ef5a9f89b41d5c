// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — the document lists, built the way their document type says.
//
// A loader asks QuickBooks for the documents of the selected timeframe, keeps the answer as
// the window's list document, and fills ListView1 with one row per document: checked and
// "Ready to send" when the recipient has an address and the document is not in the sent log,
// otherwise unchecked with the reason.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "browser/documenttypes.h"
#include "browser/recipients.h"
#include "ui/listmodel.h"

namespace dorvane::platform {
class ProgramFolder;
class SettingsStore;
}  // namespace dorvane::platform

namespace dorvane::qbgateway {
class Gateway;
}  // namespace dorvane::qbgateway

namespace dorvane::ui {
class DocumentWindow;
class UiPort;
}  // namespace dorvane::ui

namespace dorvane::company {
class CompanyInfo;
}

namespace dorvane::browser {

// Row icons.
inline constexpr int kIconInvalid = 1;
inline constexpr int kIconAlreadySent = 2;
inline constexpr int kIconReady = 3;
inline constexpr int kIconBalanced = 4;

inline constexpr const char* kReady = "Ready to send";
inline constexpr const char* kMissingEmail = "Missing Email address";
inline constexpr const char* kAlreadySent = "Already sent";
inline constexpr const char* kBalanced = "Balanced";
// A row of a list whose load stopped half-way: its figures may be short.
inline constexpr const char* kIncomplete = "List incomplete";
inline constexpr const char* kIncompleteStatus = "The list is incomplete";

// The lists' view option (the settings' "View" section, the window's "&View" menu, list
// --open/--unpaid): after a type's own columns, the document's number ("No.") and what is open
// of it ("Open Balance", two decimals; empty where the type asks for no payment), and rows with
// nothing open left out of the list, so that a send run never gets to them.
struct ListView {
    bool openBalances = false;
    bool unpaidOnly = false;  // shows the two columns too

    bool extraColumns() const { return openBalances || unpaidOnly; }
    bool operator==(const ListView&) const = default;
};
inline constexpr const char* kViewSection = "View";
inline constexpr const char* kOpenBalancesKey = "OpenBalances";
inline constexpr const char* kUnpaidOnlyKey = "UnpaidOnly";
ListView listViewSettings(const platform::SettingsStore& settings);

// A row's status: its type's last own column, whatever the view adds after it.
const std::string& rowStatus(const DocumentType& type, const ui::ListRow& row);

// A qbXML duration ("PT2H30M") as whole minutes; nullopt when it is not a time of day
// (24 hours or more, or no hours part). Seconds are dropped.
std::optional<std::int16_t> durationToMinutes(std::string_view duration);

class DocumentBrowser {
public:
    DocumentBrowser(ui::DocumentWindow& window, qbgateway::Gateway& gateway,
                    const platform::ProgramFolder& folder, company::CompanyInfo& company,
                    ui::UiPort& ui);

    // Loads the list of a document type ("Invoice", ..., "TimesheetA") as `view` shows it; an
    // unknown type loads nothing.
    void loadList(const std::string& documentType, const std::string& timeframe,
                  ListView view = {});

    RecipientLookup& recipients() { return m_recipients; }

private:
    // Steps shared by every list up to the empty list with its columns; false when the
    // response did not load.
    bool fetch(const DocumentType& type, const std::string& timeframe);
    void loadTransactions(const DocumentType& type);
    void loadStatements(const DocumentType& type);
    void loadTimesheets(const DocumentType& type);
    // The address of the recipient a record's reference names.
    std::string recipientEmail(AddressSource source, const std::string& listId);
    void progress(std::size_t done, std::size_t total);
    // Whether the view leaves out a row with `open` open; then its cells after the row's own.
    bool hidden(const DocumentType& type, const std::string& open) const;
    void addViewCells(ui::ListRow& row, std::string number, std::string open) const;
    // Ends a load that cannot finish: shows the rows so far unchecked and says that the list
    // is incomplete.
    void stopIncomplete(const DocumentType& type, std::vector<ui::ListRow> rows,
                        const std::string& why);

    ui::DocumentWindow& m_window;
    qbgateway::Gateway& m_gateway;
    const platform::ProgramFolder& m_folder;
    company::CompanyInfo& m_company;
    ui::UiPort& m_ui;
    RecipientLookup m_recipients;
    ListView m_view;  // of the load under way
};

}  // namespace dorvane::browser
