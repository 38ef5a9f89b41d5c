// SPDX-License-Identifier: GPL-3.0-or-later
// The import window: opening a file, the preview, the Import button and the three
// counter-documents of an exchange file.
#include "import/importwindow.h"

#include <cctype>

#include "common/files.h"
#include "common/text.h"
#include "platform/programfolder.h"
#include "platform/settings.h"
#include "qbgateway/defaultrecords.h"
#include "qbgateway/gateway.h"
#include "qbgateway/response.h"
#include "ui/uiport.h"

namespace dorvane::imports {
namespace {

constexpr const char* kBillAddedPage =
    "<body><p align='center'><b><font color='#0000FF'>Bill sucessfully added.</font></b></p><p "
    "align='center'>Please inspect this bill in Quickbooks ( Accounts Payable) </p><p "
    "align='center'>and, if necessary, adjust Terms, Items and Accounts.</p></body>";
constexpr const char* kPurchaseOrderAddedPage =
    "<body><p align='center'><b><font color='#0000FF'>Purchase Order sucessfully "
    "added.</font></b></p><p align='center'>Please inspect this bill in Quickbooks ( Vendors / "
    "PO List) </p><p align='center'>and, if necessary, adjust the Items.</p></body>";
constexpr const char* kChargeAddedPage =
    "<body><p align='center'><b><font color='#0000FF'>Sales Receipt sucessfully "
    "added.</font></b></p><p align='center'>Please inspect this charge in Quickbooks ( "
    "Checking/CreditCard) </p><p align='center'>and, if necessary, adjust Terms, Items and "
    "Accounts.</p></body>";

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

// What a reader calls each counter-document, and where its total stands in the answer.
struct BookedKind {
    const char* add;
    const char* label;
    const char* payee;
    const char* amount;
    const char* noun;     // as a sentence names it
    const char* account;  // the paying account; nullptr when the document has none
};

constexpr BookedKind kBookedKinds[] = {
    {"BillAdd", "Bill", "VendorRef/FullName", "AmountDue", "bill", nullptr},
    {"PurchaseOrderAdd", "Purchase order", "VendorRef/FullName", "TotalAmount", "purchase order",
     nullptr},
    {"CheckAdd", "Check", "PayeeEntityRef/FullName", "Amount", "check", "AccountRef/FullName"},
    {"CreditCardChargeAdd", "Credit card charge", "PayeeEntityRef/FullName", "Amount",
     "card charge", "AccountRef/FullName"},
    {"SalesReceiptAdd", "Sales receipt", "CustomerRef/FullName", "TotalAmount", "sales receipt",
     nullptr},
};

// The record an accepted add request's answer describes.
AddedRecord addedRecord(const xml::Node& ret) {
    const std::string name = ret.name();
    if (name == "VendorRet") {
        return {"vendor", ret.valueOf("Name"), {}, {}, {}, {}};
    }
    if (name == "CustomerRet") {
        return {"customer", ret.valueOf("FullName"), {}, {}, {}, {}};
    }
    for (const BookedKind& k : kBookedKinds) {
        const std::string_view add(k.add);
        if (std::string(add.substr(0, add.size() - 3)) + "Ret" == name) {
            return {k.noun,
                    {},
                    ret.valueOf("RefNumber"),
                    ret.valueOf(k.amount),
                    k.account ? ret.valueOf(k.account) : std::string(),
                    ret.valueOf(k.payee)};
        }
    }
    return {text::toLower(name), {}, ret.valueOf("RefNumber"), {}, {}, {}};
}

}  // namespace

std::string describeMissing(const MissingRecord& record) {
    if (record.kind == "payment account") {
        if (record.name.empty()) {
            return "QuickBooks has no bank or credit-card account to pay a sales receipt from";
        }
        return "The account '" + record.name + "' is of the type " + record.accountType +
               "; a sales receipt is paid from a Bank or CreditCard account";
    }
    if (record.name.empty()) {
        return "The import preference " + record.settingKey + " names no " + record.kind;
    }
    return "QuickBooks has no " + record.kind + " '" + record.name +
           "', which the import preference " + record.settingKey + " names";
}

// ---- the counterpart list ----------------------------------------------------------------

std::optional<std::size_t> CounterpartList::findPartial(std::string_view text) const {
    const std::string wanted = text::toLower(text);
    for (std::size_t i = 0; i < items.size(); ++i) {
        if (text::toLower(items[i]).starts_with(wanted)) {
            return i;
        }
    }
    return std::nullopt;
}

std::optional<std::size_t> CounterpartList::findWholeWord(std::string_view text) const {
    const std::string wanted = text::toLower(text);
    for (std::size_t i = 0; i < items.size(); ++i) {
        const std::string item = text::toLower(items[i]);
        if (!item.starts_with(wanted)) {
            continue;
        }
        const bool wordEnds = item.size() == wanted.size() || wanted.empty() ||
                              !std::isalnum(static_cast<unsigned char>(item[wanted.size()]));
        if (wordEnds) {
            return i;
        }
    }
    return std::nullopt;
}

// ---- the window ----------------------------------------------------------------------

ImportWindow::ImportWindow(ui::UiPort& ui, const platform::ProgramFolder& folder,
                           qbgateway::Gateway& gateway, platform::SettingsStore& settings,
                           qbgateway::DefaultRecords& lists)
    : m_ui(ui), m_folder(folder), m_gateway(gateway), m_store(settings), m_lists(lists) {}

void ImportWindow::open() {
    reloadImportSettings();
    for (const char* name : kHiddenAtOpening) {
        setControlVisible(name, false);
    }
    setNameTextQuietly({});
}

void ImportWindow::reloadImportSettings() {
    m_store.reload();
    m_settings = loadImportSettings(m_store);
}

ControlState ImportWindow::control(const std::string& name) const {
    auto it = m_controls.find(name);
    return it == m_controls.end() ? ControlState{} : it->second;
}

void ImportWindow::changed(std::string_view what) {
    if (m_observer) {
        m_observer->changed(what);
    }
}

void ImportWindow::setControlVisible(const std::string& name, bool visible) {
    m_controls[name].visible = visible;
    changed(name);
}

void ImportWindow::setControlEnabled(const std::string& name, bool enabled) {
    m_controls[name].enabled = enabled;
    changed(name);
}

void ImportWindow::setCaption(std::string caption) {
    m_caption = std::move(caption);
    changed("caption");
}

void ImportWindow::setLabel1(std::string text) {
    m_label1 = std::move(text);
    changed(kLabel1);
}

void ImportWindow::setNameTextQuietly(std::string text) {
    m_nameText = std::move(text);
    changed(kNameText);
}

void ImportWindow::setNameText(std::string text) {
    setNameTextQuietly(std::move(text));
}

void ImportWindow::setImportStatusText(std::string text) {
    m_statusText = std::move(text);
    changed(kStatusBar);
}

void ImportWindow::setList(CounterpartList list) {
    list.enabled = m_list.enabled;
    m_list = std::move(list);
    changed(kVendorListView);
}

void ImportWindow::clearSelection() {
    if (m_list.selected) {
        m_list.selected.reset();
        changed(kVendorListView);
    }
}

void ImportWindow::itemClicked(std::size_t index) {
    if (index >= m_list.items.size()) {
        return;
    }
    m_list.selected = index;
    changed(kVendorListView);
    setNameTextQuietly(m_list.items[index]);
}

void ImportWindow::selectAccount(std::size_t index) {
    if (index < m_accounts.size()) {
        m_selectedAccount = index;
        changed(kSelAccountCombo);
    }
}

void ImportWindow::navigate(std::string_view fileName) {
    m_browserFile = m_folder.filePath(fileName);
    m_browserBody.reset();
    m_controls[kWebBrowser].visible = true;
    changed(kWebBrowser);
}

void ImportWindow::setBrowserBody(std::string body) {
    m_browserBody = std::move(body);
    changed(kWebBrowser);
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
    }
}

