// SPDX-License-Identifier: GPL-3.0-or-later
#include "mail/sendloop.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <unordered_map>

#include "browser/recipients.h"
#include "browser/sentlog.h"
#include "common/clock.h"
#include "common/text.h"
#include "company/companyinfo.h"
#include "qbgateway/programfolder.h"
#include "shell/mainwindow.h"
#include "shell/uiport.h"

namespace dorvane::mail {
namespace {

// Cells of a row: 0 the row text, then the sub-items.
constexpr std::size_t kIdCell = 1;
constexpr std::size_t kNameCell = 2;
constexpr std::size_t kEmailCell = 4;
constexpr std::size_t kTimesheetNameCell = 1;
constexpr std::size_t kTimesheetEmailCell = 3;

const std::string& cell(const shell::ListRow& row, std::size_t i) {
    static const std::string empty;
    return i < row.cells.size() ? row.cells[i] : empty;
}

double number(const std::string& text) {
    return std::strtod(text.c_str(), nullptr);
}

// A double as decimal text, as few digits as it needs.
std::string decimalText(double value) {
    char buf[64];
    std::snprintf(buf, sizeof buf, "%.15g", value);
    return buf;
}

// The elements of `path`, grouped by the text at `key` below each.
std::unordered_map<std::string, std::vector<xml::Node>> groupBy(const xml::Document& doc,
                                                                std::string_view path,
                                                                std::string_view key) {
    std::unordered_map<std::string, std::vector<xml::Node>> groups;
    for (xml::Node n : doc.selectAll(path)) {
        groups[n.valueOf(key)].push_back(n);
    }
    return groups;
}

}  // namespace

struct DocumentSender::Kind {
    const char* type;        // document type, its qbXML name and its sent-log tag
    const char* sheet;       // style sheet in the program folder
    const char* subject;     // subject prefix, before the number
    const char* sentText;    // status after the run
    const char* failedText;  // status when the style sheet fails
};

DocumentSender::DocumentSender(shell::MainWindow& window, const qbgateway::ProgramFolder& folder,
                               shell::SettingsStore& settings, company::CompanyInfo& company,
                               shell::UiPort& ui)
    : m_window(window), m_folder(folder), m_store(settings), m_company(company), m_ui(ui) {}

MailContext DocumentSender::context() {
    return MailContext{m_ui, m_folder,
                       [this](const std::string& text) { m_window.setStatusText(text); },
                       m_settings, m_window.previewChecked()};
}

void DocumentSender::sendSelectedDocuments() {
    m_store.reload();
    m_settings = shell::loadMailSettings(m_store);
    m_window.setStatusText("");
    shell::BusyScope busy(m_ui);
    const std::string& type = m_window.documentType();
    if (type == "Invoice") {
        sendInvoices();
    } else if (type == "Estimate") {
        sendEstimates();
    } else if (type == "PurchaseOrder") {
        sendPurchaseOrders();
    } else if (type == "Statement") {
        sendStatements();
    } else if (type == "CreditMemo") {
        sendCreditMemos();
    } else if (type == "SalesReceipt") {
        sendSalesReceipts();
    } else if (type == "Timesheet") {
        sendTimesheets();
    }
}

void DocumentSender::sendInvoices() {
    static const Kind kind{"Invoice", "/invoice.xslt", "Invoice: #", "Invoices sent",
                           "Invoice conversion failed"};
    runTransactions(kind);
}

void DocumentSender::sendSalesReceipts() {
    static const Kind kind{"SalesReceipt", "/salesreceipt.xslt", "Sales Receipt: #",
                           "Sales Receipts sent", "Sales Receipt conversion failed"};
    runTransactions(kind);
}

void DocumentSender::sendEstimates() {
    static const Kind kind{"Estimate", "/estimate.xslt", "Estimate: #", "Estimates sent",
                           "Estimate conversion failed"};
    runTransactions(kind);
}

void DocumentSender::sendCreditMemos() {
    static const Kind kind{"CreditMemo", "/creditmemo.xslt", "Credit Memo: #", "CreditMemo sent",
                           "Credit Memo conversion failed"};
    runTransactions(kind);
}

void DocumentSender::sendPurchaseOrders() {
    static const Kind kind{"PurchaseOrder", "/PurchaseOrder.xslt", "PurchaseOrder: #",
                           "PurchaseOrders sent", "Purchase Order conversion failed"};
    runTransactions(kind);
}

void DocumentSender::sendStatements() {
    runCustomerDocuments(true);
}

void DocumentSender::sendTimesheets() {
    runCustomerDocuments(false);
}

namespace {

// What a run does with one rendered row; shared by every document type.
struct Run {
    shell::MainWindow& window;
    shell::UiPort& ui;
    const qbgateway::ProgramFolder& folder;
    bool preview;
    std::string header;
    std::string previewText;
    std::size_t done = 0;
    std::size_t total = 0;

