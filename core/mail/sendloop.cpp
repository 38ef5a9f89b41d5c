// SPDX-License-Identifier: GPL-3.0-or-later
#include "mail/sendloop.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <future>
#include <optional>
#include <unordered_map>

#include "browser/documenttypes.h"
#include "browser/recipients.h"
#include "browser/sentlog.h"
#include "common/clock.h"
#include "common/files.h"
#include "common/text.h"
#include "company/companyinfo.h"
#include "mail/documentextras.h"
#include "platform/activitylog.h"
#include "platform/programfolder.h"
#include "ui/documentwindow.h"
#include "ui/uiport.h"

namespace dorvane::mail {
namespace {

const std::string& cell(const ui::ListRow& row, std::size_t i) {
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

// The details of a document the sent log just noted, for the history.
void noteSent(const platform::ProgramFolder& folder, const browser::DocumentType& type,
              const xml::Node& record, const RowOutcome& outcome) {
    platform::noteActivity(
        folder,
        {.event = std::string(outcome.test ? platform::kActivityTest : platform::kActivitySent),
         .type = type.name,
         .txnId = outcome.key,
         .number = record ? record.valueOf("RefNumber") : std::string(),
         .amount = record && type.amount ? record.valueOf(type.amount) : std::string(),
         .party = outcome.name,
         .address = outcome.recipient,
         .outcome = outcome.test ? "test copy" : "sent"});
}

}  // namespace

DocumentSender::DocumentSender(ui::DocumentWindow& window, const platform::ProgramFolder& folder,
                               platform::SettingsStore& settings, company::CompanyInfo& company,
                               ui::UiPort& ui)
    : m_window(window), m_folder(folder), m_store(settings), m_company(company), m_ui(ui) {}

MailContext DocumentSender::context() {
    return MailContext{m_ui, m_folder,
                       [this](const std::string& text) { m_window.setStatusText(text); },
                       m_settings, m_window.previewChecked()};
}

void DocumentSender::sendSelectedDocuments() {
    m_store.reload();
    m_settings = platform::loadMailSettings(m_store);
    if (m_pdfOverride) {
        m_settings.attachPdf = *m_pdfOverride ? 1 : 0;
    }
    m_previewPdf.clear();
    m_window.setStatusText("");
    ui::BusyScope busy(m_ui);
    const browser::DocumentType* type = browser::findDocumentType(m_window.documentType());
    if (!type || !type->styleSheet) {
        return;
    }
    if (type->shape == browser::ListShape::Transactions) {
        runTransactions(*type);
    } else {
        runCustomerDocuments(*type);
    }
}

// One rendered document: the page, its subject and its exchange file, and what the user
// added to the message.
struct DocumentSender::Rendered {
    std::optional<Result<std::string>> html;  // the document as its style sheet wrote it
    xml::Node record;
    std::string subject;
    std::string attachment;
    std::string page;     // as mailed: cover text, pay-now link, company header, document
    std::string pdfPage;  // what the PDF copy shows: the page without the cover text
    std::string pdfName;
    MessageExtras extras;
};

// How one run finds, renders and records its rows.
struct DocumentSender::RunPlan {
    const browser::DocumentType& type;
    const char* sheet;
    const char* sentText;
    const char* failedText;
    std::size_t keyCell;
    std::size_t nameCell;
    std::size_t emailCell;
    // Renders the row's document; fills the record it was rendered from, the subject and, for
    // mailing, the attachment.
    std::function<Result<std::string>(const xml::Stylesheet& sheet, const std::string& key,
                                      bool preview, Rendered& out)>
        render;
    const char* logType = nullptr;  // sent-log tag, or none

