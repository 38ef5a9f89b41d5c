// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — the company's own record: from QuickBooks, or from "companyinfo.xml".
//
// The record in use (`companyNode`) heads every mailed document, rides along in exchange
// files and gives the sender address of every message. QuickBooks answers it for most company
// files; where it does not, the record is kept in "companyinfo.xml" in the program folder, one
// CompanyRet per QuickBooks company file told apart by FileName, entered once by the user in
// the company editor (Dialog2).
#pragma once

#include <functional>
#include <string>

#include "xml/xml.h"

namespace dorvane::platform {
class ProgramFolder;
}

namespace dorvane::qbgateway {
class Gateway;
}  // namespace dorvane::qbgateway

namespace dorvane::ui {
class DocumentWindow;
class UiPort;
}  // namespace dorvane::ui

namespace dorvane::company {

inline constexpr const char* kCompanyInfoFile = "/companyinfo.xml";

class CompanyInfo {
public:
    CompanyInfo(ui::UiPort& ui, const platform::ProgramFolder& folder, qbgateway::Gateway& gateway,
                ui::DocumentWindow& window);

    // Asks QuickBooks for the company and its preferences; falls back on the file; shows the
    // name and address in Label1.
    void retrieveCompanyInfo();
    // Looks the open company file up in "companyinfo.xml"; opens the editor when it has no
    // record there, and stores what the user entered.
    void loadCompanyInfoFile();
    // The menu's "&Edit Company Info": edits the open company file's record in the file.
    void editCompanyInfo();

    // Replaces the record in use with a copy of `node` (a CompanyRet); a null node empties it.
    void setCompanyNode(xml::Node node);
    // The record in use, or a null node.
    xml::Node companyNode() const;

    // Name and address for Label1; sets the sender address as a side effect.
    std::string companyAddressText();
    // The address every message is sent from: the record's Email.
    const std::string& senderAddress() const { return m_sender; }

private:
    // Writes "companyinfo.xml" whole; a failure is told to the person.
    void saveFile(const xml::Document& file);

    ui::UiPort& m_ui;
    const platform::ProgramFolder& m_folder;
    qbgateway::Gateway& m_gateway;
    ui::DocumentWindow& m_window;
    xml::Document m_company;
    std::string m_sender;
};

}  // namespace dorvane::company
