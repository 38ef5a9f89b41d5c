// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — reading an exchange file (.dvx) that arrived from outside, recognising the kind
// of document it carries, and the prolog that goes before every add request of an import.
//
// An exchange file is untrusted: it is read with a size cap before the parser sees it, parsed
// without network, DTD loading or entity expansion, and a document type declaration with an
// internal subset (the way entity bombs arrive) is refused outright.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "common/result.h"
#include "xml/xml.h"

namespace dorvane::imports {

// The largest exchange file read. A document mailed by Dorvane is a few kilobytes; even an
// invoice of thousands of lines stays far below this. Opening one costs about twenty times
// its size (the document, the preview, the conversion), so the cap also bounds what opening
// any file can cost.
inline constexpr std::uintmax_t kMaxExchangeFileSize = 8u * 1024u * 1024u;

// The message box for a file that cannot be read or parsed: this text, then the reason.
inline constexpr const char* kCannotProcessFile = "Cannot process file ";

// The kinds the import window knows, by the upper-cased name of the root element.
enum class DocumentKind { Unknown, Invoice, Estimate, SalesReceipt, AuthorizeNet, Pda };

inline constexpr const char* kInvoiceKind = "INVOICERET";
inline constexpr const char* kEstimateKind = "ESTIMATERET";
inline constexpr const char* kSalesReceiptKind = "SALESRECEIPTRET";
inline constexpr const char* kAuthorizeNetKind = "AUTHORIZENET";
inline constexpr const char* kPdaKind = "DORVANE_PDA";

// The kind for a node name as found in a file; upper-casing makes "invoiceret" an invoice.
DocumentKind recogniseKind(std::string_view kindName);
// The exact, case-sensitive root name the conversion steps select ("InvoiceRet",
// "EstimateRet", "SalesReceiptRet", "AuthorizeNet", "Dorvane_PDA"); "" for Unknown.
std::string_view rootElementName(DocumentKind kind);

struct ExchangeFile {
    xml::Document document;
    // The name of the document's child node 1 (counting the XML declaration as child 0 when
    // the file has one): the root element in every file written as specified. nullopt when
    // the document has no second child node (a file without declaration and with nothing
    // after its root); the window then keeps its previous kind. A comment there reads
    // "#comment", a processing instruction its target, a document type its name.
    std::optional<std::string> kindName;
    DocumentKind kind = DocumentKind::Unknown;
};

// Reads and parses an exchange file. The error's description is the reason to show after
// kCannotProcessFile: the parser's reason, or why the file could not be read (too large,
// not a regular file, unreadable).
Result<ExchangeFile> readExchangeFile(const std::filesystem::path& file);
// The same for text already in memory (the size cap applies too).
Result<ExchangeFile> parseExchangeText(std::string_view text);

// "Cannot process file " followed directly by the reason.
std::string cannotProcessMessage(const Error& error);

// The root element the conversion step works on: the document's child element named exactly
// `rootElementName(kind)`; null when the root is spelled otherwise ("invoiceret").
xml::Node selectConversionRoot(const xml::Document& document, DocumentKind kind);

// ---- the qbXML add-request prolog -------------------------------------------------------

inline constexpr std::string_view kQbxmlSystemIdentifier = "http://developer.intuit.com";
inline constexpr std::string_view kRequestProlog =
    "<?xml version=\"1.0\" ?>\r\n"
    "<!DOCTYPE QBXML PUBLIC '-//INTUIT//DTD QBXML QBD 1.1//EN' 'http://developer.intuit.com'>"
    "\r\n";

// The prolog followed by the request body as a style sheet (and the rewriting) produced it.
std::string withRequestProlog(std::string_view body);

}  // namespace dorvane::imports
