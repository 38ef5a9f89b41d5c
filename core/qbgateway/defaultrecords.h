// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — the account and item that imports fall back on, and the item list for the import
// preferences.
#pragma once

#include "xml/xml.h"

namespace dorvane::platform {
class ProgramFolder;
}

namespace dorvane::ui {
class UiPort;
}

namespace dorvane::qbgateway {

class Gateway;

inline constexpr const char* kDefaultAccount = "Uncategorized Expenses";
inline constexpr const char* kDefaultItem = "Uncategorized Item";

class DefaultRecords {
public:
    DefaultRecords(const platform::ProgramFolder& folder, Gateway& gateway, ui::UiPort& ui);

    // Makes sure QuickBooks has the account "Uncategorized Expenses" and the item
    // "Uncategorized Item": one request to look, one more for each that is missing.
    void ensureDefaultRecords();

    // Fetches the items, terms and accounts the import preferences offer.
    void loadItemList();
    const xml::Document& itemList() const { return m_itemList; }

private:
    const platform::ProgramFolder& m_folder;
    Gateway& m_gateway;
    ui::UiPort& m_ui;
    xml::Document m_itemList;
};

}  // namespace dorvane::qbgateway
