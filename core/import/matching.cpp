// SPDX-License-Identifier: GPL-3.0-or-later
// The import window's counterparts: the vendor or customer list, the match against the
// document's party, and the creation of a party QuickBooks does not have yet.
#include "common/text.h"
#include "import/importwindow.h"
#include "platform/programfolder.h"
#include "qbgateway/gateway.h"
#include "qbgateway/response.h"
#include "qbgateway/templates.h"
#include "ui/uiport.h"

namespace dorvane::imports {
namespace {

constexpr const char* kCrLf = "\r\n";
constexpr const char* kMayLeaveBlank = "You also may leave the name field blank.";

}  // namespace

void ImportWindow::fillList(const char* header, const std::string& request, const char* path,
                            const char* nameChild) {
    CounterpartList list;
    list.columnHeader = header;
    setList(list);  // emptied before QuickBooks is asked
    const std::string response = m_gateway.processRequest(request);
    if (response.empty() || !qbgateway::isResponseOK(response, m_ui)) {
        return;
    }
    auto doc = xml::Document::parse(response);
    if (!doc) {
        return;
    }
    for (const xml::Node& party : doc->selectAll(path)) {
        list.items.push_back(party.valueOf(nameChild));
    }
    setList(std::move(list));
}

void ImportWindow::loadVendorList() {
    fillList("Vendor", ui::textOrShown(m_folder.readProgramFile("VendorGetRq.xml"), m_ui),
             "/QBXML/QBXMLMsgsRs/VendorQueryRs/VendorRet", "Name");
}

void ImportWindow::loadCustomerList() {
    const std::string request =
        text::replaceAll(ui::textOrShown(m_folder.readProgramFile("CustomerGetRq.xml"), m_ui),
                         "<ListID>IDTYPE</ListID>", "");
    fillList("Customer", request, "/QBXML/QBXMLMsgsRs/CustomerQueryRs/CustomerRet", "FullName");
}

void ImportWindow::selectMatch(std::size_t index) {
    m_list.selected = index;
    m_list.bold = index;
    changed(kVendorListView);
}

void ImportWindow::matchVendor(const xml::Document& document) {
    const xml::Node company = document.selectOne("//CompanyRet/CompanyName");
    if (!company) {
        return;
    }
    const std::string name = company.text();
    m_list.bold.reset();
    if (const auto found = m_list.findPartial(name)) {
        selectMatch(*found);
        setLabel1(std::string("Vendor found") + kCrLf + name + kCrLf +
                  "If you would like to change the vendor, please select another one from the "
                  "list");
        return;
    }
    m_list.selected.reset();
    changed(kVendorListView);
    setLabel1(std::string("Vendor ") + kCrLf + name + kCrLf + "not found" + kCrLf +
              "Please select a vendor. Otherwise a new vendor will be created from the bill");
}

void ImportWindow::matchCustomer(const xml::Document& document) {
    const xml::Node company = document.selectOne("//Company");
    if (!company) {
        return;
    }
    const std::string name = company.text();
    m_list.bold.reset();
    if (name.empty()) {
        m_list.selected.reset();
        changed(kVendorListView);
        setLabel1(std::string("A company name as customer was not found.") + kCrLf +
                  "Please select one from the list or enter a new name." + kMayLeaveBlank);
        return;
    }
    if (const auto found = m_list.findPartial(name)) {
        selectMatch(*found);
        setLabel1("Customer found " + name + kCrLf +
                  "If you would like to change the customer, please select another one from "
                  "the list or enter a new name");
    } else {
        m_list.selected.reset();
        changed(kVendorListView);
        setLabel1("Customer " + name + "not found" + kCrLf +
                  "Please select one from the list or change the name." + kMayLeaveBlank);
    }
    setNameTextQuietly(name);
}

bool ImportWindow::addVendorFromDocument() {
    m_outcome = ImportOutcome::NotSent;
    const DocumentKind kind = recogniseKind(m_documentKind);
    if (m_ui.messageBox("Dorvane will now add a new vendor", ui::kProgramTitle, ui::Icon::None,
                        ui::Buttons::OkCancel) != ui::Answer::Ok) {
        if (kind == DocumentKind::Invoice || kind == DocumentKind::Estimate) {
            m_report.declinedCreation = "vendor";
            m_report.declinedName = m_document.valueOf("//CompanyRet/CompanyName");
        }
        return false;
    }
    const char* sheetName = kind == DocumentKind::Invoice    ? "/VendorFromInvoice.xslt"
                            : kind == DocumentKind::Estimate ? "/VendorFromEstimate.xslt"
                                                             : nullptr;
    if (!sheetName) {
        return false;  // a sales receipt is booked onto a vendor chosen from the list only
    }
    const xml::Node root = selectConversionRoot(m_document, kind);
    auto sheet = xml::Stylesheet::load(m_folder.filePath(sheetName));
    if (!root || !sheet) {
        return false;
    }
    auto request = sheet->transformNode(root);
    if (!request) {
        return false;
    }
    const bool added = sendAddRequest(*request);
    setImportStatusText(added ? "Vendor added" : "Some error occurred");
    return added;
}

bool ImportWindow::addCustomerFromReceipt(const std::string& name) {
    m_outcome = ImportOutcome::NotSent;
    if (m_ui.messageBox("Dorvane will now add the new customer " + name, ui::kProgramTitle,
                        ui::Icon::None, ui::Buttons::OkCancel) != ui::Answer::Ok) {
        m_report.declinedCreation = "customer";
        m_report.declinedName = name;
        return false;
    }
    const xml::Node root = selectConversionRoot(m_document, DocumentKind::AuthorizeNet);
    auto sheet = xml::Stylesheet::load(m_folder.filePath("/CustomerFromAuthorize.xslt"));
    if (!root || !sheet) {
        return false;
    }
    if (xml::Node company = m_document.selectOne("//Company")) {
        company.setText(name);
    }
    auto request = sheet->transformNode(root);
    if (!request) {
        return false;
    }
    const bool added = sendAddRequest(*request);
    setImportStatusText(added ? "Customer added" : "Some error occurred");
    return added;
}

}  // namespace dorvane::imports
