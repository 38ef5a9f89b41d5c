// SPDX-License-Identifier: GPL-3.0-or-later
// The import window: opening a file, the preview, the Import button and the three
// counter-documents of an exchange file.
#include "import/importwindow.h"

#include <cctype>

#include "common/files.h"
#include "common/text.h"
#include "import/receipt.h"
#include "platform/programfolder.h"
#include "platform/settings.h"
#include "qbgateway/defaultrecords.h"
#include "ui/uiport.h"

namespace dorvane::imports {
namespace {

// The hidden-at-opening controls.
constexpr const char* kHiddenAtOpening[] = {kWebBrowser,      kAddItemBtn, kSelAccountLabel,
                                            kSelAccountCombo, kLabel2,     kNameText};

// "<body ...>" up to and including "</body>" in an HTML text, any case; npos when absent.
std::pair<std::size_t, std::size_t> bodyElement(const std::string& html) {
    const std::string lower = text::toLower(html);
    std::size_t open = lower.find("<body");
    while (open != std::string::npos && open + 5 < lower.size() &&
           std::isalnum(static_cast<unsigned char>(lower[open + 5]))) {
        open = lower.find("<body", open + 5);
    }
    const std::size_t close = lower.rfind("</body");
    if (open == std::string::npos || close == std::string::npos || close < open) {
        return {std::string::npos, std::string::npos};
    }
    const std::size_t end = lower.find('>', close);
    return {open, end == std::string::npos ? lower.size() : end + 1};
}

}  // namespace

// ---- the window ----------------------------------------------------------------------

ImportWindow::ImportWindow(ui::UiPort& ui, const platform::ProgramFolder& folder,
                           qbgateway::Gateway& gateway, ImportSettingsSource& settings,
                           qbgateway::DefaultRecords& lists)
    : WindowModel(kImportWindowControls, kIdleCaption),
      m_ui(ui),
      m_folder(folder),
      m_gateway(gateway),
      m_settings(settings),
      m_lists(lists),
      m_converter(folder, lists),
      m_counterparts(gateway, ui, folder),
      m_receipts(ui, folder) {}

void ImportWindow::open() {
    reloadImportSettings();
    for (const char* name : kHiddenAtOpening) {
        setControlVisible(name, false);
    }
    setNameText({});
}

void ImportWindow::setLabel1(std::string text) {
    m_label1 = std::move(text);
    notify(kLabel1);
}

void ImportWindow::setNameText(std::string text) {
    m_nameText = std::move(text);
    notify(kNameText);
}

void ImportWindow::setList(CounterpartList list) {
    list.enabled = m_list.enabled;
    m_list = std::move(list);
    notify(kVendorListView);
}

// ---- counterparts -------------------------------------------------------------------

// Emptied before QuickBooks is asked.
void ImportWindow::loadCounterparts(Party party) {
    CounterpartList list;
    list.columnHeader = Counterparts::header(party);
    setList(list);
    if (auto names = m_counterparts.names(party)) {
        list.items = std::move(*names);
        setList(std::move(list));
    }
}

void ImportWindow::matchCounterpart(Party party) {
    const auto match = imports::matchCounterpart(party, m_list, m_document);
    if (!match) {
        return;
    }
    m_list.selected = match->index;
    m_list.bold = match->index;
    notify(kVendorListView);
    setLabel1(match->report);
    if (match->nameText) {
        setNameText(*match->nameText);
    }
}

bool ImportWindow::addVendorFromDocument() {
    m_outcome = ImportOutcome::NotSent;
    const DocumentKind kind = recogniseKind(m_documentKind);
    if (m_ui.messageBox("Dorvane will now add a new vendor", ui::kProgramTitle, ui::Icon::None,
                        ui::Buttons::OkCancel) != ui::Answer::Ok) {
        if (kind == DocumentKind::Invoice || kind == DocumentKind::Estimate) {
            m_report.declinedCreation = "vendor";
            m_report.declinedName = m_document.valueOf("//CompanyRet/CompanyName");
        }
        return false;
    }
    return addParty(m_counterparts.vendorAddRequest(m_document, kind), "Vendor added");
}

bool ImportWindow::addCustomerFromReceipt(const std::string& name) {
    m_outcome = ImportOutcome::NotSent;
    if (m_ui.messageBox("Dorvane will now add the new customer " + name, ui::kProgramTitle,
                        ui::Icon::None, ui::Buttons::OkCancel) != ui::Answer::Ok) {
        m_report.declinedCreation = "customer";
        m_report.declinedName = name;
        return false;
    }
    return addParty(m_counterparts.customerAddRequest(m_document, name), "Customer added");
}

bool ImportWindow::addParty(const std::optional<std::string>& request, const char* addedStatus) {
    if (!request) {
        return false;
    }
    const bool added = sendAddRequest(*request);
    setImportStatusText(added ? addedStatus : "Some error occurred");
    return added;
}

void ImportWindow::clearSelection() {
    if (m_list.selected) {
        m_list.selected.reset();
        notify(kVendorListView);
    }
}

void ImportWindow::itemClicked(std::size_t index) {
    if (index >= m_list.items.size()) {
        return;
    }
    m_list.selected = index;
    notify(kVendorListView);
    setNameText(m_list.items[index]);
}

void ImportWindow::selectAccount(std::size_t index) {
    if (index < m_accounts.size()) {
        m_selectedAccount = index;
        notify(kSelAccountCombo);
    }
}

void ImportWindow::navigate(std::string_view fileName) {
    m_browserFile = m_folder.filePath(fileName);
    m_browserBody.reset();
    setControlVisible(kWebBrowser, true);
}

void ImportWindow::setBrowserBody(std::string body) {
    m_browserBody = std::move(body);
    notify(kWebBrowser);
}

std::string ImportWindow::browserPage() const {
    std::string page;
    if (!m_browserFile.empty()) {
        if (auto text = files::readAll(m_browserFile)) {
            page = std::move(text).value();
        }
    }
    if (!m_browserBody) {
        return page;
    }
    const auto [from, to] = bodyElement(page);
    if (from == std::string::npos) {
        return *m_browserBody;
    }
    return page.substr(0, from) + *m_browserBody + page.substr(to);
}

void ImportWindow::runMenuEntry(std::string_view name) {
    auto run = [](const std::function<void()>& service) {
        if (service) {
            service();
        }
    };
    if (name == kSelDVXImport) {
        chooseFile();
    } else if (name == kSetPref) {
        showPreferences();
    } else if (name == kCapAuthorize) {
        captureAuthorizeNetReceipt();
    } else if (name == kImpAuthNetBatch) {
        run(m_services.impAuthNetBatch);
    } else if (name == kImpAuthNetBulk) {
        run(m_services.impAuthNetBulk);
    } else if (name == kSynchronizePDA) {
        run(m_services.synchronizePDA);
    } else if (name == kInitPDA) {
        run(m_services.initializePDA);
    }
}

void ImportWindow::showPreferences() {
    {
        // Fetched at every opening, so an item or account just created in QuickBooks is there.
        const ui::BusyScope busy(m_ui);
        m_lists.loadItemList();
    }
    m_settings.store().reload();
    ImportPreferencesModel model(m_lists.itemList(), m_settings.store());
    if (!m_ui.runDialog(model)) {
        return;
    }
    if (Status saved = model.save(m_settings.store()); !saved) {
        m_ui.messageBox("The import preferences could not be saved: " + saved.error().description,
                        ui::kProgramTitle, ui::Icon::Critical);
    }
    reloadImportSettings();
}

// ---- opening a file ----------------------------------------------------------------------

void ImportWindow::chooseFile() {
    const auto path = m_ui.openFileDialog(kSelectFileTitle, kSelectFileFilter);
    if (path && !path->empty()) {
        openExchangeFile(*path);
    }
}

void ImportWindow::openExchangeFile(const std::string& path) {
    setControlVisible(kSelAccountLabel, false);
    setControlVisible(kSelAccountCombo, false);
    auto file = readExchangeFile(path);
    if (!file) {
        m_document = xml::Document();
        m_ui.messageBox(cannotProcessMessage(file.error()));
        return;
    }
    m_document = std::move(file->document);
    m_outcome = ImportOutcome::None;
    setControlEnabled(kAddItemBtn, true);
    if (file->kindName) {
        m_documentKind = *file->kindName;
    }
    const ui::BusyScope busy(m_ui);
    switch (recogniseKind(m_documentKind)) {
        case DocumentKind::Invoice:
            loadCounterparts(Party::Vendor);
            previewDocument("importinvoice.xslt", m_document.root());
            matchCounterpart(Party::Vendor);
            setCaption("Dorvane - Import Invoice as Bill");
            break;
        case DocumentKind::Estimate:
            loadCounterparts(Party::Vendor);
            previewDocument("importestimate.xslt", m_document.root());
            matchCounterpart(Party::Vendor);
            setCaption("Dorvane - Import Estimate as PurchaseOrder");
            break;
        case DocumentKind::SalesReceipt:
            loadCounterparts(Party::Vendor);
            loadPaymentAccountList();
            previewDocument("importsalesreceipt.xslt", m_document.root());
            matchCounterpart(Party::Vendor);
            setCaption("Dorvane - Import Sales Receipt as Charge");
            break;
        case DocumentKind::AuthorizeNet:
            previewDocument("importAuthorizeNet.xslt", m_document.root());
            loadCounterparts(Party::Customer);
            matchCounterpart(Party::Customer);
            setCaption("Dorvane - Import Authorize.Net receipt as SalesReceipt");
            break;
        case DocumentKind::Pda:
            previewDocument("importTTPDA.xslt", m_document.root());
            setCaption("Dorvane - Import Time Tracking from PDA");
            break;
        case DocumentKind::Unknown:
            break;
    }
    setControlVisible(kAddItemBtn, true);
}

void ImportWindow::previewDocument(std::string_view styleSheetName, xml::Node node) {
    auto sheet = xml::Stylesheet::load(m_folder.filePath(styleSheetName));
    if (!sheet) {
        return;  // no preview; the pane keeps what it showed
    }
    auto output = sheet->transformNode(node);
    if (!output) {
        return;
    }
    const std::string_view trimmed = text::trim(*output);
    const char* name = trimmed.substr(0, 5) == "<?xml" ? kPreviewXmlFile : kPreviewHtmlFile;
    if (Status written = m_folder.writeProgramFile(*output, name, files::Durability::Scratch);
        !written) {
        setImportStatusText("The preview could not be written: " + written.error().description);
        return;
    }
    navigate(name);
}

void ImportWindow::loadPaymentAccountList() {
    setControlVisible(kSelAccountLabel, true);
    setControlVisible(kSelAccountCombo, true);
    m_accounts.clear();
    m_selectedAccount.reset();
    m_accounts = loadPaymentAccounts(m_gateway, m_ui, m_folder);
    if (!m_accounts.empty()) {
        m_selectedAccount = 0;
    }
    notify(kSelAccountCombo);
}

void ImportWindow::resetImportWindow() {
    setCaption(kIdleCaption);
    setLabel1({});
    setControlEnabled(kAddItemBtn, false);
    setControlVisible(kLabel2, false);
    setControlVisible(kNameText, false);
    setNameText({});
}

// ---- the Import button ------------------------------------------------------------------

void ImportWindow::importSelectedDocument() {
    m_outcome = ImportOutcome::None;
    m_report = {};
    const DocumentKind kind = recogniseKind(m_documentKind);
    if (kind == DocumentKind::AuthorizeNet) {
        importAuthorizeNetReceipt();
        return;
    }
    if (kind == DocumentKind::Pda) {
        if (m_services.importTimeTracking) {
            m_services.importTimeTracking();
        }
        return;
    }
    if (kind == DocumentKind::Unknown) {
        return;  // a root of another name: the button does nothing
    }
    const ui::BusyScope busy(m_ui);
    if (!preferencesNameRecordsQuickBooksHas(kind)) {
        return;
    }
    if (!m_list.selected) {
        if (!addVendorFromDocument()) {
            if (kind == DocumentKind::SalesReceipt && m_outcome == ImportOutcome::NotSent) {
                setImportStatusText("Please select the vendor from the list");
            }
            return;
        }
        if (!m_document.selectOne("//CompanyRet/CompanyName")) {
            m_outcome = ImportOutcome::NotSent;
            m_ui.messageBox(kCannotRetrieveVendorName);
            return;
        }
    } else {
        xml::Node company = m_document.selectOne("//CompanyRet/CompanyName");
        if (!company) {
            m_outcome = ImportOutcome::NotSent;
            m_ui.messageBox(kCannotRetrieveVendorName);
            return;
        }
        company.setText(m_list.items[*m_list.selected]);
    }
    // Found before anything was written: the account cannot have changed since.
    if (const Conversion* conversion = conversionFor(kind, payingAccount())) {
        convertAndSend(*conversion);
    }
}

const PaymentAccount* ImportWindow::payingAccount() const {
    return m_selectedAccount && *m_selectedAccount < m_accounts.size()
               ? &m_accounts[*m_selectedAccount]
               : nullptr;
}

// Before the vendor is created or anything is sent, so that the import does not stop half-way
// after a new vendor was added.
bool ImportWindow::preferencesNameRecordsQuickBooksHas(DocumentKind kind) {
    const Conversion* conversion = conversionFor(kind, payingAccount());
    if (!conversion) {
        // A sales receipt without an account that can pay it: sends nothing and, in the window,
        // says nothing; the report says why.
        m_report.missing.push_back(missingPaymentAccount(payingAccount()));
        m_outcome = ImportOutcome::NotSent;
        return false;
    }
    m_report.missing = m_converter.missingRecords(m_document, *conversion, importSettings());
    if (m_report.missing.empty()) {
        return true;  // or QuickBooks could not say; it will judge the request itself
    }
    m_outcome = ImportOutcome::NotSent;
    std::string message;
    for (const MissingRecord& missing : m_report.missing) {
        message += describeMissing(missing) + ".\r\n";
    }
    m_ui.messageBox(message +
                        "Choose what to use in the import preferences, or add it in "
                        "QuickBooks. Nothing was sent to QuickBooks.",
                    ui::kProgramTitle, ui::Icon::Exclamation);
    setImportStatusText(kErrorStatus);
    return false;
}

bool ImportWindow::convertAndSend(const Conversion& conversion) {
    m_outcome = ImportOutcome::NotSent;
    const PaymentAccount* account = payingAccount();
    const ConvertedRequest converted = m_converter.convert(m_document, conversion, importSettings(),
                                                           account ? account->name : std::string());
    if (converted.failed) {
        setImportStatusText(kErrorStatus);
        m_ui.messageBox("The document could not be converted: " + converted.error,
                        ui::kProgramTitle, ui::Icon::Exclamation);
        return false;
    }
    if (!converted.request || !passesDuplicateGuard(*converted.request)) {
        return false;
    }
    const bool added = sendAddRequest(*converted.request);
    noteBooking(m_folder, conversion.kind, selectConversionRoot(m_document, conversion.kind),
                *converted.request, m_booking);
    if (!added) {
        setImportStatusText(kErrorStatus);
        return false;
    }
    setImportStatusText(conversion.status);
    setBrowserBody(conversion.page);
    resetImportWindow();
    return true;
}

bool ImportWindow::sendAddRequest(std::string_view body) {
    const Booking booking = imports::sendAddRequest(m_gateway, m_ui, body);
    m_outcome = booking.outcome;
    m_booking = booking;
    if (booking.added) {
        m_report.added.push_back(*booking.added);
    }
    return booking.outcome == ImportOutcome::Added;
}

bool ImportWindow::passesDuplicateGuard(std::string_view request) {
    using Result = DuplicateQuery::Result;
    const DuplicateQuery query = queryBooked(m_gateway, m_ui, request);
    switch (query.result) {
        case Result::NotBooked:
            return true;
        case Result::Unreachable:
        case Result::Refused:
            // A query that fails ends the import as a failed add would.
            m_outcome = query.result == Result::Unreachable ? ImportOutcome::Unreachable
                                                            : ImportOutcome::Refused;
            setImportStatusText(kErrorStatus);
            return false;
        case Result::Booked:
            break;
    }
    if (confirmAgain(m_ui, m_duplicatePolicy, query.question)) {
        return true;
    }
    m_outcome = ImportOutcome::NotSent;
    setImportStatusText("already in QuickBooks");
    return false;
}

// ---- receipts --------------------------------------------------------------------------

void ImportWindow::captureAuthorizeNetReceipt() {
    captureReceipt([this] { return m_receipts.readClipboard(); });
}

void ImportWindow::captureReceiptText(std::string_view receiptText) {
    captureReceipt([receiptText] { return std::optional<std::string>(receiptText); });
}

void ImportWindow::captureReceipt(const std::function<std::optional<std::string>()>& read) {
    setNameText({});
    clearSelection();
    if (const auto text = read()) {
        if (const auto file = m_receipts.writeReceiptFile(*text)) {
            openExchangeFile(*file);
        }
    }
    const bool withCustomer = !importSettings().ignoreAuthNetCustomer;
    m_list.enabled = withCustomer;
    notify(kVendorListView);
    if (!withCustomer) {
        setLabel1({});
    }
    setControlVisible(kLabel2, withCustomer);
    setControlVisible(kNameText, withCustomer);
}

bool ImportWindow::receiptPassesDuplicateGuard() {
    const auto question = m_receipts.importedBefore(m_document);
    if (!question || confirmAgain(m_ui, m_duplicatePolicy, *question)) {
        return true;
    }
    m_outcome = ImportOutcome::NotSent;
    setImportStatusText("imported before");
    return false;
}

void ImportWindow::importAuthorizeNetReceipt() {
    m_outcome = ImportOutcome::NotSent;
    m_report = {};
    if (!receiptPassesDuplicateGuard()) {
        return;
    }
    const ui::BusyScope busy(m_ui);
    const bool ignoreCustomer = importSettings().ignoreAuthNetCustomer;
    std::string name;
    if (!ignoreCustomer) {
        name = std::string(text::trim(m_nameText));
        const auto found = m_list.findWholeWord(name);
        if (!found && !name.empty()) {
            if (!addCustomerFromReceipt(name)) {
                return;
            }
            if (!m_document.selectOne("//Company")) {
                m_outcome = ImportOutcome::NotSent;
                m_ui.messageBox(kCannotRetrieveCustomerName);
                return;
            }
        } else if (found && !name.empty()) {
            if (xml::Node company = m_document.selectOne("//Company")) {
                company.setText(m_list.items[*found]);
            }
        }
    }
    const ConvertedRequest converted =
        m_receipts.salesReceiptRequest(m_document, name.empty() || ignoreCustomer);
    if (!converted.request && !converted.failed) {
        m_outcome = ImportOutcome::NotSent;
        return;
    }
    if (!converted.request || !sendAddRequest(*converted.request)) {
        if (!converted.request) {
            m_outcome = ImportOutcome::NotSent;
        }
        setImportStatusText(kErrorStatus);
        return;
    }
    setImportStatusText(kReceiptAddedStatus);
    setBrowserBody(kReceiptAddedPage);
    m_receipts.logBooked(m_document);
}

}  // namespace dorvane::imports
