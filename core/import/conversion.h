// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — an exchange file converted into the user's own transaction: an invoice into a bill,
// an estimate into a purchase order, a sales receipt into a check or a credit-card charge (by
// the type of the account that pays it), rewritten onto the import settings.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "import/assignment.h"
#include "import/exchangefile.h"
#include "xml/xml.h"

namespace dorvane::platform {
class ProgramFolder;
}

namespace dorvane::qbgateway {
class DefaultRecords;
class Gateway;
}  // namespace dorvane::qbgateway

namespace dorvane::ui {
class UiPort;
}

namespace dorvane::imports {

// An account that can pay a sales receipt: its name and its type.
struct PaymentAccount {
    std::string name;
    std::string type;  // "Bank", "CreditCard", …
};

// The accounts QuickBooks has that may pay a sales receipt, in its order ("BankAccountGetRq.xml");
// none when it gives no list.
std::vector<PaymentAccount> loadPaymentAccounts(qbgateway::Gateway& gateway, ui::UiPort& ui,
                                                const platform::ProgramFolder& folder);

// One kind's conversion: its style sheet, and what the window says once QuickBooks took it.
struct Conversion {
    DocumentKind kind;
    const char* accountType;  // a sales receipt's paying account's; nullptr for the others
    const char* sheet;
    const char* status;
    const char* page;  // the pane's new body
};

// The conversion of `kind`; for a sales receipt the one of the paying account's type. nullptr
// for a kind that converts into nothing, a sales receipt without an account or with one that is
// neither a bank nor a credit-card account.
const Conversion* conversionFor(DocumentKind kind, const PaymentAccount* account);

// A record the import needs that the user's QuickBooks lacks, found before anything is written:
// one the import preferences name (with the preference's key), or an account that can pay a
// sales receipt.
struct MissingRecord {
    std::string kind;         // "item", "item group", "terms", "account", "payment account"
    std::string name;         // the name looked for; the payment account's, when there is one
    std::string settingKey;   // kItemKey, kItemGroupKey, kTermKey, kAccountKey; "" for payment
    std::string accountType;  // the payment account's type, when it is neither Bank nor CreditCard
};

// "QuickBooks has no item 'X' (import preference Item)" and the like, one sentence per record.
std::string describeMissing(const MissingRecord& record);

// A sales receipt's paying account (null: none chosen) that cannot pay it.
MissingRecord missingPaymentAccount(const PaymentAccount* account);

struct ConvertedRequest {
    // The add request, without the prolog; nullopt when there was nothing to convert (the root
    // spelled otherwise, the sheet missing) or the sheet failed.
    std::optional<std::string> request;
    bool failed = false;  // the sheet failed …
    std::string error;    // … for this reason
};

class Converter {
public:
    // The sheets are the program folder's; `lists` are QuickBooks' lists the preferences name.
    Converter(const platform::ProgramFolder& folder, qbgateway::DefaultRecords& lists)
        : m_folder(folder), m_lists(lists) {}

    // `document` converted, rewritten onto `settings`; a sales receipt's first account reference
    // then names `account`.
    ConvertedRequest convert(const xml::Document& document, const Conversion& conversion,
                             const ImportSettings& settings, const std::string& account = {}) const;

    // The records the converted document would name that QuickBooks lacks (its lists fetched
    // afresh): the item, group, terms and account of the preferences, those the document uses.
    // Empty too when the document does not convert or QuickBooks could not say.
    std::vector<MissingRecord> missingRecords(const xml::Document& document,
                                              const Conversion& conversion,
                                              const ImportSettings& settings);

private:
    const platform::ProgramFolder& m_folder;
    qbgateway::DefaultRecords& m_lists;
};

}  // namespace dorvane::imports
