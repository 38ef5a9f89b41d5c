// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — the e-mail address of each document's recipient.
//
// Customers and vendors are looked up first in the list response the loader just fetched
// (its template asks for them too), through an index built once per response; a customer
// missing there is asked of QuickBooks. Any name-list entry (for timesheets by entity) is
// always asked of QuickBooks.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "xml/xml.h"

namespace dorvane::platform {
class ProgramFolder;
}

namespace dorvane::qbgateway {
class Gateway;
}  // namespace dorvane::qbgateway

namespace dorvane::ui {
class UiPort;
}

namespace dorvane::browser {

class RecipientLookup {
public:
    RecipientLookup(const platform::ProgramFolder& folder, qbgateway::Gateway& gateway,
                    ui::UiPort& ui);

    // Indexes the customers and vendors of a freshly loaded list response, with their
    // addresses: a list asks for the same customer's address once per document.
    void indexListDocument(const xml::Document& listDocument);

    std::string getCustomerEmail(const std::string& listId);
    std::string getVendorEmail(const std::string& listId) const;
    std::string getEntityEmail(const std::string& listId);

    // The customer's record in the list response, or a null node.
    xml::Node customer(const std::string& listId) const;

private:
    struct Party {
        xml::Node record;
        std::string email;
    };
    using PartyIndex = std::unordered_map<std::string, Party>;
    static PartyIndex indexParties(const xml::Document& doc, std::string_view path);

    const platform::ProgramFolder& m_folder;
    qbgateway::Gateway& m_gateway;
    ui::UiPort& m_ui;
    PartyIndex m_customers;
    PartyIndex m_vendors;
};

// Indexes the elements `path` selects by the text of their child `key`; the first element
// with a value wins, as a predicate lookup would find it.
std::unordered_map<std::string, xml::Node> indexBy(const xml::Document& doc, std::string_view path,
                                                   std::string_view key);

}  // namespace dorvane::browser