    explicit RunPlan(const browser::DocumentType& type)
        : type(type),
          sheet(type.styleSheet),
          sentText(type.sentText),
          failedText(type.failedText),
          keyCell(type.cells.key),
          nameCell(type.cells.name),
          emailCell(type.cells.email),
          logType(type.sentLog ? type.name : nullptr) {}
};

void DocumentSender::runTransactions(const browser::DocumentType& type) {
    const auto documents = browser::indexBy(m_window.listDocument(), type.recordPath, "TxnID");
    RunPlan plan(type);
    plan.render = [&](const xml::Stylesheet& sheet, const std::string& key, bool preview,
                      Rendered& out) -> Result<std::string> {
        auto found = documents.find(key);
        if (found == documents.end()) {
            return Error{0, "no such document"};
        }
        xml::Node doc = found->second;
        out.record = doc;
        if (!preview) {
            out.attachment = buildAttachment(doc);
            out.subject = type.subject + doc.valueOf("RefNumber") + "  " +
                          "Date: " + doc.valueOf("TxnDate") + "  ";
        }
        return sheet.transformNode(doc);
    };
    runRows(plan);
}

void DocumentSender::runCustomerDocuments(const browser::DocumentType& type) {
    const bool statements = type.shape == browser::ListShape::Statements;
    const xml::Document& doc = m_window.listDocument();
    constexpr const char* kCustomers = "/QBXML/QBXMLMsgsRs/CustomerQueryRs/CustomerRet";
    const auto customers = browser::indexBy(doc, kCustomers, statements ? "ListID" : "FullName");
    // Indexed once a run. Composing moves these records into the customer's element, so a
    // later run over the same list finds them no more.
    std::unordered_map<std::string, std::vector<xml::Node>> invoices, payments, entries;
    if (statements) {
        invoices =
            groupBy(doc, "/QBXML/QBXMLMsgsRs/InvoiceQueryRs/InvoiceRet", "CustomerRef/ListID");
        payments = groupBy(doc, "/QBXML/QBXMLMsgsRs/ReceivePaymentQueryRs/ReceivePaymentRet",
                           "CustomerRef/ListID");
    } else {
        entries = groupBy(doc, type.recordPath, "CustomerRef/FullName");
    }
    auto take = [](auto& groups, const std::string& key) {
        std::vector<xml::Node> out;
        if (auto it = groups.find(key); it != groups.end()) {
            out = std::move(it->second);
            groups.erase(it);
        }
        return out;
    };
    RunPlan plan(type);
    plan.render = [&](const xml::Stylesheet& sheet, const std::string& key, bool,
                      Rendered& out) -> Result<std::string> {
        auto found = customers.find(key);
        if (found == customers.end()) {
            return Error{0, "no such customer"};
        }
        xml::Node customer = found->second;
        out.record = customer;
        if (statements) {
            double forward = number(customer.valueOf("TotalBalance"));
            for (xml::Node invoice : take(invoices, key)) {
                forward -=
                    number(invoice.valueOf("Subtotal")) + number(invoice.valueOf("SalesTaxTotal"));
                customer.appendChild(invoice);
            }
            for (xml::Node payment : take(payments, key)) {
                forward += number(payment.valueOf("TotalAmount"));
                customer.appendChild(payment);
            }
            customer.appendElement("PrintDate", clock::todayIso());
            customer.appendElement("ForwardBalance", decimalText(forward));
        } else {
            for (xml::Node entry : take(entries, key)) {
                customer.appendChild(entry);
            }
            customer.appendElement("PrintDate", clock::todayIso());
        }
        out.subject = type.subject;
        return sheet.transformNode(customer);
    };
    runRows(plan);
}

// What the user added, read once at the start of a run (the render-ahead thread reads it too).
struct DocumentSender::Extras {
    DocumentTexts texts;
    std::string companyName;
    std::string companyCountry;
    pdf::PageSetup page;
};

void DocumentSender::addExtras(const RunPlan& plan, const Extras& extras, const std::string& header,
                               bool preview, Rendered& out) const {
    const std::string& html = **out.html;
    const OwnWords words = extras.texts.words(plan.type.name);
    const bool payLink = !m_settings.payLink.empty() && takesPayLink(plan.type);
    if (words.empty() && !payLink && m_settings.attachPdf == 0 && !m_pdfRequest) {
        out.page = header + html;
        return;
    }
    const DocumentFacts facts =
        documentFacts(plan.type, out.record, extras.companyName, extras.companyCountry);
    std::string pay;
    if (payLink && std::strtod(facts.balance.c_str(), nullptr) > 0) {
        pay = payButtonHtml(fillPlaceholders(m_settings.payLink, facts, true));
    }
    out.pdfPage = pay + header + html;
    out.pdfName = pdfFileName(plan.type, facts);
    const std::string cover = fillPlaceholders(words.cover, facts);
    out.page = (cover.empty() ? std::string() : coverHtml(cover)) + out.pdfPage;
    if (preview) {
        return;
    }
    if (!words.subject.empty()) {
        out.subject = fillPlaceholders(words.subject, facts);
    }
    out.extras.plainText = cover;
    if (m_settings.attachPdf != 0) {
        auto pdf = pdfAttachment(out.pdfPage, extras.page, out.pdfName, text::trim(out.subject));
        if (!pdf) {
            out.html.emplace(Error{pdf.error().code,
                                   "its PDF copy could not be made: " + pdf.error().description});
            return;
        }
        out.extras.files.push_back(std::move(pdf).value());
    }
}

void DocumentSender::runRows(const RunPlan& plan) {
    m_runEndText.clear();
    const std::string header = companyHeaderHtml();
    Extras extras;
    {
        auto texts = DocumentTexts::load(m_folder);
        if (!texts) {
            m_ui.messageBox("Dorvane cannot read your own subjects and cover texts (" +
                            texts.error().description +
                            "), so nothing was sent. Correct them in the mail preferences, or "
                            "delete the file to send with the program's own words.");
            m_window.setStatusText("Nothing sent: " + std::string(kDocumentTextsFile) +
                                   " cannot be read");
            return;
        }
        extras.texts = std::move(texts).value();
        // The link goes into every customer's document: one that was put into the settings
        // file by hand is checked as `settings set` checks it.
        if (Status link = m_settings.payLink.empty() || !takesPayLink(plan.type)
                              ? Status()
                              : platform::checkSetting("Documents", "PayLink", m_settings.payLink);
            !link) {
            m_ui.messageBox("Dorvane will not put the pay-now link into the documents (" +
                            link.error().description +
                            "), so nothing was sent. Correct Documents PayLink in the mail "
                            "preferences, or empty it to send without the link.");
            m_window.setStatusText("Nothing sent: the pay-now link is not a web address");
            return;
        }
        xml::Node company = m_company.companyNode();
        extras.companyName = company.valueOf("CompanyName");
        extras.companyCountry = company.valueOf("Address/Country");
        extras.page = pageSetup(m_settings, extras.companyCountry);
    }
    auto sheet = xml::Stylesheet::load(m_folder.filePath(plan.sheet));
    if (!sheet) {
        m_window.setStatusText(plan.failedText);
        return;
    }
    const bool preview = m_window.previewChecked() || m_pdfRequest;
    if (!preview && plan.logType && !sentLogWritable()) {
        return;
    }
    if (!preview && m_mailer.openMailTransport(context(), m_store) > 0) {
        return;
    }
    auto& list = m_window.list();
    auto processed = [&](int i) {
        if (m_pdfRequest) {
            return i == m_pdfRequest->row;
        }
        // A row the search hides is never mailed unseen, checked or not.
        const ui::ListRow& row = list.row(i);
        return row.checked && !row.hidden &&
               (!cell(row, plan.emailCell).empty() || preview || m_settings.alwaysBcc == 1 ||
                m_settings.altEmail == 1);
    };
    auto renderRow = [&](std::string key) {
        Rendered out;
        out.html.emplace(plan.render(*sheet, key, preview, out));
        if (*out.html) {
            addExtras(plan, extras, header, preview, out);
        }
        return out;
    };
    // While a message travels to the server, the next document is rendered on a second
    // thread, so that the run waits on the network and not on both. One render at a time,
    // and none is under way when the person gets a chance to act (`yield`) or at an address
    // prompt.
    // The exchange-file sheet and the company record it adds are looked up once for the run.
    struct SheetForRun {
        std::optional<Result<xml::Stylesheet>>& slot;
        xml::Node& company;
        ~SheetForRun() {
            slot.reset();
            company = xml::Node();
        }
    } attachmentSheet{m_attachmentSheet, m_exchangeCompany};
    if (!preview && m_settings.attachment != 0) {
        m_attachmentSheet.emplace(xml::Stylesheet::load(m_folder.filePath("/attachment.xslt")));
        m_exchangeCompany = exchangeCompany();
    }
    const bool renderAhead = !preview && m_settings.altEmail != 1;
    std::future<Rendered> ahead;
    int aheadRow = -1;
    std::string previewText;
    std::vector<std::string> previewPdfPages;
    bool logBroken = false;
    m_window.setProgress(0);
    for (int i = 0; i < list.rowCount() && !logBroken; ++i) {
        if (!processed(i)) {
            continue;
        }
        const ui::ListRow& row = list.row(i);
        const std::string& email = cell(row, plan.emailCell);
        RowOutcome outcome;
        outcome.row = i;
        outcome.key = cell(row, plan.keyCell);
        outcome.name = cell(row, plan.nameCell);
        outcome.recipient = email;
        Rendered rendered = aheadRow == i ? ahead.get() : renderRow(outcome.key);
        aheadRow = -1;
        if (renderAhead && rendered.html && *rendered.html) {
            for (int next = i + 1; next < list.rowCount(); ++next) {
                if (processed(next)) {
                    ahead = std::async(std::launch::async, renderRow,
                                       cell(list.row(next), plan.keyCell));
                    aheadRow = next;
                    break;
                }
            }
        }
        const std::string& subject = rendered.subject;
        const std::string& attachment = rendered.attachment;
        auto& html = *rendered.html;
        if (!html) {
            m_window.setStatusText(plan.failedText);
            outcome.why = std::string(plan.failedText) + ": " + html.error().description;
        } else if (preview) {
            previewText += "<DIV style='page-break-after:always'>" + rendered.page + "</div>";
            if (m_pdfRequest) {
                m_pdfRequest->file = pdfAttachment(rendered.pdfPage, extras.page, rendered.pdfName,
                                                   rendered.pdfName);
            } else if (m_settings.attachPdf != 0) {
                previewPdfPages.push_back(std::move(rendered.pdfPage));
            }
        } else {
            std::string recipient = email;
            const bool testMode = m_settings.test == 1 && !m_settings.emailAdr.empty();
            if (testMode) {
                recipient = m_settings.emailAdr;
            }
            m_notSentReason.clear();
            outcome.sent =
                sendDocumentMail(m_company.senderAddress(), recipient, subject, rendered.page,
                                 attachment, outcome.name, rendered.extras);
            outcome.recipient = recipient;
            // A copy that reached only the test address leaves the document unsent for its
            // customer: it is noted as a test, which the "Already sent" search never finds.
            outcome.test = outcome.sent && testMode && recipient == m_settings.emailAdr;
            if (!outcome.sent) {
                outcome.why = !m_notSentReason.empty() ? m_notSentReason : m_mailer.lastFailure();
            }
            if (outcome.sent) {
                list.setChecked(i, false);
                if (plan.logType) {
                    // On file at once: a run killed after this point never mails it again.
                    // The end of the run writes the whole log back as usual.
                    const std::string record =
                        outcome.test ? browser::testSentRecord(outcome.key, plan.logType, recipient)
                                     : browser::sentRecord(outcome.key, plan.logType);
                    m_window.sentLogText() += record;
                    Status noted = m_folder.appendProgramFile(record, browser::kSentLogFile);
                    if (noted) {
                        noteSent(m_folder, plan.type, rendered.record, outcome);
                    } else {
                        // Whatever goes out after this is never logged and would be mailed
                        // again by the next run: stop here.
                        logBroken = true;
                        m_ui.messageBox(
                            std::string(text::trim(subject)) + " for " + outcome.name +
                            " was sent, but Dorvane could not note it in the sent log " +
                            m_folder.filePath(browser::kSentLogFile) + " (" +
                            noted.error().description +
                            ").\r\nSending was stopped so that no document goes out twice: the "
                            "documents still checked were not sent. Make the file writable "
                            "before you send again; until then this document is not shown as "
                            "\"Already sent\".");
                    }
                }
            }
        }
        if (m_rowProcessed) {
            m_rowProcessed(outcome);
        }
        m_window.setProgress(static_cast<int>((i + 1) * 100 / list.rowCount()));
        if (ahead.valid()) {
            ahead.wait();
        }
        m_ui.yield();
    }
    if (ahead.valid()) {
        ahead.wait();
    }
    m_window.setProgress(-1);
    if (m_pdfRequest) {
        return;
    }
    if (preview) {
        if (!previewPdfPages.empty()) {
            writePreviewPdf(previewPdfPages, extras.page);
        }
        showPreview(previewText);
        return;
    }
    m_mailer.disconnect();
    if (logBroken) {
        m_window.setStatusText("Sending stopped: the sent log could not be written");
        return;
    }
    saveSentLog();
    m_runEndText = plan.sentText;
    m_window.setStatusText(plan.sentText);
}

bool DocumentSender::sentLogWritable() {
    if (Status writable = m_folder.appendProgramFile("", browser::kSentLogFile); !writable) {
        m_ui.messageBox("Dorvane cannot write the sent log " +
                        m_folder.filePath(browser::kSentLogFile) + " (" +
                        writable.error().description +
                        "), so nothing was sent: a document mailed now could not be noted as "
                        "sent and would go out again. Make the file writable and send again.");
        m_window.setStatusText("Nothing sent: the sent log cannot be written");
        return false;
    }
    return true;
}

bool DocumentSender::saveSentLog() {
    if (Status saved = m_folder.writeProgramFile(m_window.sentLogText(), browser::kSentLogFile);
        !saved) {
        m_ui.messageBox("Could not write " + m_folder.filePath(browser::kSentLogFile) + ": " +
                        saved.error().description);
        return false;
    }
    return true;
}

bool DocumentSender::sendDocumentMail(const std::string& sender, std::string& recipient,
                                      const std::string& subject, const std::string& html,
                                      const std::string& attachmentText,
                                      const std::string& displayName, const MessageExtras& extras) {
    const std::string bcc =
        m_settings.bcc == 1 && !m_settings.bccAdr.empty() ? m_settings.bccAdr : std::string();
    if (m_settings.altEmail == 1) {
        recipient =
            m_ui.inputBox(displayName + "\r\n" + subject, "Specify the email address", recipient)
                .value_or("");
        if (recipient.empty() && bcc.empty()) {
            m_notSentReason = "no address was given for it";
            return false;
        }
    }
    return m_mailer.deliver(context(), sender, recipient, subject, html, attachmentText, extras,
                            m_notSentReason);
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
            // As a file:// address: the form that composing a message embeds inline, so the
            // recipient gets the picture and never the sender's local path.
            params.emplace_back("logo", fileAddress(path));
            break;
        }
    }
    auto html = sheet->transformNode(company, params);
    return html ? std::move(html).value() : std::string();
}

