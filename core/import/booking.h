// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — one add request of an import sent to QuickBooks, and what its answer says was
// booked.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "import/exchangefile.h"
#include "xml/xml.h"

namespace dorvane::qbgateway {
class Gateway;
}

namespace dorvane::platform {
class ProgramFolder;
}

namespace dorvane::ui {
class UiPort;
}

namespace dorvane::imports {

// What happened to the last transaction an import tried to book.
enum class ImportOutcome {
    None,         // nothing tried yet, or the document kind books nothing here
    Added,        // QuickBooks accepted it
    Refused,      // QuickBooks answered with an error
    Unreachable,  // no answer from QuickBooks (the gateway said why)
    NotSent,      // the person cancelled, a step found nothing to send, or it was a duplicate
};

// A record QuickBooks took during an import, as its answer describes it.
struct AddedRecord {
    std::string noun;       // "vendor", "customer", "bill", "purchase order", "check", …
    std::string name;       // a vendor's or customer's name
    std::string refNumber;  // a transaction's number
    std::string total;
    std::string account;  // the account that pays a check or a card charge
    std::string party;    // the vendor, payee or customer a transaction names
};

// What a reader calls each counter-document, and where its party and total stand.
struct BookedKind {
    const char* add;  // the add element; the query, the answer's element are named after it
    const char* label;
    const char* payee;
    const char* amount;
    const char* noun;     // as a sentence names it
    const char* account;  // the paying account; nullptr when the document has none
};

inline constexpr BookedKind kBookedKinds[] = {
    {"BillAdd", "Bill", "VendorRef/FullName", "AmountDue", "bill", nullptr},
    {"PurchaseOrderAdd", "Purchase order", "VendorRef/FullName", "TotalAmount", "purchase order",
     nullptr},
    {"CheckAdd", "Check", "PayeeEntityRef/FullName", "Amount", "check", "AccountRef/FullName"},
    {"CreditCardChargeAdd", "Credit card charge", "PayeeEntityRef/FullName", "Amount",
     "card charge", "AccountRef/FullName"},
    {"SalesReceiptAdd", "Sales receipt", "CustomerRef/FullName", "TotalAmount", "sales receipt",
     nullptr},
};

// "Bill" for "BillAdd": what the kind's query and answer are named after.
std::string bookedType(const BookedKind& kind);

// The record an accepted add request's answer describes.
AddedRecord addedRecord(const xml::Node& ret);

struct Booking {
    ImportOutcome outcome = ImportOutcome::NotSent;  // Added, Refused or Unreachable
    std::optional<AddedRecord> added;                // what QuickBooks took, when it says
    std::string refusal{};                           // QuickBooks' reason, when Refused
};

// Sends one add request (the prolog in front) and judges the answer; a refusal is shown.
Booking sendAddRequest(qbgateway::Gateway& gateway, ui::UiPort& ui, std::string_view body);

// Notes in the activity log what became of an exchange file's add request: `source` is the
// document that came in (its root), `kind` its kind ("Invoice").
void noteBooking(const platform::ProgramFolder& folder, DocumentKind kind, const xml::Node& source,
                 std::string_view request, const Booking& booking);

}  // namespace dorvane::imports
