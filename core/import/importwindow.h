// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — the import window (Form1): its state, its controls' state and its commands.
//
// One document at a time: an exchange file (an invoice, estimate or sales receipt another
// company sent), an Authorize.Net receipt taken from the clipboard, or a handheld file. The
// window recognises the kind by the root element, previews it through a style sheet, matches
// the other party against the user's vendors or customers, and on Import converts it into the
// user's own transaction (bill, purchase order, check, credit-card charge, sales receipt),
// rewritten onto the import settings and sent to QuickBooks behind the qbXML 1.1 prolog.
//
// The window orchestrates; the conversion per kind (import/conversion.h), the counterparts
// (import/counterparts.h), the duplicate query (import/duplicates.h), the receipts
// (import/receiptimport.h) and the add request (import/booking.h) are units of their own.
//
// A front end renders the caption, the controls, the counterpart list, the account list, the
// labels, the pane and the status text, and forwards the person's commands here. Everything a
// person must answer goes through the UI port.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "import/assignment.h"
#include "import/booking.h"
#include "import/conversion.h"
#include "import/counterparts.h"
#include "import/duplicates.h"
#include "import/exchangefile.h"
#include "import/importsurface.h"
#include "import/receiptimport.h"
#include "ui/windowmodel.h"
#include "xml/xml.h"

namespace dorvane::platform {
class ProgramFolder;
}  // namespace dorvane::platform

namespace dorvane::qbgateway {
class DefaultRecords;
class Gateway;
}  // namespace dorvane::qbgateway

namespace dorvane::ui {
class UiPort;
}

namespace dorvane::imports {

// ---- controls and menu entries, by their names ------------------------------------------

inline constexpr const char* kImportWindowName = "Form1";
inline constexpr const char* kVendorListView = "VendorListView";
inline constexpr const char* kNameText = "custorVendorNameText";
inline constexpr const char* kLabel1 = "Label1";
inline constexpr const char* kLabel2 = "Label2";
inline constexpr const char* kSelAccountLabel = "SelAccountLabel";
inline constexpr const char* kSelAccountCombo = "Selaccountcombo";
inline constexpr const char* kWebBrowser = "WebBrowser1";
inline constexpr const char* kAddItemBtn = "AddItemBtn";
inline constexpr const char* kSelItemBtn = "SelItemBtn";
inline constexpr const char* kClearSelBtn = "ClearSelBtn";
inline constexpr const char* kStatusBar = ui::kStatusBar;

inline constexpr const char* kOptionsMenu = "Options";
inline constexpr const char* kSelDVXImport = "SelDVXImport";
inline constexpr const char* kSetPref = "setPref";
inline constexpr const char* kCapAuthorize = "capAuthorize";
inline constexpr const char* kImpAuthNetBatch = "ImpAuthNetBatch";
inline constexpr const char* kImpAuthNetBulk = "ImpAuthNetBulk";
inline constexpr const char* kSynchronizePDA = "SynchronizePDA";
inline constexpr const char* kInitPDA = "InitPDA";

// The controls and menu entries whose state the window keeps.
inline constexpr const char* kImportWindowControls[] = {
    kVendorListView,  kNameText,       kLabel1,         kLabel2,     kSelAccountLabel,
    kSelAccountCombo, kWebBrowser,     kAddItemBtn,     kSelItemBtn, kClearSelBtn,
    kStatusBar,       kOptionsMenu,    kSelDVXImport,   kSetPref,    kCapAuthorize,
    kImpAuthNetBatch, kImpAuthNetBulk, kSynchronizePDA, kInitPDA,
};

// ---- texts ---------------------------------------------------------------------------

inline constexpr const char* kIdleCaption = "Dorvane - Select Invoice or Estimate";
inline constexpr const char* kSelectFileTitle = "Select DVX file";
inline constexpr const char* kSelectFileFilter =
    "Dorvane (*.dvx)|*.dvx|XML (*.xml)|*.xml|All files (*.*)|*.*";
inline constexpr const char* kCannotRetrieveVendorName =
    "Cannot retrieve vendorname. DVX file invalid";
inline constexpr const char* kPreviewHtmlFile = "viewitem.htm";
inline constexpr const char* kPreviewXmlFile = "viewitem.xml";

// What the last Import did, for a front end that tells it in sentences.
struct ImportReport {
    std::vector<MissingRecord> missing;  // why nothing was written
    std::string declinedCreation;        // "vendor" or "customer": the person said no to adding
    std::string declinedName;            // … the one of this name
    std::vector<AddedRecord> added;      // what QuickBooks took, in order
};

// The menu entries that later subsystems fill in; an empty one does nothing.
struct ImportWindowServices {
    std::function<void()> impAuthNetBatch;
    std::function<void()> impAuthNetBulk;
    std::function<void()> synchronizePDA;
    // Writes the empty handheld file a new handheld lacks.
    std::function<void()> initializePDA;
    // The Import button on a handheld file.
    std::function<void()> importTimeTracking;
};

// Changes are told under the name of the control that shows them (kVendorListView, kLabel1,
// kWebBrowser, kSelAccountCombo, kNameText, kStatusBar, …) or ui::kCaption.
class ImportWindow final : public ui::WindowModel, public ImportSurface {
public:
    ImportWindow(ui::UiPort& ui, const platform::ProgramFolder& folder, qbgateway::Gateway& gateway,
                 ImportSettingsSource& settings, qbgateway::DefaultRecords& lists);

