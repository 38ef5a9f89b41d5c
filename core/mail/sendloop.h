// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — "Send Email": rendering the checked documents and mailing them, or previewing.
//
// A run walks the rows of the list on show, never one its search hides. Each checked row with
// an address (or any checked row when previewing, or when blind copies or the address prompt
// are on) is rendered with its type's style sheet from the list's own answer, and either mailed
// through the transport the settings name or gathered into one preview page. A document that
// went out loses its check mark, and a transaction document is recorded in the sent log: its
// record is added to the file right after the message, so that a run killed half-way never mails
// a document twice, and the whole log is written back at the end of the run. A run whose sent
// log cannot be written sends nothing, or stops right after the message it could not note, so
// that no document is mailed twice.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "mail/mailer.h"
#include "pdf/pdf.h"
#include "platform/settings.h"
#include "xml/xml.h"

namespace dorvane::platform {
class ProgramFolder;
}

namespace dorvane::browser {
struct DocumentType;
}

namespace dorvane::ui {
class DocumentWindow;
class UiPort;
}  // namespace dorvane::ui

namespace dorvane::company {
class CompanyInfo;
}

namespace dorvane::mail {

// What became of one processed row.
struct RowOutcome {
    int row = 0;
    std::string key;        // the row's TxnID or ListID (name for timesheets)
    std::string name;       // the name shown in the row
    std::string recipient;  // where it went (after test mode and the address prompt)
    bool sent = false;
    bool test = false;  // went to the test address only: noted as a test, not as sent
    std::string why;    // why it did not go out, in the person's words
};

class DocumentSender {
public:
    DocumentSender(ui::DocumentWindow& window, const platform::ProgramFolder& folder,
                   platform::SettingsStore& settings, company::CompanyInfo& company,
                   ui::UiPort& ui);

    // Command1: loads the mail settings and runs the send procedure of the type on show (none
    // for a type without a style sheet).
    void sendSelectedDocuments();

    // Delivers one rendered document through the run's transport; `recipient` may be
    // replaced by the address the person gives. True when it went out.
    bool sendDocumentMail(const std::string& sender, std::string& recipient,
                          const std::string& subject, const std::string& html,
                          const std::string& attachmentText, const std::string& displayName,
                          const MessageExtras& extras = {});

    // The company header: the company record through "company.xslt"; "" without either.
    std::string companyHeaderHtml();
    // The exchange file of one document, or "" when attachments are off.
    std::string buildAttachment(xml::Node document);
    // Writes "preview.htm" and opens it with the desktop's browser.
    void showPreview(const std::string& html);
    // With the PDF copy on, a preview also writes "preview.pdf" (one document after the other)
    // and opens it.
    void writePreviewPdf(const std::vector<std::string>& pages, const pdf::PageSetup& page);

    // For the runs to come: attach the PDF copy (true) or not (false) whatever the settings
    // say; nullopt goes back to the settings (Documents AttachPdf).
    void setPdfOverride(std::optional<bool> attach) { m_pdfOverride = attach; }
    // The PDF the last preview wrote; empty when it wrote none.
    const std::string& previewPdf() const { return m_previewPdf; }
    // The PDF copy of one row's document of the list on show (checked or not), as a send run
    // attaches it: the document's file name and bytes.
    Result<AttachedFile> documentPdf(int row);

    // Called after every processed row (the command line prints these).
    void onRowProcessed(std::function<void(const RowOutcome&)> handler) {
        m_rowProcessed = std::move(handler);
    }

    const platform::MailSettings& mailSettings() const { return m_settings; }
    // The status text the last run ended on when it went through its rows ("Invoices sent");
    // empty when it stopped before them.
    const std::string& runEndText() const { return m_runEndText; }
    Mailer& mailer() { return m_mailer; }

private:
    struct RunPlan;
    struct Rendered;
    struct Extras;
    // The cover text, pay-now link and PDF copy the user turned on, added to a rendered row.
    void addExtras(const RunPlan& plan, const Extras& extras, const std::string& header,
                   bool preview, Rendered& out) const;
    void runTransactions(const browser::DocumentType& type);
    // Statements and timesheets: one document per customer.
    void runCustomerDocuments(const browser::DocumentType& type);
    // The run shared by every type: loads the style sheet, opens the transport, walks the
    // rows through the plan's renderer, writes the sent log.
    void runRows(const RunPlan& plan);
    // Writes the sent log whole; false (after telling the person) when it cannot.
    bool saveSentLog();
    // Whether a record can be added to the sent log; tells the person when not.
    bool sentLogWritable();
    MailContext context();

    ui::DocumentWindow& m_window;
    const platform::ProgramFolder& m_folder;
    platform::SettingsStore& m_store;
    company::CompanyInfo& m_company;
    ui::UiPort& m_ui;
    Mailer m_mailer;
    platform::MailSettings m_settings;
    std::function<void(const RowOutcome&)> m_rowProcessed;
    std::string m_runEndText;
    std::optional<bool> m_pdfOverride;
    // A run for documentPdf: only this row, rendered as a preview, into `file`.
    struct PdfRequest {
        int row;
        Result<AttachedFile> file;
    };
    std::optional<PdfRequest> m_pdfRequest;
    std::string m_previewPdf;
    // Why the last sendDocumentMail sent nothing when the transport did not say.
    std::string m_notSentReason;
    // "attachment.xslt" as read at the start of the run that is under way, and the sender's
    // company record that the run's exchange files carry.
    std::optional<Result<xml::Stylesheet>> m_attachmentSheet;
    xml::Node m_exchangeCompany;

    // The company record an exchange file carries: the list answer's, else the one in use.
    xml::Node exchangeCompany();
};

}  // namespace dorvane::mail
