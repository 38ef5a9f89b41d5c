// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — the import settings, the import preferences dialog (Dialog3) and the rewriting
// of a converted add request onto the user's own item, item group, terms and account.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "common/result.h"
#include "platform/settings.h"
#include "ui/uiport.h"
#include "xml/xml.h"

namespace dorvane::qbgateway {
class DefaultRecords;
}

namespace dorvane::imports {

inline constexpr const char* kImportSection = "Import";
inline constexpr const char* kItemKey = "Item";
inline constexpr const char* kItemGroupKey = "ItemGroup";
inline constexpr const char* kTermKey = "Term";
inline constexpr const char* kAccountKey = "Account";
inline constexpr const char* kIgnoreAuthNetCustKey = "IgnoreAuthNetCust";
// Authorize.Net downloads read with values in double quotes kept whole (RFC 4180).
inline constexpr const char* kQuotedFieldsKey = "QuotedFields";

// The account name in an "Account" setting: the text behind the first "] "; "" without one.
std::string accountNameFromSetting(std::string_view setting);

// The import state the rewriting reads; a default one holds the settings' defaults.
struct ImportSettings {
    std::string importItemName = platform::settingDefault(kImportSection, kItemKey);
    std::string importItemGroupName = platform::settingDefault(kImportSection, kItemGroupKey);
    std::string importTermsName = platform::settingDefault(kImportSection, kTermKey);
    std::string importAccountName =
        accountNameFromSetting(platform::settingDefault(kImportSection, kAccountKey));
    bool ignoreAuthNetCustomer =
        platform::settingDefaultNumber(kImportSection, kIgnoreAuthNetCustKey) != 0;
};

// Reads the five values of section "Import" with their defaults.
ImportSettings loadImportSettings(const platform::SettingsStore& store);

// The import settings as last read from the store. The import window and the batch import
// share one, so that what one reads the other imports with.
class ImportSettingsSource {
public:
    explicit ImportSettingsSource(platform::SettingsStore& store) : m_store(store) {}

    // Reads the store again, then the settings.
    const ImportSettings& reload();
    const ImportSettings& current() const { return m_settings; }
    platform::SettingsStore& store() { return m_store; }

private:
    platform::SettingsStore& m_store;
    ImportSettings m_settings;
};

// The import preferences dialog. The front end shows the four lists with their selected
// entries and the check box, lets the person change them, and on OK calls save() and then
// loadImportSettings(); Cancel saves nothing.
class ImportPreferencesModel final : public ui::DialogModel {
public:
    static constexpr const char* kCaption = "Please select your preferences for item assignment";

    // A drop-down list: its entries in document order and the selected one.
    struct Choice {
        std::vector<std::string> entries;
        std::size_t selected = 0;
        // The selected entry's text; "" for an empty list.
        std::string text() const;
        // Selects the last entry equal to `value` (case-sensitive); leaves the selection
        // alone when none is.
        void selectMatching(std::string_view value);
    };

    // `lists` is the lists document (item, item-group, terms and account query responses).
    ImportPreferencesModel(const xml::Document& lists, const platform::SettingsStore& store);

    std::string_view dialogName() const override { return "Dialog3"; }

    std::string label1 = kCaption;
    Choice itemlist;
    Choice itemgrouplist;
    Choice termlist;
    Choice Accountlist;
    bool IgnoreAuthNetCust = false;
    bool QuotedFields = false;

    // What OK writes, in order: Item, ItemGroup, Term, Account, IgnoreAuthNetCust and
    // QuotedFields ("0"/"1").
    std::vector<platform::SettingsStore::Change> changes() const;
    Status save(platform::SettingsStore& store) const;
};

// Rewrites a converted add request (a document without the prolog) onto the settings: every
// "//ItemRef/FullName" but "Subtotal", every "//ItemGroupRef/Name", every
// "//TermsRef/FullName", every "/ExpenseLineAdd/AccountRef/FullName" (rooted at the document,
// so a request whose root is QBXML keeps its expense accounts) and every
// "//DepositToAccountRef/FullName". A text that does not parse stays as it is.
void applyItemAssignment(std::string& request, const ImportSettings& settings);

// Points the first "//AccountRef/FullName" (document order) at `accountName`; only that one.
void applyAccountAssignment(std::string& request, std::string_view accountName);

// As applyItemAssignment, but a reference keeps its name when the lists document has an entry
// of exactly that name: items by "//ItemQueryRs/*[FullName ='…']" (item groups too, which are
// looked up among the items and matched at "//ItemGroupRef/FullName"), terms by
// "//TermsQueryRs/*[Name ='…']", accounts ("//AccountRef/FullName") by
// "//AccountQueryRs/*[Name ='…']". The name goes into the expression between single quotes as
// it stands: a name with an apostrophe makes the expression invalid, which ends the rewrite
// with the request unchanged. "Subtotal" item references are kept as applyItemAssignment
// keeps them.
void applyItemAssignmentByLookup(std::string& request, const ImportSettings& settings,
                                 const xml::Document& lists);
// The same against the preferences' lists document, fetched from QuickBooks first when it has
// not been loaded yet.
void applyItemAssignmentByLookup(std::string& request, const ImportSettings& settings,
                                 qbgateway::DefaultRecords& records);

}  // namespace dorvane::imports
