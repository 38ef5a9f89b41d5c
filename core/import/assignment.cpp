// SPDX-License-Identifier: GPL-3.0-or-later
#include "import/assignment.h"

#include <optional>

#include "qbgateway/defaultrecords.h"

namespace dorvane::imports {
namespace {

std::string setting(const platform::SettingsStore& store, const char* key) {
    return store.value(kImportSection, key).value_or("");
}

bool ignoreCustomerSetting(const platform::SettingsStore& store) {
    return store.intValue(kImportSection, kIgnoreAuthNetCustKey) != 0;
}

std::optional<xml::Document> parseRequest(const std::string& request) {
    auto doc = xml::Document::parse(request);
    if (!doc) {
        return std::nullopt;
    }
    return std::move(doc).value();
}

// The document as text again, with a declaration only when the request came with one, and in
// ASCII with character references, as the style sheets write requests for QuickBooks.
std::string serialise(const xml::Document& doc, const std::string& original) {
    const std::size_t start = original.find_first_not_of(" \t\r\n");
    const bool declaration = start != std::string::npos && original.compare(start, 5, "<?xml") == 0;
    return doc.toString(declaration, "US-ASCII");
}

void setAll(const xml::Document& doc, std::string_view xpath, const std::string& value) {
    for (xml::Node node : doc.selectAll(xpath)) {
        node.setText(value);
    }
}

}  // namespace

std::string accountNameFromSetting(std::string_view value) {
    const std::size_t at = value.find("] ");
    return at == std::string_view::npos ? std::string() : std::string(value.substr(at + 2));
}

ImportSettings loadImportSettings(const platform::SettingsStore& store) {
    ImportSettings s;
    s.importItemName = setting(store, kItemKey);
    s.importItemGroupName = setting(store, kItemGroupKey);
    s.importTermsName = setting(store, kTermKey);
    s.importAccountName = accountNameFromSetting(setting(store, kAccountKey));
    s.ignoreAuthNetCustomer = ignoreCustomerSetting(store);
    return s;
}

const ImportSettings& ImportSettingsSource::reload() {
    m_store.reload();
    m_settings = loadImportSettings(m_store);
    return m_settings;
}

std::string ImportPreferencesModel::Choice::text() const {
    return selected < entries.size() ? entries[selected] : std::string();
}

void ImportPreferencesModel::Choice::selectMatching(std::string_view value) {
    for (std::size_t i = 0; i < entries.size(); ++i) {
        if (entries[i] == value) {
            selected = i;
        }
    }
}

ImportPreferencesModel::ImportPreferencesModel(const xml::Document& lists,
                                               const platform::SettingsStore& store) {
    for (const xml::Node& n : lists.selectAll("//ItemQueryRs/*/FullName")) {
        itemlist.entries.push_back(n.text());
    }
    for (const xml::Node& n : lists.selectAll("//ItemGroupQueryRs/*/Name")) {
        itemgrouplist.entries.push_back(n.text());
    }
    for (const xml::Node& n : lists.selectAll("//TermsQueryRs/*/Name")) {
        termlist.entries.push_back(n.text());
    }
    for (const xml::Node& n : lists.selectAll("//AccountRet")) {
        Accountlist.entries.push_back("[" + n.valueOf("AccountType") + "] " +
                                      n.valueOf("FullName"));
    }
    itemlist.selectMatching(setting(store, kItemKey));
    itemgrouplist.selectMatching(setting(store, kItemGroupKey));
    termlist.selectMatching(setting(store, kTermKey));
    Accountlist.selectMatching(setting(store, kAccountKey));
    IgnoreAuthNetCust = ignoreCustomerSetting(store);
    QuotedFields = store.intValue(kImportSection, kQuotedFieldsKey) != 0;
}

std::vector<platform::SettingsStore::Change> ImportPreferencesModel::changes() const {
    return {
        {kImportSection, kItemKey, itemlist.text()},
        {kImportSection, kItemGroupKey, itemgrouplist.text()},
        {kImportSection, kTermKey, termlist.text()},
        {kImportSection, kAccountKey, Accountlist.text()},
        {kImportSection, kIgnoreAuthNetCustKey, IgnoreAuthNetCust ? "1" : "0"},
        {kImportSection, kQuotedFieldsKey, QuotedFields ? "1" : "0"},
    };
}

Status ImportPreferencesModel::save(platform::SettingsStore& store) const {
    return store.setEntries(changes());
}

void applyItemAssignment(std::string& request, const ImportSettings& settings) {
    auto doc = parseRequest(request);
    if (!doc) {
        return;
    }
    for (xml::Node node : doc->selectAll("//ItemRef/FullName")) {
        if (node.text() != "Subtotal") {
            node.setText(settings.importItemName);
        }
    }
    setAll(*doc, "//ItemGroupRef/Name", settings.importItemGroupName);
    setAll(*doc, "//TermsRef/FullName", settings.importTermsName);
    setAll(*doc, "/ExpenseLineAdd/AccountRef/FullName", settings.importAccountName);
    setAll(*doc, "//DepositToAccountRef/FullName", settings.importAccountName);
    request = serialise(*doc, request);
}

void applyAccountAssignment(std::string& request, std::string_view accountName) {
    auto doc = parseRequest(request);
    if (!doc) {
        return;
    }
    if (xml::Node first = doc->selectOne("//AccountRef/FullName")) {
        first.setText(accountName);
    }
    request = serialise(*doc, request);
}

void applyItemAssignmentByLookup(std::string& request, const ImportSettings& settings,
                                 const xml::Document& lists) {
    auto doc = parseRequest(request);
    if (!doc) {
        return;
    }
    struct Rule {
        const char* reference;
        const char* lookup;  // the expression up to the opening quote of the name
        const std::string& replacement;
        bool keepSubtotal;
    };
    const Rule rules[] = {
        {"//ItemRef/FullName", "//ItemQueryRs/*[FullName ='", settings.importItemName, true},
        {"//ItemGroupRef/FullName", "//ItemQueryRs/*[FullName ='", settings.importItemGroupName,
         false},
        {"//TermsRef/FullName", "//TermsQueryRs/*[Name ='", settings.importTermsName, false},
        {"//AccountRef/FullName", "//AccountQueryRs/*[Name ='", settings.importAccountName, false},
    };
    for (const Rule& rule : rules) {
        for (xml::Node node : doc->selectAll(rule.reference)) {
            const std::string value = node.text();
            if (rule.keepSubtotal && value == "Subtotal") {
                continue;
            }
            // The name stands between single quotes as it is: an apostrophe in it makes the
            // expression invalid, and an invalid expression ends the whole rewrite.
            if (value.find('\'') != std::string::npos) {
                return;
            }
            if (!lists.selectOne(std::string(rule.lookup) + value + "']")) {
                node.setText(rule.replacement);
            }
        }
    }
    request = serialise(*doc, request);
}

void applyItemAssignmentByLookup(std::string& request, const ImportSettings& settings,
                                 qbgateway::DefaultRecords& records) {
    if (records.itemList().empty()) {
        records.loadItemList();
    }
    applyItemAssignmentByLookup(request, settings, records.itemList());
}

}  // namespace dorvane::imports