    void progress() {
        ++done;
        window.setProgress(total ? static_cast<int>(done * 100 / total) : 100);
        ui.yield();
    }
};

}  // namespace

void DocumentSender::runTransactions(const Kind& kind) {
    const std::string header = companyHeaderHtml();
    auto sheet = xml::Stylesheet::load(m_folder.filePath(kind.sheet));
    if (!sheet) {
        m_window.setStatusText(kind.failedText);
        return;
    }
    const bool preview = m_window.previewChecked();
    MailContext ctx = context();
    if (!preview && m_mailer.openMailTransport(ctx, m_store) > 0) {
        return;
    }
    const std::string path =
        std::string("/QBXML/QBXMLMsgsRs/") + kind.type + "QueryRs/" + kind.type + "Ret";
    const auto documents = browser::indexBy(m_window.listDocument(), path, "TxnID");
    auto& list = m_window.list();
    std::string previewText;
    bool logBroken = false;
    m_window.setProgress(0);
    for (int i = 0; i < list.rowCount() && !logBroken; ++i) {
        const shell::ListRow row = list.row(i);
        const std::string& email = cell(row, kEmailCell);
        if (!row.checked ||
            !(!email.empty() || preview || m_settings.alwaysBcc == 1 || m_settings.altEmail == 1)) {
            continue;
        }
        RowOutcome outcome{i, cell(row, kIdCell), cell(row, kNameCell), email, false};
        auto found = documents.find(cell(row, kIdCell));
        auto html = found == documents.end() ? Result<std::string>(Error{0, "no such document"})
                                             : sheet->transformNode(found->second);
        if (!html) {
            m_window.setStatusText(kind.failedText);
        } else if (preview) {
            previewText += "<DIV style='page-break-after:always'>" + header + *html + "</div>";
        } else {
            xml::Node doc = found->second;
            const std::string attachment = buildAttachment(doc);
            const std::string subject = kind.subject + doc.valueOf("RefNumber") + "  " +
                                        "Date: " + doc.valueOf("TxnDate") + "  ";
            std::string recipient = email;
            if (m_settings.test == 1 && !m_settings.emailAdr.empty()) {
                recipient = m_settings.emailAdr;
            }
            outcome.sent = sendDocumentMail(m_company.senderAddress(), recipient, subject,
                                            header + *html, attachment, outcome.name);
            outcome.recipient = recipient;
            if (outcome.sent) {
                list.setChecked(i, false);
                browser::appendSentRecord(m_window.sentLogText(), outcome.key, kind.type);
                // On disk at once: a run stopped after this point never mails it again.
                try {
                    m_folder.writeProgramFile(m_window.sentLogText(), browser::kSentLogFile);
                } catch (const qbgateway::FileWriteError& e) {
                    m_ui.messageBox("Could not write " + m_folder.filePath(browser::kSentLogFile) +
                                    ": " + e.description());
                    logBroken = true;
                }
            }
        }
        if (m_rowProcessed) {
            m_rowProcessed(outcome);
        }
        m_window.setProgress(static_cast<int>((i + 1) * 100 / list.rowCount()));
        m_ui.yield();
    }
    m_window.setProgress(-1);
    if (preview) {
        showPreview(previewText);
        return;
    }
    if (!logBroken) {
        try {
            m_folder.writeProgramFile(m_window.sentLogText(), browser::kSentLogFile);
        } catch (const qbgateway::FileWriteError& e) {
            m_ui.messageBox("Could not write " + m_folder.filePath(browser::kSentLogFile) + ": " +
                            e.description());
        }
    }
    m_mailer.disconnect();
    m_window.setStatusText(kind.sentText);
}

void DocumentSender::runCustomerDocuments(bool statements) {
    const char* sentText = statements ? "Statements sent" : "Timesheets sent";
    const char* failedText =
        statements ? "Statement conversion failed" : "Timesheet conversion failed";
    const std::string header = companyHeaderHtml();
    auto sheet = xml::Stylesheet::load(
        m_folder.filePath(statements ? "/statement.xslt" : "/timesheet.xslt"));
    if (!sheet) {
        m_window.setStatusText(failedText);
        return;
    }
    const bool preview = m_window.previewChecked();
    MailContext ctx = context();
    if (!preview && m_mailer.openMailTransport(ctx, m_store) > 0) {
        return;
    }
    const xml::Document& doc = m_window.listDocument();
    constexpr const char* kCustomers = "/QBXML/QBXMLMsgsRs/CustomerQueryRs/CustomerRet";
    const auto customers = browser::indexBy(doc, kCustomers, statements ? "ListID" : "FullName");
    // Indexed once a run. Composing moves these records into the customer's element, so a
    // second run over the same list finds them no more.
    auto invoices = statements ? groupBy(doc, "/QBXML/QBXMLMsgsRs/InvoiceQueryRs/InvoiceRet",
                                         "CustomerRef/ListID")
                               : decltype(groupBy(doc, "", "")){};
    auto payments = statements
                        ? groupBy(doc, "/QBXML/QBXMLMsgsRs/ReceivePaymentQueryRs/ReceivePaymentRet",
                                  "CustomerRef/ListID")
                        : decltype(groupBy(doc, "", "")){};
    auto entries = statements
                       ? decltype(groupBy(doc, "", "")){}
                       : groupBy(doc, "/QBXML/QBXMLMsgsRs/TimeTrackingQueryRs/TimeTrackingRet",
                                 "CustomerRef/FullName");
    const std::size_t nameCell = statements ? kNameCell : kTimesheetNameCell;
    const std::size_t emailCell = statements ? kEmailCell : kTimesheetEmailCell;

    auto& list = m_window.list();
    std::string previewText;
    m_window.setProgress(0);
    for (int i = 0; i < list.rowCount(); ++i) {
        const shell::ListRow row = list.row(i);
        const std::string& email = cell(row, emailCell);
        if (!row.checked ||
            !(!email.empty() || preview || m_settings.alwaysBcc == 1 || m_settings.altEmail == 1)) {
            continue;
        }
        const std::string key = statements ? cell(row, kIdCell) : cell(row, kTimesheetNameCell);
        RowOutcome outcome{i, key, cell(row, nameCell), email, false};
        auto found = customers.find(key);
        Result<std::string> html(Error{0, "no such customer"});
        if (found != customers.end()) {
            xml::Node customer = found->second;
            if (statements) {
                double forward = number(customer.valueOf("TotalBalance"));
                for (xml::Node invoice : invoices[key]) {
                    forward -= number(invoice.valueOf("Subtotal")) +
                               number(invoice.valueOf("SalesTaxTotal"));
                    customer.appendChild(invoice);
                }
                invoices.erase(key);
                for (xml::Node payment : payments[key]) {
                    forward += number(payment.valueOf("TotalAmount"));
                    customer.appendChild(payment);
                }
                payments.erase(key);
                customer.appendElement("PrintDate", clock::todayIso());
                customer.appendElement("ForwardBalance", decimalText(forward));
            } else {
                for (xml::Node entry : entries[key]) {
                    customer.appendChild(entry);
                }
                entries.erase(key);
                customer.appendElement("PrintDate", clock::todayIso());
            }
            html = sheet->transformNode(customer);
        }
        if (!html) {
            m_window.setStatusText(failedText);
        } else if (preview) {
            previewText += "<DIV style='page-break-after:always'>" + header + *html + "</div>";
        } else {
            std::string recipient = email;
            if (m_settings.test == 1 && !m_settings.emailAdr.empty()) {
                recipient = m_settings.emailAdr;
            }
            outcome.sent = sendDocumentMail(m_company.senderAddress(), recipient,
                                            statements ? "Your Statement" : "Your Timesheet",
                                            header + *html, "", outcome.name);
            outcome.recipient = recipient;
            if (outcome.sent) {
                list.setChecked(i, false);
            }
        }
        if (m_rowProcessed) {
            m_rowProcessed(outcome);
        }
        m_window.setProgress(static_cast<int>((i + 1) * 100 / list.rowCount()));
        m_ui.yield();
    }
    m_window.setProgress(-1);
    if (preview) {
        showPreview(previewText);
        return;
    }
    try {
        m_folder.writeProgramFile(m_window.sentLogText(), browser::kSentLogFile);
    } catch (const qbgateway::FileWriteError& e) {
        m_ui.messageBox("Could not write " + m_folder.filePath(browser::kSentLogFile) + ": " +
                        e.description());
    }
    m_mailer.disconnect();
    m_window.setStatusText(sentText);
}

bool DocumentSender::sendDocumentMail(const std::string& sender, std::string& recipient,
                                      const std::string& subject, const std::string& html,
                                      const std::string& attachmentText,
                                      const std::string& displayName) {
    const std::string bcc =
        m_settings.bcc == 1 && !m_settings.bccAdr.empty() ? m_settings.bccAdr : std::string();
    if (m_settings.altEmail == 1) {
        recipient =
            m_ui.inputBox(displayName + "\r\n" + subject, "Specify the email address", recipient)
                .value_or("");
        if (recipient.empty() && bcc.empty()) {
            return false;
        }
    }
    MailContext ctx = context();
    switch (m_settings.mailOption) {
        case 1:
            if (!m_mailer.outlookConnected()) {
                return false;
            }
            m_window.setStatusText("Connected to Outlook");
            return m_mailer.sendViaOutlook(ctx, sender, recipient, subject, html, attachmentText,
                                           bcc);
        case 0:
            return m_mailer.composeAndSendSmtp(ctx, sender, recipient, subject, html,
                                               attachmentText, bcc);
        case 2: {
            bool result =
                m_mailer.deliverDirect(ctx, sender, recipient, subject, html, attachmentText);
            if (!bcc.empty()) {
                for (const std::string& copy : text::split(bcc, ';')) {
                    result =
                        m_mailer.deliverDirect(ctx, sender, copy, subject, html, attachmentText);
                }
            }
            return result;
        }
        default:
            return false;
    }
}

std::string DocumentSender::companyHeaderHtml() {
    auto sheet = xml::Stylesheet::load(m_folder.filePath("/company.xslt"));
    xml::Node company = m_company.companyNode();
    if (!sheet || !company) {
        return {};
    }
    xml::Variables params;
    for (const char* logo : {"logo.gif", "logo.jpg", "logo.png"}) {
        const std::string path = m_folder.filePath(logo);
        if (std::filesystem::exists(path)) {
            params.emplace_back("logo", path);
            break;
        }
    }
    auto html = sheet->transformNode(company, params);
    return html ? std::move(html).value() : std::string();
}

std::string DocumentSender::buildAttachment(xml::Node document) {
    if (m_settings.attachment == 0) {
        return {};
    }
    // A copy of its own: list ids mean nothing in the receiver's company file.
    xml::Document copy;
    copy.setRoot(document);
    for (xml::Node id : copy.selectAll("//ListID")) {
        id.setText("ignore");
    }
    xml::Node company =
        m_window.listDocument().selectOne("/QBXML/QBXMLMsgsRs/CompanyQueryRs/CompanyRet");
    if (!company) {
        company = m_company.companyNode();
    }
    if (company) {
        xml::Node sent = copy.importNode(company);
        for (const char* child : {"CompanyType", "FileName", "LegalAddress", "LegalCompanyName",
                                  "FirstMonthFiscalYear", "FirstMonthIncomeTaxYear"}) {
            if (xml::Node c = sent.firstChildElement(child)) {
                c.remove();
            }
        }
        copy.root().appendChild(sent);
    }
    auto sheet = xml::Stylesheet::load(m_folder.filePath("/attachment.xslt"));
    if (sheet) {
        if (auto text = sheet->transformNode(copy.root())) {
            return std::move(text).value();
        }
    }
    return "<?xml version=\"1.0\" ?>" + copy.root().xml();
}

void DocumentSender::showPreview(const std::string& html) {
    try {
        m_folder.writeProgramFile("<html><head/><body>" + html + "</body></html>", "preview.htm");
    } catch (const qbgateway::FileWriteError& e) {
        m_ui.messageBox("Could not write " + m_folder.filePath("preview.htm") + ": " +
                        e.description());
        return;
    }
    m_ui.openWithDesktop(m_folder.filePath("preview.htm"));
}

}  // namespace dorvane::mail
