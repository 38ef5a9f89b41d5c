// SPDX-License-Identifier: GPL-3.0-or-later
// The other party of an imported document: found in the list by prefix in any case, first hit
// first, with what Label1 then says; a receipt's name box by whole words.
#include "import/counterparts.h"

#include <gtest/gtest.h>

namespace dorvane::imports {
namespace {

TEST(Counterparts, ThePartyIsFoundByPrefixInAnyCaseFirstHitFirst) {
    CounterpartList list;
    list.items = {"Acme", "ACME Inc", "Acme Landscaping", "Zephyr Tools Ltd"};
    struct Case {
        const char* document;
        Party party;
        std::optional<std::string> found;
        const char* report;
        std::optional<std::string> nameText;
    };
    const Case cases[] = {
        {"<InvoiceRet><CompanyRet><CompanyName>acme</CompanyName></CompanyRet></InvoiceRet>",
         Party::Vendor, "Acme",
         "Vendor found\r\nacme\r\nIf you would like to change the vendor, please select another "
         "one from the list",
         std::nullopt},
        {"<InvoiceRet><CompanyRet><CompanyName>Acme Land</CompanyName></CompanyRet></InvoiceRet>",
         Party::Vendor, "Acme Landscaping",
         "Vendor found\r\nAcme Land\r\nIf you would like to change the vendor, please select "
         "another one from the list",
         std::nullopt},
        {"<InvoiceRet><CompanyRet><CompanyName>Acme Inc.</CompanyName></CompanyRet></InvoiceRet>",
         Party::Vendor, std::nullopt,
         "Vendor \r\nAcme Inc.\r\nnot found\r\nPlease select a vendor. Otherwise a new vendor will "
         "be created from the bill",
         std::nullopt},
        {"<AuthorizeNet><Billing><Company>zephyr</Company></Billing></AuthorizeNet>",
         Party::Customer, "Zephyr Tools Ltd",
         "Customer found zephyr\r\nIf you would like to change the customer, please select "
         "another one from the list or enter a new name",
         "zephyr"},
        {"<AuthorizeNet><Billing><Company>Nobody</Company></Billing></AuthorizeNet>",
         Party::Customer, std::nullopt,
         "Customer Nobodynot found\r\nPlease select one from the list or change the name.You "
         "also may leave the name field blank.",
         "Nobody"},
        {"<AuthorizeNet><Billing><Company></Company></Billing></AuthorizeNet>", Party::Customer,
         std::nullopt,
         "A company name as customer was not found.\r\nPlease select one from the list or enter "
         "a new name.You also may leave the name field blank.",
         std::nullopt},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.document);
        auto doc = xml::Document::parse(c.document);
        ASSERT_TRUE(doc);
        const auto match = matchCounterpart(c.party, list, *doc);
        ASSERT_TRUE(match);
        EXPECT_EQ(match->index ? std::optional(list.items[*match->index]) : std::nullopt, c.found);
        EXPECT_EQ(match->report, c.report);
        EXPECT_EQ(match->nameText, c.nameText);
    }
    // A document that names no party changes nothing.
    EXPECT_FALSE(matchCounterpart(Party::Vendor, list, *xml::Document::parse("<InvoiceRet/>")));
    // The receipt's name box finds whole words only: "Zephyr" finds the customer, "Zeph" does
    // not.
    EXPECT_EQ(list.findWholeWord("zephyr"), 3u);
    EXPECT_FALSE(list.findWholeWord("Zeph"));
}

}  // namespace
}  // namespace dorvane::imports
