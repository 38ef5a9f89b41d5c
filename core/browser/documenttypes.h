// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — the document types: for each, how the window lists it, how "Send Email" mails it
// and where the window offers it.
//
// One row per type, in the order of the "&E-Mail" menu. The list loaders, the send run, the
// main window and the command line look a type up here by its name.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

#include "xml/xml.h"

namespace dorvane::browser {

// How a type's list is built from its answer, and how its documents are rendered.
enum class ListShape {
    Transactions,  // one row per transaction; the sent log marks those already sent
    Statements,    // one row per active customer, with its balance
    Timesheets,    // one row per name, the minutes of its time entries added up
};

// Whose e-mail address a row shows (and the document goes to).
enum class AddressSource {
    Customer,  // the customer the record's CustomerRef names
    Vendor,    // the vendor the record's VendorRef names
    Entity,    // the customer, vendor or employee the record's EntityRef names
    Record,    // the record's own Email (a customer's)
};

// What a type's "Open Balance" column shows (the list's view option).
enum class OpenBalance {
    None,       // nothing: the document asks for no payment
    Remaining,  // the record's element `remaining` names (an invoice's BalanceRemaining)
    Paid,       // 0.00: paid when made
    Customer,   // the customer's balance: TotalBalance, else Balance
};

// A row has no such cell.
inline constexpr std::size_t kNoCell = static_cast<std::size_t>(-1);

// The cells of a row that the send run reads: 0 is the row text, then the sub-items.
struct RowCells {
    std::size_t key;  // TxnID or ListID (the name for timesheets)
    std::size_t name;
    std::size_t email;
    std::size_t amount = kNoCell;  // what the window adds up under the list
};

struct DocumentType {
    // "Invoice": what the window's caption and the command line show. A transaction's qbXML
    // name, and its tag in the sent log.
    const char* name;
    // The "&E-Mail" menu entry that selects the type: its control name and caption.
    const char* menuEntry;
    const char* menuCaption;
    // What the heading above the list calls its documents ("Invoices").
    const char* title;

    // The list.
    const char* requestTemplate;         // in the program folder
    const char* recordPath;              // the records of the answer the rows come from
    std::array<const char*, 6> columns;  // captions; a shorter list ends on a nullptr
    ListShape shape;
    AddressSource address;
    const char* amount = nullptr;  // a transaction's amount element
    RowCells cells;
    OpenBalance openBalance = OpenBalance::None;
    const char* remaining = nullptr;  // the element of OpenBalance::Remaining
    bool refreshable = false;  // RefreshBtn loads it again (otherwise only its menu entry does)

