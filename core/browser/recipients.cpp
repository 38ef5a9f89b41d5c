// SPDX-License-Identifier: GPL-3.0-or-later
#include "browser/recipients.h"

#include "platform/programfolder.h"
#include "qbgateway/gateway.h"
#include "qbgateway/templates.h"
#include "ui/uiport.h"

namespace dorvane::browser {

std::unordered_map<std::string, xml::Node> indexBy(const xml::Document& doc, std::string_view path,
                                                   std::string_view key) {
    std::unordered_map<std::string, xml::Node> index;
    for (xml::Node n : doc.selectAll(path)) {
        // XPath's "[Key = value]" holds when any child named Key has that text.
        for (xml::Node c = n.firstChildElement(); c; c = c.nextSiblingElement()) {
            if (c.name() == key) {
                index.emplace(c.text(), n);
            }
        }
    }
    return index;
}

RecipientLookup::RecipientLookup(const platform::ProgramFolder& folder, qbgateway::Gateway& gateway,
                                 ui::UiPort& ui)
    : m_folder(folder), m_gateway(gateway), m_ui(ui) {}

RecipientLookup::PartyIndex RecipientLookup::indexParties(const xml::Document& doc,
                                                          std::string_view path) {
    PartyIndex index;
    for (xml::Node n : doc.selectAll(path)) {
        // One walk over the record's children: its identifiers (XPath's "[ListID = value]"
        // holds for any child ListID with that text; the first record wins) and its first
        // Email.
        std::vector<std::string> ids;
        std::string email;
        bool haveEmail = false;
        for (xml::Node c = n.firstChildElement(); c; c = c.nextSiblingElement()) {
            const std::string name = c.name();
            if (name == "ListID") {
                ids.push_back(c.text());
            } else if (!haveEmail && name == "Email") {
                email = c.text();
                haveEmail = true;
            }
        }
        for (std::string& id : ids) {
            index.try_emplace(std::move(id), Party{n, email});
        }
    }
    return index;
}

void RecipientLookup::indexListDocument(const xml::Document& listDocument) {
    m_customers = indexParties(listDocument, "/QBXML/QBXMLMsgsRs/CustomerQueryRs/CustomerRet");
    m_vendors = indexParties(listDocument, "/QBXML/QBXMLMsgsRs/VendorQueryRs/VendorRet");
}

xml::Node RecipientLookup::customer(const std::string& listId) const {
    auto it = m_customers.find(listId);
    return it == m_customers.end() ? xml::Node() : it->second.record;
}

std::string RecipientLookup::getCustomerEmail(const std::string& listId) {
    // A record without a customer (a time entry for no one) has no recipient; asking with an
    // empty id would bring back every customer and the first one's address.
    if (listId.empty()) {
        return {};
    }
    if (auto it = m_customers.find(listId); it != m_customers.end()) {
        return it->second.email;
    }
    const std::string request = qbgateway::fillListId(
        ui::textOrShown(m_folder.readProgramFile("CustomerGetRq.xml"), m_ui), listId);
    auto doc = xml::Document::parse(m_gateway.processCompanyRequest(request));
    if (!doc) {
        return {};
    }
    return doc->selectOne("/QBXML/QBXMLMsgsRs/CustomerQueryRs/CustomerRet").valueOf("Email");
}

std::string RecipientLookup::getVendorEmail(const std::string& listId) const {
    auto it = m_vendors.find(listId);
    return it == m_vendors.end() ? std::string() : it->second.email;
}

std::string RecipientLookup::getEntityEmail(const std::string& listId) {
    if (listId.empty()) {
        return {};
    }
    const std::string request = qbgateway::fillListId(
        ui::textOrShown(m_folder.readProgramFile("EmailGetRq.xml"), m_ui), listId);
    auto doc = xml::Document::parse(m_gateway.processCompanyRequest(request));
    if (!doc) {
        return {};
    }
    return doc->selectOne("/QBXML/QBXMLMsgsRs//*[ListID = $id]", {{"id", listId}}).valueOf("Email");
}

}  // namespace dorvane::browser