xml::Node DocumentSender::exchangeCompany() {
    xml::Node company =
        m_window.listDocument().selectOne("/QBXML/QBXMLMsgsRs/CompanyQueryRs/CompanyRet");
    return company ? company : m_company.companyNode();
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
    if (xml::Node company = m_exchangeCompany ? m_exchangeCompany : exchangeCompany()) {
        xml::Node sent = copy.importNode(company);
        for (const char* child : {"CompanyType", "FileName", "LegalAddress", "LegalCompanyName",
                                  "FirstMonthFiscalYear", "FirstMonthIncomeTaxYear"}) {
            if (xml::Node c = sent.firstChildElement(child)) {
                c.remove();
            }
        }
        copy.root().appendChild(sent);
    }
    std::optional<Result<xml::Stylesheet>> loaded;
    if (!m_attachmentSheet) {
        loaded.emplace(xml::Stylesheet::load(m_folder.filePath("/attachment.xslt")));
    }
    auto& sheet = m_attachmentSheet ? *m_attachmentSheet : *loaded;
    if (sheet) {
        if (auto text = sheet->transformNode(copy.root())) {
            return std::move(text).value();
        }
    }
    return "<?xml version=\"1.0\" ?>" + copy.root().xml();
}

Result<AttachedFile> DocumentSender::documentPdf(int row) {
    m_pdfRequest.emplace(PdfRequest{row, Error{0, "there is no such document in the list"}});
    sendSelectedDocuments();
    Result<AttachedFile> file = std::move(m_pdfRequest->file);
    m_pdfRequest.reset();
    return file;
}

