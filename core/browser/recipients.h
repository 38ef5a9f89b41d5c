// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — the e-mail address of each document's recipient.
//
// Customers and vendors are looked up first in the list response the loader just fetched
// (its template asks for them too), through an index built once per response; a customer
// missing there is asked of QuickBooks. Any name-list entry (for timesheets by entity) is
// always asked of QuickBooks.
#pragma once

#include <string>
#include <unordered_map>

#include "xml/xml.h"

namespace dorvane::qbgateway {
class Gateway;
class ProgramFolder;
}  // namespace dorvane::qbgateway

namespace dorvane::browser {

class RecipientLookup {
public:
    RecipientLookup(const qbgateway::ProgramFolder& folder, qbgateway::Gateway& gateway);

    // Indexes the customers and vendors of a freshly loaded list response.
    void indexListDocument(const xml::Document& listDocument);

    std::string getCustomerEmail(const std::string& listId);
    std::string getVendorEmail(const std::string& listId) const;
    std::string getEntityEmail(const std::string& listId);

    // The customer's record in the list response, or a null node.
    xml::Node customer(const std::string& listId) const;

private:
    const qbgateway::ProgramFolder& m_folder;
    qbgateway::Gateway& m_gateway;
    std::unordered_map<std::string, xml::Node> m_customers;
    std::unordered_map<std::string, xml::Node> m_vendors;
};

// Indexes the elements `path` selects by the text of their child `key`; the first element
// with a value wins, as a predicate lookup would find it.
std::unordered_map<std::string, xml::Node> indexBy(const xml::Document& doc, std::string_view path,
                                                   std::string_view key);

}  // namespace dorvane::browser
