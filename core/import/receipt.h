// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — an Authorize.Net receipt, as copied from its e-mail or web page, turned into the
// small receipt document (root AuthorizeNet) that the import window opens like an exchange
// file.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace dorvane::imports {

inline constexpr const char* kReceiptFileName = "tmpauthorize.xml";
inline constexpr const char* kCopyReceiptQuestion =
    "Please copy the Authorize.Net receipt into the clipboard";
inline constexpr const char* kCannotRetrieveCustomerName = "Cannot retrieve customername";
inline constexpr const char* kReceiptAddedStatus = "Salesreceipt added";
inline constexpr const char* kReceiptAddedPage =
    "<body><p align='center'><b><font color='#0000FF'>Sales Receipt sucessfully "
    "added.</font></b></p><p align='center'>Please review this receipt in Quickbooks ( "
    "Customer/SalesReceipts or Accounts/UndepositedFunds) </p><p align='center'>and, if "
    "necessary, adjust Items and Tax.</p></body>";
inline constexpr const char* kReceiptWithCustomerSheet = "/SReceiptFromAuthorize.xslt";
inline constexpr const char* kReceiptWithoutCustomerSheet = "/SReceiptFromAuthorizewoCust.xslt";

// The longest text read as a receipt. One receipt is a few kilobytes; a clipboard that holds
// more has taken more than the receipt, and its every section would be previewed and searched.
inline constexpr std::size_t kMaxReceiptText = 64 * 1024;
// The largest receipt document opened (the document of a receipt text of kMaxReceiptText
// stays well below it).
inline constexpr std::size_t kMaxReceiptDocument = 4 * kMaxReceiptText;

// The receipt document's text: the declaration, directly the AuthorizeNet start tag, one
// element per receipt line "Label : value" (the label without "/" and blanks as its name, the
// trimmed value up to a second ":" as its text, each followed by CR LF), "Date/Time" lines as
// DateTime with the first eleven characters of the value, the lines after a "=" header naming
// CUSTOMER BILLING or CUSTOMER SHIPPING inside Billing or Shipping, and the end tag.
//
// Lines end at CR LF, a lone LF or a lone CR. Blank lines and lines without ":" are left out.
// Blanks are spaces, tabs and no-break spaces; a byte-order mark in front is dropped.
// Values go in as they stand, unescaped, unless `escapeValues`: then &, < and > in values are
// written as references. Either way a label that makes no element name, a value with markup
// or a section left open yields a text that does not parse, which opening it reports.
std::string receiptToXml(std::string_view clipboardText, bool escapeValues = false);

}  // namespace dorvane::imports
