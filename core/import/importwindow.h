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
#include "import/exchangefile.h"
#include "ui/windowmodel.h"
#include "xml/xml.h"

namespace dorvane::platform {
class ProgramFolder;
class SettingsStore;
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

// The controls and menu entries whose state the window keeps.
inline constexpr const char* kImportWindowControls[] = {
    kVendorListView,  kNameText,       kLabel1,         kLabel2,     kSelAccountLabel,
    kSelAccountCombo, kWebBrowser,     kAddItemBtn,     kSelItemBtn, kClearSelBtn,
    kStatusBar,       kOptionsMenu,    kSelDVXImport,   kSetPref,    kCapAuthorize,
    kImpAuthNetBatch, kImpAuthNetBulk, kSynchronizePDA,
};

// ---- texts ---------------------------------------------------------------------------

inline constexpr const char* kIdleCaption = "Dorvane - Select Invoice or Estimate";
inline constexpr const char* kSelectFileTitle = "Select DVX file";
inline constexpr const char* kSelectFileFilter =
    "Dorvane (*.dvx)|*.dvx|XML (*.xml)|*.xml|All files (*.*)|*.*";
inline constexpr const char* kErrorStatus = "An error occurred";
inline constexpr const char* kCannotRetrieveVendorName =
    "Cannot retrieve vendorname. DVX file invalid";
inline constexpr const char* kPreviewHtmlFile = "viewitem.htm";
inline constexpr const char* kPreviewXmlFile = "viewitem.xml";
// The question asked before a document already booked is booked again.
inline constexpr const char* kAlreadyInQuickBooks = "This document is already in QuickBooks: ";
inline constexpr const char* kReceiptAlreadyImported =
    "This Authorize.Net transaction was imported before: ";

// What happened to the last transaction the window tried to book.
enum class ImportOutcome {
    None,         // nothing tried yet, or the document kind books nothing here
    Added,        // QuickBooks accepted it
    Refused,      // QuickBooks answered with an error
    Unreachable,  // no answer from QuickBooks (the gateway said why)
    NotSent,      // the person cancelled, a step found nothing to send, or it was a duplicate
};

// What the window does when the document seems to be in QuickBooks already.
enum class DuplicatePolicy {
    Ask,     // ask the person (the window)
    Refuse,  // never book it again (the command line without --again)
    Allow,   // book it again without asking (--again)
};

// The one-column counterpart list: vendors, or customers for a receipt.
struct CounterpartList {
    std::string columnHeader;  // "Vendor" or "Customer"
    std::vector<std::string> items;
    std::optional<std::size_t> selected;
    std::optional<std::size_t> bold;  // the matched item
    bool enabled = true;

    // Partial mode: the first item whose text begins with `text`, any case.
    std::optional<std::size_t> findPartial(std::string_view text) const;
    // Whole-word mode: the first item whose text begins with `text` as a whole word (the item
    // is `text`, or goes on with a character that is not a letter or digit), any case.
    std::optional<std::size_t> findWholeWord(std::string_view text) const;
};

// A record the import needs that the user's QuickBooks lacks, found before anything is written:
// one the import preferences name (with the preference's key), or an account that can pay a
// sales receipt.
struct MissingRecord {
    std::string kind;         // "item", "item group", "terms", "account", "payment account"
    std::string name;         // the name looked for; the payment account's, when there is one
    std::string settingKey;   // kItemKey, kItemGroupKey, kTermKey, kAccountKey; "" for payment
    std::string accountType;  // the payment account's type, when it is neither Bank nor CreditCard
};

// "QuickBooks has no item 'X' (import preference Item)" and the like, one sentence per record.
std::string describeMissing(const MissingRecord& record);

// A record QuickBooks took during an import, as its answer describes it.
struct AddedRecord {
    std::string noun;       // "vendor", "customer", "bill", "purchase order", "check", …
    std::string name;       // a vendor's or customer's name
    std::string refNumber;  // a transaction's number
    std::string total;
    std::string account;  // the account that pays a check or a card charge
    std::string party;    // the vendor, payee or customer a transaction names
};

// What the last Import did, for a front end that tells it in sentences.
struct ImportReport {
    std::vector<MissingRecord> missing;  // why nothing was written
    std::string declinedCreation;        // "vendor" or "customer": the person said no to adding
    std::string declinedName;            // … the one of this name
    std::vector<AddedRecord> added;      // what QuickBooks took, in order
};

// An entry of Selaccountcombo: the account's name and, as its tag, its type.
struct PaymentAccount {
    std::string name;
    std::string type;  // "Bank", "CreditCard", …
};

// The menu entries that later subsystems fill in; an empty one does nothing.
struct ImportWindowServices {
    std::function<void()> impAuthNetBatch;
    std::function<void()> impAuthNetBulk;
    std::function<void()> synchronizePDA;
    // The Import button on a handheld file.
    std::function<void()> importTimeTracking;
};

// Changes are told under the name of the control that shows them (kVendorListView, kLabel1,
// kWebBrowser, kSelAccountCombo, kNameText, kStatusBar, …) or ui::kCaption.
class ImportWindow final : public ui::WindowModel {
public:
    ImportWindow(ui::UiPort& ui, const platform::ProgramFolder& folder, qbgateway::Gateway& gateway,
                 platform::SettingsStore& settings, qbgateway::DefaultRecords& lists);

