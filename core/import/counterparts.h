// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — the other party of an imported document: the user's vendors (or customers, for a
// receipt) as QuickBooks lists them, the match against the document's party, and the request
// that adds a party QuickBooks does not have yet.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "import/exchangefile.h"
#include "xml/xml.h"

namespace dorvane::platform {
class ProgramFolder;
}

namespace dorvane::qbgateway {
class Gateway;
}

namespace dorvane::ui {
class UiPort;
}

namespace dorvane::imports {

// The one-column counterpart list: vendors, or customers for a receipt.
struct CounterpartList {
    std::string columnHeader;  // "Vendor" or "Customer"
    std::vector<std::string> items;
    std::optional<std::size_t> selected;
    std::optional<std::size_t> bold;  // the matched item
    bool enabled = true;

    // Partial mode: the first item whose text begins with `text`, any case.
    std::optional<std::size_t> findPartial(std::string_view text) const;
    // Whole-word mode: the first item whose text begins with `text` as a whole word (the item
    // is `text`, or goes on with a character that is not a letter or digit), any case.
    std::optional<std::size_t> findWholeWord(std::string_view text) const;
};

enum class Party { Vendor, Customer };

// The match of a document's party in the list.
struct CounterpartMatch {
    std::optional<std::size_t> index;     // the item found, selected and shown in bold
    std::string report;                   // what Label1 says about it
    std::optional<std::string> nameText;  // what the name box then holds; nullopt: unchanged
};

// The document's vendor ("//CompanyRet/CompanyName") or a receipt's customer ("//Company"),
// found by prefix; nullopt when the document names none.
std::optional<CounterpartMatch> matchCounterpart(Party party, const CounterpartList& list,
                                                 const xml::Document& document);

class Counterparts {
public:
    Counterparts(qbgateway::Gateway& gateway, ui::UiPort& ui, const platform::ProgramFolder& folder)
        : m_gateway(gateway), m_ui(ui), m_folder(folder) {}

    // The list's column header.
    static const char* header(Party party);
    // The names QuickBooks has, in its order; nullopt when it gave no list.
    std::optional<std::vector<std::string>> names(Party party);

    // The request that adds the vendor of an invoice or an estimate; nullopt for other kinds,
    // or when the document does not convert.
    std::optional<std::string> vendorAddRequest(const xml::Document& document,
                                                DocumentKind kind) const;
    // The request that adds a receipt's payer as the customer `name`, which the document's
    // company then names too; nullopt when it does not convert.
    std::optional<std::string> customerAddRequest(xml::Document& document,
                                                  const std::string& name) const;

private:
    qbgateway::Gateway& m_gateway;
    ui::UiPort& m_ui;
    const platform::ProgramFolder& m_folder;
};

}  // namespace dorvane::imports