void DocumentSender::writePreviewPdf(const std::vector<std::string>& pages,
                                     const pdf::PageSetup& page) {
    auto bytes = pdf::renderPdf(pages, page, "Preview");
    const std::string path = m_folder.filePath(kPreviewPdfFile);
    Status written = bytes
                         ? files::writeAtomically(path, {*bytes}, 0644u, files::Durability::Scratch)
                         : Status(bytes.error());
    if (!written) {
        m_ui.messageBox("Could not write " + path + ": " + written.error().description);
        return;
    }
    m_previewPdf = path;
    m_ui.openWithDesktop(m_previewPdf);
}

void DocumentSender::showPreview(const std::string& html) {
    {
        // Each document is a block of its own: on screen a rule and some room set it off from
        // the next, on paper it ends its page (its own style says so; the sheet repeats it for
        // browsers that only know the newer property).
        const std::string style =
            "<style>"
            "body>div{margin:0 0 36px 0;padding:0 0 36px 0;border-bottom:3px double #8a8a8a;"
            "break-after:page}"
            "body>div:last-child{border-bottom:none}"
            "@media print{body>div{margin:0;padding:0;border-bottom:none}}"
            "</style>";
        if (Status written = m_folder.writeProgramFile(
                "<html><head>" + style + "</head><body>" + html + "</body></html>", "preview.htm");
            !written) {
            m_ui.messageBox("Could not write " + m_folder.filePath("preview.htm") + ": " +
                            written.error().description);
            return;
        }
    }
    m_ui.openWithDesktop(m_folder.filePath("preview.htm"));
}

}  // namespace dorvane::mail