    void setServices(ImportWindowServices services) { m_services = std::move(services); }
    void setDuplicatePolicy(DuplicatePolicy policy) { m_duplicatePolicy = policy; }

    // The main window's Import button: reads the import settings, then the window opens with
    // the pane, the Import button, the account choice, Label2 and the name box hidden.
    void open();

    // ---- commands ----
    // SelItemBtn and the SelDVXImport entry: the file dialog, then openExchangeFile.
    void chooseFile();
    void openExchangeFile(const std::string& path);
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

    // ---- steps, public for the command line and the later subsystems ----
    void previewDocument(std::string_view styleSheetName, xml::Node node);
    void loadPaymentAccountList();
    void resetImportWindow();
    void setImportStatusText(std::string text) { setStatusText(std::move(text)); }
    // Points WebBrowser1 at a file of the program folder (shown) / replaces its page's body.
    void navigate(std::string_view fileName);
    void setBrowserBody(std::string body);

    bool importInvoiceAsBill();
    bool importEstimateAsPurchaseOrder();
    bool importSalesReceiptAsCharge();

    // Counterparts.
    void loadVendorList();
    void loadCustomerList();
    void matchVendor(const xml::Document& document);
    void matchCustomer(const xml::Document& document);
    bool addVendorFromDocument();
    bool addCustomerFromReceipt(const std::string& name);

    // Receipts.
    void readReceiptFromClipboard();
    // Writes the receipt document for `receiptText` to "tmpauthorize.xml" and opens it.
    void openReceiptText(std::string_view receiptText);
    void importAuthorizeNetReceipt();

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

    xml::Document& exchangeDocument() { return m_document; }
    const std::string& documentKind() const { return m_documentKind; }
    const ImportSettings& importSettings() const { return m_settings; }
    ImportOutcome lastOutcome() const { return m_outcome; }
    const ImportReport& lastReport() const { return m_report; }

    ui::UiPort& ui() { return m_ui; }
    const platform::ProgramFolder& folder() const { return m_folder; }
    qbgateway::Gateway& gateway() { return m_gateway; }

    // The import settings again from the store (after Dialog3's OK, or a change elsewhere).
    void reloadImportSettings();

    // Sends one add request (prolog in front) and judges the answer; notes the outcome.
    bool sendAddRequest(std::string_view body);

private:
    void setLabel1(std::string text);
    void setNameTextQuietly(std::string text);
    void setList(CounterpartList list);
    void fillList(const char* header, const std::string& request, const char* path,
                  const char* nameChild);
    void selectMatch(std::size_t index);
    bool convertAndSend(DocumentKind kind, std::string_view sheet, const char* status,
                        const char* successPage, const std::string& account = {});
    // False, with the missing records reported, when the converted document would name a record
    // of the import preferences that QuickBooks lacks, or has no account to be paid from.
    bool preferencesNameRecordsQuickBooksHas(DocumentKind kind);
    std::string conversionSheet(DocumentKind kind) const;
    // False when the document is in QuickBooks already and is not to be booked again.
    bool passesDuplicateGuard(std::string_view request);
    bool receiptPassesDuplicateGuard();
    void captureReceipt(const std::function<void()>& read);
    bool confirmAgain(const std::string& question);

    ui::UiPort& m_ui;
    const platform::ProgramFolder& m_folder;
    qbgateway::Gateway& m_gateway;
    platform::SettingsStore& m_store;
    qbgateway::DefaultRecords& m_lists;
    ImportWindowServices m_services;
    DuplicatePolicy m_duplicatePolicy = DuplicatePolicy::Ask;

    ImportSettings m_settings;
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
    ImportReport m_report;
};

}  // namespace dorvane::imports
