// SPDX-License-Identifier: GPL-3.0-or-later
#include "qbgateway/defaultrecords.h"

#include "platform/programfolder.h"
#include "qbgateway/gateway.h"
#include "qbgateway/response.h"
#include "ui/uiport.h"

namespace dorvane::qbgateway {

DefaultRecords::DefaultRecords(const platform::ProgramFolder& folder, Gateway& gateway,
                               ui::UiPort& ui)
    : m_folder(folder), m_gateway(gateway), m_ui(ui) {}

void DefaultRecords::ensureDefaultRecords() {
    const std::string response = m_gateway.processRequest(
        ui::textOrShown(m_folder.readProgramFile("CheckAccountGetRq.xml"), m_ui));
    auto doc = xml::Document::parse(response);
    if (!doc) {
        return;  // the gateway has told the user already
    }
    if (!doc->selectOne("//AccountQueryRs/*[FullName = $name]", {{"name", kDefaultAccount}})) {
        isResponseOK(m_gateway.processRequest(
                         ui::textOrShown(m_folder.readProgramFile("AccountAddRq.xml"), m_ui)),
                     m_ui);
    }
    if (!doc->selectOne("//ItemQueryRs/*[FullName = $name]", {{"name", kDefaultItem}})) {
        isResponseOK(m_gateway.processRequest(
                         ui::textOrShown(m_folder.readProgramFile("ItemAddRq.xml"), m_ui)),
                     m_ui);
    }
}

void DefaultRecords::loadItemList() {
    const std::string response =
        m_gateway.processRequest(ui::textOrShown(m_folder.readProgramFile("ItemGetRq.xml"), m_ui));
    auto doc = xml::Document::parse(response);
    m_itemList = doc ? std::move(doc).value() : xml::Document();
}

}  // namespace dorvane::qbgateway
