// SPDX-License-Identifier: GPL-3.0-or-later
#include "mail/documentextras.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <glib.h>

#include "browser/documenttypes.h"
#include "common/text.h"
#include "platform/programfolder.h"
#include "platform/settings.h"

namespace dorvane::mail {
namespace {

double number(const std::string& text) {
    return std::strtod(text.c_str(), nullptr);
}

// The record's currency when it names one QuickBooks knows by name, else the country's.
std::string currencyOf(xml::Node record, std::string_view country) {
    static constexpr std::pair<const char*, const char*> kNames[] = {
        {"US Dollar", "USD"},    {"Canadian Dollar", "CAD"},   {"British Pound Sterling", "GBP"},
        {"Euro", "EUR"},         {"Australian Dollar", "AUD"}, {"New Zealand Dollar", "NZD"},
        {"Mexican Peso", "MXN"},
    };
    const std::string named = record.valueOf("CurrencyRef/FullName");
    for (const auto& [name, code] : kNames) {
        if (text::equalsIgnoreCase(named, name)) {
            return code;
        }
    }
    if (named.size() == 3 &&
        std::all_of(named.begin(), named.end(), [](char c) { return c >= 'A' && c <= 'Z'; })) {
        return named;
    }
    static constexpr std::pair<const char*, const char*> kCountries[] = {
        {"CA", "CAD"}, {"UK", "GBP"}, {"GB", "GBP"}, {"AU", "AUD"}, {"NZ", "NZD"},
    };
    for (const auto& [code, currency] : kCountries) {
        if (text::equalsIgnoreCase(text::trim(country), code)) {
            return currency;
        }
    }
    return "USD";
}

std::string percentEncoded(std::string_view value) {
    static constexpr char kHex[] = "0123456789ABCDEF";
    std::string out;
    for (unsigned char c : value) {
        if ((c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') ||
            c == '-' || c == '.' || c == '_' || c == '~') {
            out += static_cast<char>(c);
        } else {
            out += '%';
            out += kHex[c >> 4];
            out += kHex[c & 15];
        }
    }
    return out;
}

// Letters beyond ASCII as character references: the HTML part goes out as plain ASCII, as
// the style sheets write it. A broken sequence becomes U+FFFD.
std::string asciiReferences(std::string_view text) {
    std::string out;
    const char* p = text.data();
    const char* end = p + text.size();
    while (p < end) {
        if (static_cast<unsigned char>(*p) < 0x80) {
            out += *p++;
            continue;
        }
        const gunichar u = g_utf8_get_char_validated(p, end - p);
        if (u == static_cast<gunichar>(-1) || u == static_cast<gunichar>(-2)) {
            out += "&#65533;";
            ++p;
            continue;
        }
        out += "&#" + std::to_string(u) + ";";
        p = g_utf8_next_char(p);
    }
    return out;
}

}  // namespace

DocumentFacts documentFacts(const browser::DocumentType& type, xml::Node record,
                            std::string_view companyName, std::string_view companyCountry) {
    DocumentFacts f;
    f.company = std::string(companyName);
    f.currency = currencyOf(record, companyCountry);
    if (type.shape != browser::ListShape::Transactions) {
        // A statement or a timesheet: the customer record, with the run's print date.
        f.customer = record.valueOf("FullName");
        f.number = record.valueOf("AccountNumber");
        f.date = record.valueOf("PrintDate");
        const std::string open = browser::openBalanceText(type, record);
        f.balance = text::twoDecimals(number(open.empty() ? record.valueOf("TotalBalance") : open));
        f.total = f.balance;
        return f;
    }
    f.number = record.valueOf("RefNumber");
    f.date = record.valueOf("TxnDate");
    f.dueDate = record.valueOf("DueDate");
    f.customer =
        record.valueOf(type.address == browser::AddressSource::Vendor ? "VendorRef/FullName"
                                                                      : "CustomerRef/FullName");
    // An invoice carries no TotalAmount: its total is the subtotal and the tax.
    const std::string totalAmount = record.valueOf("TotalAmount");
    const double total = !totalAmount.empty() ? number(totalAmount)
                                              : number(record.valueOf("Subtotal")) +
                                                    number(record.valueOf("SalesTaxTotal"));
    f.total = text::twoDecimals(total);
    // Where the type asks for no payment (an estimate, an order), what it is about is its total.
    const std::string open = browser::openBalanceText(type, record);
    f.balance = text::twoDecimals(open.empty() ? total : number(open));
    return f;
}

std::string fillPlaceholders(std::string_view pattern, const DocumentFacts& facts, bool forUrl) {
    const std::pair<std::string_view, const std::string*> names[] = {
        {"number", &facts.number},     {"date", &facts.date},         {"duedate", &facts.dueDate},
        {"customer", &facts.customer}, {"company", &facts.company},   {"balance", &facts.balance},
        {"total", &facts.total},       {"currency", &facts.currency},
    };
    std::string out;
    std::size_t pos = 0;
    while (pos < pattern.size()) {
        const std::size_t open = pattern.find('{', pos);
        const std::size_t close =
            open == std::string_view::npos ? open : pattern.find('}', open + 1);
        if (close == std::string_view::npos) {
            out.append(pattern.substr(pos));
            break;
        }
        out.append(pattern.substr(pos, open - pos));
        const std::string_view name = pattern.substr(open + 1, close - open - 1);
        const auto known = std::find_if(std::begin(names), std::end(names), [&](const auto& n) {
            return text::equalsIgnoreCase(n.first, name);
        });
        if (known == std::end(names)) {
            // Not ours: keep the brace and look again after it.
            out += '{';
            pos = open + 1;
            continue;
        }
        out += forUrl ? percentEncoded(*known->second) : *known->second;
        pos = close + 1;
    }
    return out;
}

Result<DocumentTexts> DocumentTexts::load(const platform::ProgramFolder& folder) {
    DocumentTexts texts;
    const std::string path = folder.filePath(kDocumentTextsFile);
    std::error_code ec;
    if (!std::filesystem::exists(path, ec)) {
        return texts;
    }
    auto doc = xml::Document::load(path, xml::ParseOptions{.refuseInternalSubset = true});
    if (!doc) {
        return Error{doc.error().code, path + ": " + doc.error().description};
    }
    for (xml::Node entry : doc->selectAll("/DocumentTexts/Document")) {
        texts.setWords(entry.attribute("type"),
                       OwnWords{entry.valueOf("Subject"), entry.valueOf("Cover")});
    }
    return texts;
}

Status DocumentTexts::save(const platform::ProgramFolder& folder) const {
    xml::Document doc = xml::Document::withRoot("DocumentTexts");
    for (const auto& [type, words] : m_words) {
        xml::Node entry = doc.root().appendElement("Document");
        entry.setAttribute("type", type);
        entry.appendElement("Subject", words.subject);
        entry.appendElement("Cover", words.cover);
    }
    return folder.writeProgramFile(doc.toString(), kDocumentTextsFile);
}

OwnWords DocumentTexts::words(std::string_view type) const {
    auto found = m_words.find(type);
    return found == m_words.end() ? OwnWords{} : found->second;
}

void DocumentTexts::setWords(std::string_view type, OwnWords words) {
    if (type.empty()) {
        return;
    }
    if (words.empty()) {
        if (auto found = m_words.find(type); found != m_words.end()) {
            m_words.erase(found);
        }
        return;
    }
    m_words.insert_or_assign(std::string(type), std::move(words));
}

bool takesPayLink(const browser::DocumentType& type) {
    const std::string_view name = type.name;
    return name == "Invoice" || name == "Statement";
}

std::string payButtonHtml(std::string_view url) {
    const std::string href = asciiReferences(xml::escapeText(url));
    return "<table cellpadding=\"0\" cellspacing=\"0\" border=\"0\" style=\"margin:0 0 16px "
           "0;\"><tr><td bgcolor=\"#1a7f37\" style=\"padding:10px 22px;\"><a href=\"" +
           href +
           "\" style=\"color:#ffffff;font-family:Arial,Helvetica,sans-serif;font-size:15px;"
           "font-weight:bold;text-decoration:none;\">Pay now</a></td></tr></table>";
}

std::string coverHtml(std::string_view text) {
    std::string out =
        "<div style=\"font-family:Arial,Helvetica,sans-serif;font-size:14px;line-height:1.5;"
        "color:#222222;max-width:660px;margin:0 0 20px 0;\">";
    std::string paragraph;
    auto flush = [&] {
        if (!paragraph.empty()) {
            out += "<p style=\"margin:0 0 10px 0;\">" + paragraph + "</p>";
            paragraph.clear();
        }
    };
    for (const std::string& rawLine : text::split(text, '\n')) {
        const std::string_view line = text::trim(rawLine);
        if (line.empty()) {
            flush();
            continue;
        }
        if (!paragraph.empty()) {
            paragraph += "<br>";
        }
        paragraph += asciiReferences(xml::escapeText(line));
    }
    flush();
    return out + "</div>";
}

pdf::PageSetup pageSetup(const platform::MailSettings& settings, std::string_view companyCountry) {
    pdf::PageSetup page;
    if (!pdf::parsePageSize(settings.pageSize, page.size)) {
        const std::string_view country = text::trim(companyCountry);
        const bool letter = country.empty() || text::equalsIgnoreCase(country, "US") ||
                            text::equalsIgnoreCase(country, "CA");
        page.size = letter ? pdf::PageSize::Letter : pdf::PageSize::A4;
    }
    page.marginPoints = std::clamp(settings.marginPoints, 18, 144);
    return page;
}

Result<AttachedFile> pdfAttachment(const std::string& html, const pdf::PageSetup& page,
                                   std::string name, std::string_view title) {
    auto bytes = pdf::renderPdf(html, page, title);
    if (!bytes) {
        return bytes.error();
    }
    return AttachedFile{std::move(name), "application", "pdf", std::move(bytes).value()};
}

std::string pdfFileName(const browser::DocumentType& type, const DocumentFacts& facts) {
    std::string name = std::string(type.name) + "-" +
                       (!facts.number.empty() ? facts.number : facts.customer) + ".pdf";
    for (char& c : name) {
        if (c == '/' || c == '\\' || c == ':' || c == '"' || static_cast<unsigned char>(c) < 32) {
            c = '-';
        }
    }
    return name;
}

}  // namespace dorvane::mail