    // Mailing. Without a style sheet "Send Email" does nothing.
    const char* styleSheet = nullptr;  // in the program folder
    // A transaction's subject, before its number; the whole subject of the other shapes.
    const char* subject = nullptr;
    const char* sentText = nullptr;    // status after the run
    const char* failedText = nullptr;  // status when the style sheet fails
    bool sentLog = false;              // a document that went out is recorded in the sent log
};

inline constexpr RowCells kDocumentCells{1, 2, 4, 3};
inline constexpr RowCells kTimesheetCells{1, 1, 3};

inline constexpr DocumentType kDocumentTypes[] = {
    {
        .name = "Invoice",
        .menuEntry = "SelectInvoice",
        .menuCaption = "&Invoice",
        .title = "Invoices",
        .requestTemplate = "CompanyInvoiceGetRq.xml",
        .recordPath = "/QBXML/QBXMLMsgsRs/InvoiceQueryRs/InvoiceRet",
        .columns = {"Date", "Invoice ID", "Customer:Job", "Balance", "EMail", "Status"},
        .shape = ListShape::Transactions,
        .address = AddressSource::Customer,
        .amount = "Subtotal",
        .cells = kDocumentCells,
        .openBalance = OpenBalance::Remaining,
        .remaining = "BalanceRemaining",
        .refreshable = true,
        .styleSheet = "/invoice.xslt",
        .subject = "Invoice: #",
        .sentText = "Invoices sent",
        .failedText = "Invoice conversion failed",
        .sentLog = true,
    },
    {
        .name = "Estimate",
        .menuEntry = "SelectEstimate",
        .menuCaption = "&Estimate",
        .title = "Estimates",
        .requestTemplate = "CompanyEstimateGetRq.xml",
        .recordPath = "/QBXML/QBXMLMsgsRs/EstimateQueryRs/EstimateRet",
        .columns = {"Date", "Estimate ID", "Customer", "Balance", "EMail", "Status"},
        .shape = ListShape::Transactions,
        .address = AddressSource::Customer,
        .amount = "Subtotal",
        .cells = kDocumentCells,
        .refreshable = true,
        .styleSheet = "/estimate.xslt",
        .subject = "Estimate: #",
        .sentText = "Estimates sent",
        .failedText = "Estimate conversion failed",
        .sentLog = true,
    },
    {
        .name = "CreditMemo",
        .menuEntry = "SelectCreditMemo",
        .menuCaption = "&Credit Memo",
        .title = "Credit Memos",
        .requestTemplate = "CompanyCreditMemoGetRq.xml",
        .recordPath = "/QBXML/QBXMLMsgsRs/CreditMemoQueryRs/CreditMemoRet",
        .columns = {"Date", "ID", "Customer", "Balance", "EMail", "Status"},
        .shape = ListShape::Transactions,
        .address = AddressSource::Customer,
        .amount = "Subtotal",
        .cells = kDocumentCells,
        .openBalance = OpenBalance::Remaining,
        .remaining = "CreditRemaining",
        .refreshable = true,
        .styleSheet = "/creditmemo.xslt",
        .subject = "Credit Memo: #",
        .sentText = "CreditMemo sent",
        .failedText = "Credit Memo conversion failed",
        .sentLog = true,
    },
    {
        .name = "SalesReceipt",
        .menuEntry = "SelectReceipts",
        .menuCaption = "&Sales Receipt",
        .title = "Sales Receipts",
        .requestTemplate = "CompanySalesReceiptGetRq.xml",
        .recordPath = "/QBXML/QBXMLMsgsRs/SalesReceiptQueryRs/SalesReceiptRet",
        .columns = {"Date", "ID", "Customer", "Balance", "EMail", "Status"},
        .shape = ListShape::Transactions,
        .address = AddressSource::Customer,
        .amount = "TotalAmount",
        .cells = kDocumentCells,
        .openBalance = OpenBalance::Paid,
        .refreshable = true,
        .styleSheet = "/salesreceipt.xslt",
        .subject = "Sales Receipt: #",
        .sentText = "Sales Receipts sent",
        .failedText = "Sales Receipt conversion failed",
        .sentLog = true,
    },
    // Purchase orders go to vendors; an order with anything received is not listed, and the
    // memo follows the vendor's name.
    {
        .name = "PurchaseOrder",
        .menuEntry = "SelectPO",
        .menuCaption = "&PurchaseOrder",
        .title = "Purchase Orders",
        .requestTemplate = "CompanyPOGetRq.xml",
        .recordPath = "/QBXML/QBXMLMsgsRs/PurchaseOrderQueryRs/PurchaseOrderRet",
        .columns = {"Date", "PO ID", "Vendor", "Balance", "EMail", "Status"},
        .shape = ListShape::Transactions,
        .address = AddressSource::Vendor,
        .amount = "TotalAmount",
        .cells = kDocumentCells,
        .refreshable = true,
        .styleSheet = "/PurchaseOrder.xslt",
        .subject = "PurchaseOrder: #",
        .sentText = "PurchaseOrders sent",
        .failedText = "Purchase Order conversion failed",
        .sentLog = true,
    },
    // Listed only: "Send Email" sends nothing for it.
    {
        .name = "TimesheetA",
        .menuEntry = "selectTimesheetA",
        .menuCaption = "Timesheets/Entity",
        .title = "Timesheets by Entity",
        .requestTemplate = "EntityTimesheetGetRq.xml",
        .recordPath = "/QBXML/QBXMLMsgsRs/TimeTrackingQueryRs/TimeTrackingRet",
        .columns = {"Date", "Entity", "Duration[MM]", "EMail", "Status", nullptr},
        .shape = ListShape::Timesheets,
        .address = AddressSource::Entity,
        .cells = kTimesheetCells,
    },
    {
        .name = "Timesheet",
        .menuEntry = "SelectTimesheets",
        .menuCaption = "Timesheets/Customer",
        .title = "Timesheets by Customer",
        .requestTemplate = "EntityTimesheetGetRq.xml",
        .recordPath = "/QBXML/QBXMLMsgsRs/TimeTrackingQueryRs/TimeTrackingRet",
        .columns = {"Date", "Customer", "Duration[MM]", "EMail", "Status", nullptr},
        .shape = ListShape::Timesheets,
        .address = AddressSource::Customer,
        .cells = kTimesheetCells,
        .refreshable = true,
        .styleSheet = "/timesheet.xslt",
        .subject = "Your Timesheet",
        .sentText = "Timesheets sent",
        .failedText = "Timesheet conversion failed",
    },
    {
        .name = "Statement",
        .menuEntry = "SelectStatements",
        .menuCaption = "&Statements",
        .title = "Statements",
        .requestTemplate = "CustomerStatementGetRq.xml",
        .recordPath = "/QBXML/QBXMLMsgsRs/CustomerQueryRs/CustomerRet",
        .columns = {"", "ID", "Customer", "Balance", "EMail", "Status"},
        .shape = ListShape::Statements,
        .address = AddressSource::Record,
        .cells = kDocumentCells,
        .openBalance = OpenBalance::Customer,
        .refreshable = true,
        .styleSheet = "/statement.xslt",
        .subject = "Your Statement",
        .sentText = "Statements sent",
        .failedText = "Statement conversion failed",
    },
};

// The list's view option adds these columns after a type's own.
inline constexpr const char* kNumberCaption = "No.";
inline constexpr const char* kOpenBalanceCaption = "Open Balance";

// How many columns a type lists by itself; its status is the last of them.
constexpr std::size_t columnCount(const DocumentType& type) {
    std::size_t n = 0;
    while (n < type.columns.size() && type.columns[n]) {
        ++n;
    }
    return n;
}
constexpr std::size_t statusColumn(const DocumentType& type) {
    return columnCount(type) - 1;
}

// What is open of a record of `type` as the record says it: its `remaining` element, "0.00"
// for a type paid when made, a customer's TotalBalance (else Balance); empty when the type asks
// for no payment or the record does not say.
std::string openBalanceText(const DocumentType& type, xml::Node record);

// The type of that name (exact case); nullptr for none.
const DocumentType* findDocumentType(std::string_view name);

}  // namespace dorvane::browser