void ImportWindow::showPreferences() {
    {
        // Fetched at every opening, so an item or account just created in QuickBooks is there.
        const ui::BusyScope busy(m_ui);
        m_lists.loadItemList();
    }
    m_store.reload();
    ImportPreferencesModel model(m_lists.itemList(), m_store);
    if (!m_ui.runDialog(model)) {
        return;
    }
    if (Status saved = model.save(m_store); !saved) {
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
            loadVendorList();
            previewDocument("importinvoice.xslt", m_document.root());
            matchVendor(m_document);
            setCaption("Dorvane - Import Invoice as Bill");
            break;
        case DocumentKind::Estimate:
            loadVendorList();
            previewDocument("importestimate.xslt", m_document.root());
            matchVendor(m_document);
            setCaption("Dorvane - Import Estimate as PurchaseOrder");
            break;
        case DocumentKind::SalesReceipt:
            loadVendorList();
            loadPaymentAccountList();
            previewDocument("importsalesreceipt.xslt", m_document.root());
            matchVendor(m_document);
            setCaption("Dorvane - Import Sales Receipt as Charge");
            break;
        case DocumentKind::AuthorizeNet:
            previewDocument("importAuthorizeNet.xslt", m_document.root());
            loadCustomerList();
            matchCustomer(m_document);
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
    const std::string response = m_gateway.processRequest(
        ui::textOrShown(m_folder.readProgramFile("BankAccountGetRq.xml"), m_ui));
    if (!response.empty() && qbgateway::isResponseOK(response, m_ui)) {
        if (auto doc = xml::Document::parse(response)) {
            for (const xml::Node& account :
                 doc->selectAll("/QBXML/QBXMLMsgsRs/AccountQueryRs/AccountRet")) {
                m_accounts.push_back({account.valueOf("Name"), account.valueOf("AccountType")});
            }
        }
    }
    if (!m_accounts.empty()) {
        m_selectedAccount = 0;
    }
    changed(kSelAccountCombo);
}

void ImportWindow::resetImportWindow() {
    setCaption(kIdleCaption);
    setLabel1({});
    setControlEnabled(kAddItemBtn, false);
    setControlVisible(kLabel2, false);
    setControlVisible(kNameText, false);
    setNameTextQuietly({});
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
    switch (kind) {
        case DocumentKind::Invoice:
            importInvoiceAsBill();
            break;
        case DocumentKind::Estimate:
            importEstimateAsPurchaseOrder();
            break;
        case DocumentKind::SalesReceipt:
            importSalesReceiptAsCharge();
            break;
        default:
            break;
    }
}

// The conversion sheet of a kind; for a sales receipt the one of the selected account's type,
// "" when no account is selected or it is neither a bank nor a credit-card account.
std::string ImportWindow::conversionSheet(DocumentKind kind) const {
    switch (kind) {
        case DocumentKind::Invoice:
            return "/BillFromInvoice.xslt";
        case DocumentKind::Estimate:
            return "/POFromEstimate.xslt";
        case DocumentKind::SalesReceipt: {
            if (!m_selectedAccount || *m_selectedAccount >= m_accounts.size()) {
                return {};
            }
            const std::string& type = m_accounts[*m_selectedAccount].type;
            return type == "Bank"         ? "/CheckFromSalesReceipt.xslt"
                   : type == "CreditCard" ? "/CRChargeFromSalesReceipt.xslt"
                                          : "";
        }
        default:
            return {};
    }
}

bool ImportWindow::importInvoiceAsBill() {
    return convertAndSend(DocumentKind::Invoice, conversionSheet(DocumentKind::Invoice),
                          "Bill added", kBillAddedPage);
}

bool ImportWindow::importEstimateAsPurchaseOrder() {
    return convertAndSend(DocumentKind::Estimate, conversionSheet(DocumentKind::Estimate),
                          "Purchaseorder added", kPurchaseOrderAddedPage);
}

bool ImportWindow::importSalesReceiptAsCharge() {
    const std::string sheet = conversionSheet(DocumentKind::SalesReceipt);
    if (sheet.empty()) {
        m_outcome = ImportOutcome::NotSent;
        return false;  // no account, or one of another type: nothing is paid
    }
    return convertAndSend(DocumentKind::SalesReceipt, sheet, "Sales Receipt added",
                          kChargeAddedPage, m_accounts[*m_selectedAccount].name);
}

// Before the vendor is created or anything is sent: the converted document, rewritten onto the
// import preferences, must name an item, group, terms and account QuickBooks has, and a sales
// receipt needs an account that can pay it. Otherwise the import would stop half-way, after a
// new vendor was added.
bool ImportWindow::preferencesNameRecordsQuickBooksHas(DocumentKind kind) {
    if (kind == DocumentKind::SalesReceipt && conversionSheet(kind).empty()) {
        // Sends nothing and, in the window, says nothing; the report says why.
        if (!m_selectedAccount || *m_selectedAccount >= m_accounts.size()) {
            m_report.missing.push_back({"payment account", {}, {}, {}});
        } else {
            const PaymentAccount& account = m_accounts[*m_selectedAccount];
            m_report.missing.push_back({"payment account", account.name, {}, account.type});
        }
        m_outcome = ImportOutcome::NotSent;
        return false;
    }
    const xml::Node root = selectConversionRoot(m_document, kind);
    auto sheet = xml::Stylesheet::load(m_folder.filePath(conversionSheet(kind)));
    if (!root || !sheet) {
        return true;  // the conversion step sends nothing
    }
    auto converted = sheet->transformNode(root);
    if (!converted) {
        return true;  // the conversion step says why
    }
    std::string request = std::move(converted).value();
    applyItemAssignment(request, m_settings);
    auto doc = xml::Document::parse(request);
    if (!doc) {
        return true;
    }
    m_lists.loadItemList();
    struct Need {
        const char* kind;
        const char* key;
        const std::string& name;
        const char* reference;  // where the rewritten request names it
        const char* list;       // QuickBooks' list in the lists document
        const char* entry;      // an entry of that name in the list
    };
    const Need needs[] = {
        {"item", kItemKey, m_settings.importItemName, "//ItemRef/FullName[. != 'Subtotal']",
         "//ItemQueryRs", "*[FullName = $name]"},
        {"item group", kItemGroupKey, m_settings.importItemGroupName, "//ItemGroupRef/Name",
         "//ItemGroupQueryRs", "*[Name = $name]"},
        {"terms", kTermKey, m_settings.importTermsName, "//TermsRef/FullName", "//TermsQueryRs",
         "*[Name = $name]"},
        {"account", kAccountKey, m_settings.importAccountName,
         "/ExpenseLineAdd/AccountRef/FullName | //DepositToAccountRef/FullName", "//AccountQueryRs",
         "*[FullName = $name]"},
    };
    for (const Need& need : needs) {
        if (!doc->selectOne(need.reference)) {
            continue;
        }
        const xml::Node list =
            m_lists.itemList().selectOne(std::string(need.list) + "[@statusSeverity != 'Error']");
        if (list && !list.selectOne(need.entry, {{"name", need.name}})) {
            m_report.missing.push_back({need.kind, need.name, need.key, {}});
        }
    }
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

bool ImportWindow::convertAndSend(DocumentKind kind, std::string_view sheetName, const char* status,
                                  const char* successPage, const std::string& account) {
    m_outcome = ImportOutcome::NotSent;
    const xml::Node root = selectConversionRoot(m_document, kind);
    if (!root) {
        return false;
    }
    auto sheet = xml::Stylesheet::load(m_folder.filePath(sheetName));
    if (!sheet) {
        return false;
    }
    auto converted = sheet->transformNode(root);
    if (!converted) {
        setImportStatusText(kErrorStatus);
        m_ui.messageBox("The document could not be converted: " + converted.error().description,
                        ui::kProgramTitle, ui::Icon::Exclamation);
        return false;
    }
    std::string request = std::move(converted).value();
    applyItemAssignment(request, m_settings);
    if (kind == DocumentKind::SalesReceipt) {
        applyAccountAssignment(request, account);
    }
    if (!passesDuplicateGuard(request)) {
        return false;
    }
    if (!sendAddRequest(request)) {
        setImportStatusText(kErrorStatus);
        return false;
    }
    setImportStatusText(status);
    setBrowserBody(successPage);
    resetImportWindow();
    return true;
}

bool ImportWindow::sendAddRequest(std::string_view body) {
    const std::string response = m_gateway.processRequest(withRequestProlog(body));
    if (response.empty()) {
        m_outcome = ImportOutcome::Unreachable;
        return false;
    }
    const bool ok = qbgateway::isResponseOK(response, m_ui);
    m_outcome = ok ? ImportOutcome::Added : ImportOutcome::Refused;
    auto answer = xml::Document::parse(response);
    if (ok && answer) {
        if (const xml::Node ret = answer->selectOne("/QBXML/QBXMLMsgsRs/*/*")) {
            m_report.added.push_back(addedRecord(ret));
        }
    }
    return ok;
}

// ---- never twice by accident ----------------------------------------------------------

bool ImportWindow::confirmAgain(const std::string& question) {
    switch (m_duplicatePolicy) {
        case DuplicatePolicy::Allow:
            return true;
        case DuplicatePolicy::Refuse:
            m_ui.messageBox(question + "\r\nIt was not imported again.", ui::kProgramTitle,
                            ui::Icon::Exclamation);
            return false;
        case DuplicatePolicy::Ask:
            break;
    }
    return m_ui.messageBox(question + "\r\n\r\nImport it again?", ui::kProgramTitle,
                           ui::Icon::Question, ui::Buttons::YesNo) == ui::Answer::Yes;
}

// A bill, purchase order, check or charge counts as booked when QuickBooks has one of the same
// kind with the same reference number from the same vendor (names compared in any case).
bool ImportWindow::passesDuplicateGuard(std::string_view request) {
    auto doc = xml::Document::parse(request);
    if (!doc) {
        return true;  // QuickBooks will say what is wrong with it
    }
    const BookedKind* kind = nullptr;
    xml::Node add;
    for (const BookedKind& k : kBookedKinds) {
        if ((add = doc->firstElementByTagName(k.add))) {
            kind = &k;
            break;
        }
    }
    const std::string refNumber = add.valueOf("RefNumber");
    if (!kind || refNumber.empty()) {
        return true;  // nothing to know it by
    }
    const std::string payee = add.valueOf(kind->payee);
    const std::string type(
        std::string_view(kind->add).substr(0, std::string_view(kind->add).size() - 3));
    const std::string query =
        "<?xml version=\"1.0\" ?>\r\n<?qbxml version=\"2.0\"?>\r\n"
        "<QBXML><QBXMLMsgsRq onError=\"continueOnError\"><" +
        type + "QueryRq requestID=\"1\"><RefNumber>" + xml::escapeText(refNumber) +
        "</RefNumber></" + type + "QueryRq></QBXMLMsgsRq></QBXML>";
    // A query that fails ends the import as a failed add would.
    const std::string response = m_gateway.processRequest(query);
    if (response.empty()) {
        m_outcome = ImportOutcome::Unreachable;
        setImportStatusText(kErrorStatus);
        return false;
    }
    auto answer = xml::Document::parse(response);
    if (!answer || !qbgateway::isResponseOK(response, m_ui)) {
        m_outcome = ImportOutcome::Refused;
        setImportStatusText(kErrorStatus);
        return false;
    }
    for (const xml::Node& booked : answer->selectAll("//" + type + "Ret")) {
        const std::string vendor = booked.valueOf(kind->payee);
        if (!text::equalsIgnoreCase(vendor, payee)) {
            continue;
        }
        const std::string question = std::string(kAlreadyInQuickBooks) + kind->label + " " +
                                     booked.valueOf("RefNumber") + " from " + vendor + ", dated " +
                                     booked.valueOf("TxnDate") + ", amount " +
                                     booked.valueOf(kind->amount) + ".";
        if (confirmAgain(question)) {
            return true;
        }
        m_outcome = ImportOutcome::NotSent;
        setImportStatusText("already in QuickBooks");
        return false;
    }
    return true;
}

}  // namespace dorvane::imports
