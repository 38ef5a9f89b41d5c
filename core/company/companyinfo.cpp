// SPDX-License-Identifier: GPL-3.0-or-later
#include "company/companyinfo.h"

#include "common/files.h"
#include "company/companyeditor.h"
#include "platform/programfolder.h"
#include "qbgateway/gateway.h"
#include "ui/documentwindow.h"
#include "ui/uiport.h"

namespace dorvane::company {
namespace {

constexpr const char* kEditMenuEntry = "editcompanyinfo";
constexpr const char* kNoQuickBooks = "Could not access Quickbooks";
constexpr const char* kNoCompanyFile = "Could not access the company file";

xml::Node recordOf(const xml::Document& file, const std::string& companyFile) {
    return file.selectOne("/CompanyInfo/CompanyRet[FileName = $file]", {{"file", companyFile}});
}

// A record to start a new one from: the file's first record, or an empty one with every field
// when the file holds none.
xml::Node templateRecord(xml::Document& file) {
    xml::Node first = file.selectOne("/CompanyInfo/CompanyRet");
    if (first) {
        return first.cloneDeep();
    }
    xml::Node fresh = file.createElement("CompanyRet");
    fresh.appendElement("FileName");
    for (const auto& f : kEditorFields) {
        setPathText(fresh, f.field, "");
        if (f.legalField) {
            setPathText(fresh, f.legalField, "");
        }
    }
    return fresh;
}

}  // namespace

CompanyInfo::CompanyInfo(ui::UiPort& ui, const platform::ProgramFolder& folder,
                         qbgateway::Gateway& gateway, ui::DocumentWindow& window)
    : m_ui(ui), m_folder(folder), m_gateway(gateway), m_window(window) {}

void CompanyInfo::retrieveCompanyInfo() {
    m_window.setControlEnabled(kEditMenuEntry, false);
    m_window.setStatusText("get company information ...");

    const std::string response = m_gateway.processCompanyRequest(
        ui::textOrShown(m_folder.readProgramFile("CompanyGetRq.xml"), m_ui));
    auto doc = xml::Document::parse(response);
    if (!doc) {
        m_ui.messageBox(kNoQuickBooks);
        m_window.setStatusText(kNoQuickBooks);
        m_window.list().clear();
        return;
    }
    setCompanyNode(doc->selectOne("/QBXML/QBXMLMsgsRs/CompanyQueryRs/CompanyRet"));
    // The record is edited here only where this program keeps it: the file lookup enables
    // the menu entry again.
    if (!companyNode()) {
        loadCompanyInfoFile();
    }
    m_window.setStatusText("");
    m_window.setCompanyText(companyAddressText());
    if (m_window.companyText().empty()) {
        m_ui.messageBox(kNoCompanyFile);
        m_window.setStatusText(kNoCompanyFile);
    }
}

void CompanyInfo::loadCompanyInfoFile() {
    auto file = xml::Document::load(m_folder.filePath(kCompanyInfoFile));
    if (!file || file->empty()) {
        return;
    }
    if (xml::Node record = recordOf(*file, m_gateway.currentCompanyFile())) {
        setCompanyNode(record);
    } else {
        CompanyEditorModel editor(m_ui, templateRecord(*file), m_gateway.currentCompanyFile());
        if (!m_ui.runDialog(editor)) {
            return;
        }
        xml::Node stored = file->root().appendChild(editor.record());
        saveFile(*file);
        setCompanyNode(stored);
    }
    m_window.setControlEnabled(kEditMenuEntry, true);
}

void CompanyInfo::editCompanyInfo() {
    auto file = xml::Document::load(m_folder.filePath(kCompanyInfoFile));
    if (!file || file->empty()) {
        m_ui.messageBox("Could not open file " + m_folder.filePath(kCompanyInfoFile));
        return;
    }
    xml::Node record = recordOf(*file, m_gateway.currentCompanyFile());
    // A record made from the template is edited but not stored: only a record that already
    // belongs to the file is saved back with it.
    CompanyEditorModel editor(m_ui, record ? record : templateRecord(*file),
                              m_gateway.currentCompanyFile());
    m_ui.runDialog(editor);
    saveFile(*file);
}

void CompanyInfo::saveFile(const xml::Document& file) {
    const std::string path = m_folder.filePath(kCompanyInfoFile);
    if (Status saved = files::writeAtomically(path, file.toString()); !saved) {
        m_ui.messageBox("Could not save " + path + ": " + saved.error().description);
    }
}

void CompanyInfo::setCompanyNode(xml::Node node) {
    m_company = xml::Document();
    if (node) {
        m_company.setRoot(node);
    }
}

xml::Node CompanyInfo::companyNode() const {
    return m_company.root();
}

std::string CompanyInfo::companyAddressText() {
    xml::Node c = companyNode();
    std::string text = c.valueOf("CompanyName") + "\r\n" + c.valueOf("Address/Addr1") + " " +
                       c.valueOf("Address/Addr2") + "\r\n" + c.valueOf("Address/City") + " " +
                       c.valueOf("Address/State") + " " + c.valueOf("Address/PostalCode");
    if (text.size() < 6) {
        text = "\r\nNo company information available !!";
        m_ui.beep();
    }
    m_sender = c.valueOf("Email");
    return text;
}

}  // namespace dorvane::company
