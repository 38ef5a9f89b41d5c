// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — the web item update: the company's services, inventory or non-inventory items
// listed in the main window, and the ticked ones published to the company's web site.
//
// Each ticked item goes through "UpdateItemToWeb.xslt" (one JSON document per item) and is
// posted to the address in the settings ("Web" / "UpdateURL", with an optional bearer token
// in "Token"). An item is unticked when the site took it (any 2xx answer); without an address
// it is transformed and unticked, and nothing is sent.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace dorvane::platform {
class ProgramFolder;
class SettingsStore;
}  // namespace dorvane::platform

namespace dorvane::qbgateway {
class Gateway;
}  // namespace dorvane::qbgateway

namespace dorvane::ui {
class DocumentWindow;
class UiPort;
}  // namespace dorvane::ui

namespace dorvane::webupdate {

struct ItemKind {
    const char* kind;       // "Service", "Inventory", "NonInventory"
    const char* menuEntry;  // the Web-Update menu entry's name
    const char* label;      // kept for the window's caption
    const char* path;       // the items in the response
    const char* pricePath;  // relative to an item
    const char* descPath;
};

inline constexpr ItemKind kItemKinds[] = {
    {"Service", "serviceitems_update", "WEB-Update-Services",
     "/QBXML/QBXMLMsgsRs/ItemServiceQueryRs/ItemServiceRet", "SalesOrPurchase/Price",
     "SalesOrPurchase/Desc"},
    {"Inventory", "inventoryitems_update", "WEB-Update-Inventory",
     "/QBXML/QBXMLMsgsRs/ItemInventoryQueryRs/ItemInventoryRet", "SalesPrice", "SalesDesc"},
    {"NonInventory", "noninventoryitems_update", "WEB-Update-NonInventory",
     "/QBXML/QBXMLMsgsRs/ItemNonInventoryQueryRs/ItemNonInventoryRet", "SalesOrPurchase/Price",
     "SalesOrPurchase/Desc"},
};

inline constexpr const char* kItemsTemplate = "InventoryItemsGetRq.xml";
inline constexpr const char* kUpdateSheet = "UpdateItemToWeb.xslt";
inline constexpr const char* kNoAccess = "Could not access the company file";

// The kind a menu entry or a kind's name names (any case); null for none.
const ItemKind* itemKindNamed(std::string_view name);

// The web site's address from the settings ("Web" / "UpdateURL"), trimmed; "" for none.
std::string siteAddress(const platform::SettingsStore& settings);

inline constexpr const char* kResultPage = "webupdate.htm";

// What one update run did.
struct UpdateReport {
    struct Refusal {
        std::string listId, name, why;
    };
    int ticked = 0;    // items the run took up
    int accepted = 0;  // unticked: the site took them (or no site is configured)
    int failed = 0;    // left ticked
    bool noSite = false;
    bool sheetMissing = false;
    std::vector<Refusal> refusals;  // the items left ticked, in list order

    // What the person should know beyond "Update done": that nothing was sent for want of an
    // address, and which items the site did not take. Empty when every item reached the site.
    std::vector<std::string> notes() const;
};

class WebUpdater {
public:
    WebUpdater(ui::DocumentWindow& window, const platform::ProgramFolder& folder,
               qbgateway::Gateway& gateway, platform::SettingsStore& settings, ui::UiPort& ui);

    // A Web-Update menu entry: the window switches to the update mode and lists the items of
    // the kind, each ticked. False when QuickBooks' answer could not be used.
    bool listItems(const ItemKind& kind);
    // UpdateWebBtn: publishes the ticked items. The status bar ends on "Update done"; when
    // the run has more to say (see UpdateReport::notes) its result page, "webupdate.htm" in
    // the program folder, says it and is opened.
    UpdateReport updateItems();

    // Called after each item with the list row and whether the site took it.
    void onItemDone(std::function<void(int row, bool accepted, const std::string& why)> done) {
        m_itemDone = std::move(done);
    }

private:
    void showResultPage(const UpdateReport& report);

    ui::DocumentWindow& m_window;
    const platform::ProgramFolder& m_folder;
    qbgateway::Gateway& m_gateway;
    platform::SettingsStore& m_settings;
    ui::UiPort& m_ui;
    const ItemKind* m_kind = nullptr;
    std::function<void(int, bool, const std::string&)> m_itemDone;
};

}  // namespace dorvane::webupdate
