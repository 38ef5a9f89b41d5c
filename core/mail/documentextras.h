// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — what a user may add to a mailed document: the sender's own subject and cover
// text, a pay-now link, a PDF copy.
//
// All of it is off until the user turns it on; with it off a message is exactly the one the
// send run always composed. The own words live per document type in "documenttexts.xml" in
// the program folder (edited in the mail preferences); the pay-now link pattern and the PDF
// options live in the settings (section "Documents").
//
// Subjects, cover texts and the link pattern take placeholders in braces: {number}, {date},
// {duedate}, {customer}, {company}, {balance}, {total}, {currency}. An unknown name stays as
// written. In the link every value is percent-encoded.
#pragma once

#include <map>
#include <string>
#include <string_view>

#include "common/result.h"
#include "mail/mimecompose.h"
#include "pdf/pdf.h"
#include "xml/xml.h"

namespace dorvane::platform {
class ProgramFolder;
struct MailSettings;
}  // namespace dorvane::platform

namespace dorvane::browser {
struct DocumentType;
}

namespace dorvane::mail {

inline constexpr const char* kDocumentTextsFile = "documenttexts.xml";
inline constexpr const char* kPreviewPdfFile = "preview.pdf";

// What the placeholders stand for, for one document.
struct DocumentFacts {
    std::string number;
    std::string date;
    std::string dueDate;
    std::string customer;
    std::string company;
    std::string balance;  // two decimals, no thousands separator
    std::string total;
    std::string currency;  // ISO 4217 (USD)
};

// The facts of a document of `type`: a transaction record, or for statements and timesheets
// the customer record the send run composed (its TotalBalance is a statement's balance).
// `companyCountry` (the company file's Address/Country) gives the currency when the record
// names none.
DocumentFacts documentFacts(const browser::DocumentType& type, xml::Node record,
                            std::string_view companyName, std::string_view companyCountry);

// The placeholders of subjects and cover texts, and the ones a pay-now link wants, as the
// preferences list them.
inline constexpr const char* kWordPlaceholders =
    "{number} {date} {duedate} {customer} {company} {balance} {total} {currency}";
inline constexpr const char* kLinkPlaceholders = "{number} {balance} {currency} {customer}";

// `pattern` with every known placeholder replaced; percent-encoded values with `forUrl`.
std::string fillPlaceholders(std::string_view pattern, const DocumentFacts& facts,
                             bool forUrl = false);

// The sender's words for one document type; an empty field keeps the program's own.
struct OwnWords {
    std::string subject;
    std::string cover;
    bool empty() const { return subject.empty() && cover.empty(); }
};

// "documenttexts.xml": the own words of every type that has any.
class DocumentTexts {
public:
    // A missing file is no own words at all; an unreadable or broken one is an error.
    static Result<DocumentTexts> load(const platform::ProgramFolder& folder);
    // Written atomically; types without words are left out.
    Status save(const platform::ProgramFolder& folder) const;

    OwnWords words(std::string_view type) const;
    void setWords(std::string_view type, OwnWords words);

private:
    std::map<std::string, OwnWords, std::less<>> m_words;
};

// Invoices and statements carry the pay-now link; estimates, orders, credit memos, paid
// sales receipts and timesheets never do.
bool takesPayLink(const browser::DocumentType& type);

// The link as a button-like anchor, for the top of the document. Like the cover text, it is
// written in ASCII: other letters as character references.
std::string payButtonHtml(std::string_view url);
// The cover text as HTML paragraphs (escaped; blank lines part paragraphs).
std::string coverHtml(std::string_view text);

// The PDF's page: the settings' page size ("auto": Letter for a company in the US or Canada
// or of no known country, A4 otherwise) and margin.
pdf::PageSetup pageSetup(const platform::MailSettings& settings, std::string_view companyCountry);

// The PDF copy of `html` as a message carries it, under `name`.
Result<AttachedFile> pdfAttachment(const std::string& html, const pdf::PageSetup& page,
                                   std::string name, std::string_view title);

// "Invoice-1041.pdf"; for a document without a number the name shown in its row
// ("Statement-Kristy Abercrombie.pdf"); characters a file name cannot hold become "-".
std::string pdfFileName(const browser::DocumentType& type, const DocumentFacts& facts);

}  // namespace dorvane::mail
