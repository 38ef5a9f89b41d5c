// SPDX-License-Identifier: GPL-3.0-or-later
#include "import/counterparts.h"

#include <cctype>

#include "common/text.h"
#include "platform/programfolder.h"
#include "qbgateway/gateway.h"
#include "qbgateway/response.h"
#include "ui/uiport.h"

namespace dorvane::imports {
namespace {

constexpr const char* kCrLf = "\r\n";
constexpr const char* kMayLeaveBlank = "You also may leave the name field blank.";

std::optional<std::string> transform(const platform::ProgramFolder& folder, const char* sheetName,
                                     const xml::Node& root) {
    auto sheet = xml::Stylesheet::load(folder.filePath(sheetName));
    if (!root || !sheet) {
        return std::nullopt;
    }
    auto request = sheet->transformNode(root);
    if (!request) {
        return std::nullopt;
    }
    return std::move(request).value();
}

CounterpartMatch matchVendor(const CounterpartList& list, const std::string& name) {
    if (const auto found = list.findPartial(name)) {
        return {found,
                std::string("Vendor found") + kCrLf + name + kCrLf +
                    "If you would like to change the vendor, please select another one from the "
                    "list",
                std::nullopt};
    }
    return {std::nullopt,
            std::string("Vendor ") + kCrLf + name + kCrLf + "not found" + kCrLf +
                "Please select a vendor. Otherwise a new vendor will be created from the bill",
            std::nullopt};
}

CounterpartMatch matchCustomer(const CounterpartList& list, const std::string& name) {
    if (name.empty()) {
        return {std::nullopt,
                std::string("A company name as customer was not found.") + kCrLf +
                    "Please select one from the list or enter a new name." + kMayLeaveBlank,
                std::nullopt};
    }
    if (const auto found = list.findPartial(name)) {
        return {found,
                "Customer found " + name + kCrLf +
                    "If you would like to change the customer, please select another one from "
                    "the list or enter a new name",
                name};
    }
    return {std::nullopt,
            "Customer " + name + "not found" + kCrLf +
                "Please select one from the list or change the name." + kMayLeaveBlank,
            name};
}

}  // namespace

std::optional<std::size_t> CounterpartList::findPartial(std::string_view text) const {
    const std::string wanted = text::toLower(text);
    for (std::size_t i = 0; i < items.size(); ++i) {
        if (text::toLower(items[i]).starts_with(wanted)) {
            return i;
        }
    }
    return std::nullopt;
}

std::optional<std::size_t> CounterpartList::findWholeWord(std::string_view text) const {
    const std::string wanted = text::toLower(text);
    for (std::size_t i = 0; i < items.size(); ++i) {
        const std::string item = text::toLower(items[i]);
        if (!item.starts_with(wanted)) {
            continue;
        }
        const bool wordEnds = item.size() == wanted.size() || wanted.empty() ||
                              !std::isalnum(static_cast<unsigned char>(item[wanted.size()]));
        if (wordEnds) {
            return i;
        }
    }
    return std::nullopt;
}

std::optional<CounterpartMatch> matchCounterpart(Party party, const CounterpartList& list,
                                                 const xml::Document& document) {
    const xml::Node company =
        document.selectOne(party == Party::Vendor ? "//CompanyRet/CompanyName" : "//Company");
    if (!company) {
        return std::nullopt;
    }
    const std::string name = company.text();
    return party == Party::Vendor ? matchVendor(list, name) : matchCustomer(list, name);
}

const char* Counterparts::header(Party party) {
    return party == Party::Vendor ? "Vendor" : "Customer";
}

std::optional<std::vector<std::string>> Counterparts::names(Party party) {
    const bool vendors = party == Party::Vendor;
    const std::string request =
        vendors
            ? ui::textOrShown(m_folder.readProgramFile("VendorGetRq.xml"), m_ui)
            : text::replaceAll(ui::textOrShown(m_folder.readProgramFile("CustomerGetRq.xml"), m_ui),
                               "<ListID>IDTYPE</ListID>", "");
    const std::string response = m_gateway.processRequest(request);
    if (response.empty() || !qbgateway::isResponseOK(response, m_ui)) {
        return std::nullopt;
    }
    auto doc = xml::Document::parse(response);
    if (!doc) {
        return std::nullopt;
    }
    std::vector<std::string> names;
    for (const xml::Node& party :
         doc->selectAll(vendors ? "/QBXML/QBXMLMsgsRs/VendorQueryRs/VendorRet"
                                : "/QBXML/QBXMLMsgsRs/CustomerQueryRs/CustomerRet")) {
        names.push_back(party.valueOf(vendors ? "Name" : "FullName"));
    }
    return names;
}

std::optional<std::string> Counterparts::vendorAddRequest(const xml::Document& document,
                                                          DocumentKind kind) const {
    const char* sheetName = kind == DocumentKind::Invoice    ? "/VendorFromInvoice.xslt"
                            : kind == DocumentKind::Estimate ? "/VendorFromEstimate.xslt"
                                                             : nullptr;
    if (!sheetName) {
        return std::nullopt;  // a sales receipt is booked onto a vendor chosen from the list only
    }
    return transform(m_folder, sheetName, selectConversionRoot(document, kind));
}

std::optional<std::string> Counterparts::customerAddRequest(xml::Document& document,
                                                            const std::string& name) const {
    const xml::Node root = selectConversionRoot(document, DocumentKind::AuthorizeNet);
    auto sheet = xml::Stylesheet::load(m_folder.filePath("/CustomerFromAuthorize.xslt"));
    if (!root || !sheet) {
        return std::nullopt;
    }
    if (xml::Node company = document.selectOne("//Company")) {
        company.setText(name);
    }
    auto request = sheet->transformNode(root);
    if (!request) {
        return std::nullopt;
    }
    return std::move(request).value();
}

}  // namespace dorvane::imports
