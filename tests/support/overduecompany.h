// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane tests — open invoices around DORVANE_TODAY (2026-11-18) for the reminder tests, as
// one qbXML message to send to an empty sandbox company.
//
// With the days 1,15,30 and nothing reminded yet the reminders due are:
//   Able Co   stage 1: 501 (8 days past due, 120.00) and 502 (3 days, 50.00)
//   Able Co   stage 3: 503 (48 days, never reminded: the final one only)
//   Baker     stage 2: 601 (24 days, 30.00) and 604 of its job Baker:Kitchen (21 days,
//             40.00, the job without an address of its own); 602 is paid (the payment goes to
//             the oldest invoice), 603 is not due yet
//   Carr      stage 2: 701 (17 days), without an e-mail address
#pragma once

#include <string>

namespace dorvane::test {

inline std::string overdueInvoice(const std::string& customer, const std::string& ref,
                                  const std::string& dueDate, const std::string& amount,
                                  const std::string& txnDate = "2026-09-01") {
    return "<InvoiceAddRq><InvoiceAdd><CustomerRef><FullName>" + customer +
           "</FullName></CustomerRef><TxnDate>" + txnDate + "</TxnDate><RefNumber>" + ref +
           "</RefNumber><DueDate>" + dueDate +
           "</DueDate><InvoiceLineAdd><ItemRef><FullName>Labor</FullName></ItemRef><Desc>Work "
           "on " +
           ref + "</Desc><Amount>" + amount +
           "</Amount></InvoiceLineAdd></InvoiceAdd></InvoiceAddRq>";
}

inline std::string overdueCompanyRequest() {
    auto customer = [](const std::string& name, const std::string& email,
                       const std::string& more = "") {
        return "<CustomerAddRq><CustomerAdd><Name>" + name + "</Name>" + more +
               (email.empty() ? "" : "<Email>" + email + "</Email>") +
               "</CustomerAdd></CustomerAddRq>";
    };
    return "<?xml version=\"1.0\" ?><?qbxml version=\"13.0\"?><QBXML><QBXMLMsgsRq "
           "onError=\"stopOnError\">" +
           customer("Able Co", "able@example.test") +
           customer("Baker", "baker@example.test",
                    "<FirstName>Bea</FirstName><LastName>Baker</LastName>") +
           customer("Kitchen", "", "<ParentRef><FullName>Baker</FullName></ParentRef>") +
           customer("Carr", "") +
           "<ItemServiceAddRq><ItemServiceAdd><Name>Labor</Name><SalesOrPurchase><Price>10.00"
           "</Price><AccountRef><FullName>Sales</FullName></AccountRef></SalesOrPurchase>"
           "</ItemServiceAdd></ItemServiceAddRq>" +
           overdueInvoice("Able Co", "501", "2026-11-10", "120.00") +
           overdueInvoice("Able Co", "502", "2026-11-15", "50.00") +
           overdueInvoice("Able Co", "503", "2026-10-01", "80.00") +
           overdueInvoice("Baker", "601", "2026-10-25", "30.00") +
           overdueInvoice("Baker", "602", "2026-10-20", "45.00", "2026-08-01") +
           overdueInvoice("Baker", "603", "2026-12-01", "99.00") +
           overdueInvoice("Baker:Kitchen", "604", "2026-10-28", "40.00") +
           overdueInvoice("Carr", "701", "2026-11-01", "70.00") +
           "<ReceivePaymentAddRq><ReceivePaymentAdd><CustomerRef><FullName>Baker</FullName>"
           "</CustomerRef><TotalAmount>45.00</TotalAmount><IsAutoApply>true</IsAutoApply>"
           "</ReceivePaymentAdd></ReceivePaymentAddRq>"
           "</QBXMLMsgsRq></QBXML>";
}

}  // namespace dorvane::test