    void setServices(ImportWindowServices services) { m_services = std::move(services); }
    void setDuplicatePolicy(DuplicatePolicy policy) { m_duplicatePolicy = policy; }

    // The main window's Import button: reads the import settings, then the window opens with
    // the pane, the Import button, the account choice, Label2 and the name box hidden.
    void open();

    // ---- commands ----
    // SelItemBtn and the SelDVXImport entry: the file dialog, then openExchangeFile.
    void chooseFile();
    void openExchangeFile(const std::string& path) override;
    // AddItemBtn.
    void importSelectedDocument();
    // ClearSelBtn: no counterpart chosen, so the next import creates one.
    void clearSelection();
    // A click on an item of VendorListView.
    void itemClicked(std::size_t index);
    // The person typed in custorVendorNameText.
    void setNameText(std::string text);
    // The person chose an entry of Selaccountcombo.
    void selectAccount(std::size_t index);
    // setPref: the import preferences dialog (Dialog3).
    void showPreferences();
    // capAuthorize: a receipt from the clipboard.
    void captureAuthorizeNetReceipt();
    // The same with the receipt's text given (the command line reads it from a file).
    void captureReceiptText(std::string_view receiptText);
    // A menu entry by its name (every entry of the Options menu).
    void runMenuEntry(std::string_view name);

    // ---- what the batch import and the handheld sync use ----
    void setImportStatusText(std::string text) override { setStatusText(std::move(text)); }
    // Points WebBrowser1 at a file of the program folder (shown) / replaces its page's body.
    void navigate(std::string_view fileName) override;
    void setBrowserBody(std::string body) override;
    void resetImportWindow() override;
    xml::Document& exchangeDocument() override { return m_document; }

    // ---- state ----
    const std::string& label1() const { return m_label1; }
    const std::string& nameText() const { return m_nameText; }
    const CounterpartList& counterparts() const { return m_list; }
    const std::vector<PaymentAccount>& accounts() const { return m_accounts; }
    std::optional<std::size_t> selectedAccount() const { return m_selectedAccount; }
    // The pane: the file it shows ("" before the first preview) and, once a result replaced
    // it, the new body.
    const std::string& browserFile() const { return m_browserFile; }
    const std::optional<std::string>& browserBody() const { return m_browserBody; }
    // The page the pane shows: the file's text, its body replaced when a result replaced it.
    std::string browserPage() const;

    const std::string& documentKind() const { return m_documentKind; }
    const ImportSettings& importSettings() const { return m_settings.current(); }
    ImportOutcome lastOutcome() const { return m_outcome; }
    const ImportReport& lastReport() const { return m_report; }

    ui::UiPort& ui() { return m_ui; }
    const platform::ProgramFolder& folder() const { return m_folder; }

    // The import settings again from the store (after Dialog3's OK, or a change elsewhere).
    void reloadImportSettings() { m_settings.reload(); }

private:
    void previewDocument(std::string_view styleSheetName, xml::Node node);
    void loadPaymentAccountList();
    void setLabel1(std::string text);
    void setList(CounterpartList list);
    void loadCounterparts(Party party);
    void matchCounterpart(Party party);
    // The paying account chosen in Selaccountcombo; null when none is.
    const PaymentAccount* payingAccount() const;

    bool addVendorFromDocument();
    bool addCustomerFromReceipt(const std::string& name);
    // Sends a request that adds a vendor or a customer; the status says how it went.
    bool addParty(const std::optional<std::string>& request, const char* addedStatus);
    // False, with the missing records reported, when the converted document would name a record
    // of the import preferences that QuickBooks lacks, or has no account to be paid from.
    bool preferencesNameRecordsQuickBooksHas(DocumentKind kind);
    bool convertAndSend(const Conversion& conversion);
    // Sends one add request and judges the answer; notes the outcome and what was added.
    bool sendAddRequest(std::string_view body);
    // False when the document is in QuickBooks already and is not to be booked again.
    bool passesDuplicateGuard(std::string_view request);
    bool receiptPassesDuplicateGuard();
    void captureReceipt(const std::function<std::optional<std::string>()>& read);
    void importAuthorizeNetReceipt();

    ui::UiPort& m_ui;
    const platform::ProgramFolder& m_folder;
    qbgateway::Gateway& m_gateway;
    ImportSettingsSource& m_settings;
    qbgateway::DefaultRecords& m_lists;
    Converter m_converter;
    Counterparts m_counterparts;
    ReceiptImport m_receipts;
    ImportWindowServices m_services;
    DuplicatePolicy m_duplicatePolicy = DuplicatePolicy::Ask;

    std::string m_label1;
    std::string m_nameText;
    CounterpartList m_list;
    std::vector<PaymentAccount> m_accounts;
    std::optional<std::size_t> m_selectedAccount;
    std::string m_browserFile;
    std::optional<std::string> m_browserBody;

    xml::Document m_document;
    std::string m_documentKind;
    ImportOutcome m_outcome = ImportOutcome::None;
    Booking m_booking;  // the last add request's
    ImportReport m_report;
};

}  // namespace dorvane::imports
