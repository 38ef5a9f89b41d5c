// SPDX-License-Identifier: GPL-3.0-or-later
#include "import/conversion.h"

#include <string_view>

#include "platform/programfolder.h"
#include "qbgateway/defaultrecords.h"
#include "qbgateway/gateway.h"
#include "qbgateway/response.h"
#include "ui/uiport.h"

namespace dorvane::imports {
namespace {

constexpr const char* kBillAddedPage =
    "<body><p align='center'><b><font color='#0000FF'>Bill sucessfully added.</font></b></p><p "
    "align='center'>Please inspect this bill in Quickbooks ( Accounts Payable) </p><p "
    "align='center'>and, if necessary, adjust Terms, Items and Accounts.</p></body>";
constexpr const char* kPurchaseOrderAddedPage =
    "<body><p align='center'><b><font color='#0000FF'>Purchase Order sucessfully "
    "added.</font></b></p><p align='center'>Please inspect this bill in Quickbooks ( Vendors / "
    "PO List) </p><p align='center'>and, if necessary, adjust the Items.</p></body>";
constexpr const char* kChargeAddedPage =
    "<body><p align='center'><b><font color='#0000FF'>Sales Receipt sucessfully "
    "added.</font></b></p><p align='center'>Please inspect this charge in Quickbooks ( "
    "Checking/CreditCard) </p><p align='center'>and, if necessary, adjust Terms, Items and "
    "Accounts.</p></body>";

constexpr Conversion kConversions[] = {
    {DocumentKind::Invoice, nullptr, "/BillFromInvoice.xslt", "Bill added", kBillAddedPage},
    {DocumentKind::Estimate, nullptr, "/POFromEstimate.xslt", "Purchaseorder added",
     kPurchaseOrderAddedPage},
    {DocumentKind::SalesReceipt, "Bank", "/CheckFromSalesReceipt.xslt", "Sales Receipt added",
     kChargeAddedPage},
    {DocumentKind::SalesReceipt, "CreditCard", "/CRChargeFromSalesReceipt.xslt",
     "Sales Receipt added", kChargeAddedPage},
};

}  // namespace

std::vector<PaymentAccount> loadPaymentAccounts(qbgateway::Gateway& gateway, ui::UiPort& ui,
                                                const platform::ProgramFolder& folder) {
    std::vector<PaymentAccount> accounts;
    const std::string response =
        gateway.processRequest(ui::textOrShown(folder.readProgramFile("BankAccountGetRq.xml"), ui));
    if (!response.empty() && qbgateway::isResponseOK(response, ui)) {
        if (auto doc = xml::Document::parse(response)) {
            for (const xml::Node& account :
                 doc->selectAll("/QBXML/QBXMLMsgsRs/AccountQueryRs/AccountRet")) {
                accounts.push_back({account.valueOf("Name"), account.valueOf("AccountType")});
            }
        }
    }
    return accounts;
}

const Conversion* conversionFor(DocumentKind kind, const PaymentAccount* account) {
    for (const Conversion& c : kConversions) {
        if (c.kind != kind) {
            continue;
        }
        if (!c.accountType) {
            return &c;
        }
        if (account && account->type == c.accountType) {
            return &c;
        }
    }
    return nullptr;
}

std::string describeMissing(const MissingRecord& record) {
    if (record.kind == "payment account") {
        if (record.name.empty()) {
            return "QuickBooks has no bank or credit-card account to pay a sales receipt from";
        }
        return "The account '" + record.name + "' is of the type " + record.accountType +
               "; a sales receipt is paid from a Bank or CreditCard account";
    }
    if (record.name.empty()) {
        return "The import preference " + record.settingKey + " names no " + record.kind;
    }
    return "QuickBooks has no " + record.kind + " '" + record.name +
           "', which the import preference " + record.settingKey + " names";
}

MissingRecord missingPaymentAccount(const PaymentAccount* account) {
    if (!account) {
        return {"payment account", {}, {}, {}};
    }
    return {"payment account", account->name, {}, account->type};
}

ConvertedRequest Converter::convert(const xml::Document& document, const Conversion& conversion,
                                    const ImportSettings& settings,
                                    const std::string& account) const {
    const xml::Node root = selectConversionRoot(document, conversion.kind);
    if (!root) {
        return {};
    }
    auto sheet = xml::Stylesheet::load(m_folder.filePath(conversion.sheet));
    if (!sheet) {
        return {};
    }
    auto converted = sheet->transformNode(root);
    if (!converted) {
        return {std::nullopt, true, converted.error().description};
    }
    std::string request = std::move(converted).value();
    applyItemAssignment(request, settings);
    if (conversion.kind == DocumentKind::SalesReceipt) {
        applyAccountAssignment(request, account);
    }
    return {std::move(request), false, {}};
}

// Before the vendor is created or anything is sent: the converted document, rewritten onto the
// import preferences, must name an item, group, terms and account QuickBooks has. Otherwise the
// import would stop half-way, after a new vendor was added.
std::vector<MissingRecord> Converter::missingRecords(const xml::Document& document,
                                                     const Conversion& conversion,
                                                     const ImportSettings& settings) {
    const xml::Node root = selectConversionRoot(document, conversion.kind);
    auto sheet = xml::Stylesheet::load(m_folder.filePath(conversion.sheet));
    if (!root || !sheet) {
        return {};  // the conversion step sends nothing
    }
    auto converted = sheet->transformNode(root);
    if (!converted) {
        return {};  // the conversion step says why
    }
    std::string request = std::move(converted).value();
    applyItemAssignment(request, settings);
    auto doc = xml::Document::parse(request);
    if (!doc) {
        return {};
    }
    m_lists.loadItemList();
    struct Need {
        const char* kind;
        const char* key;
        const std::string& name;
        const char* reference;  // where the rewritten request names it
        const char* list;       // QuickBooks' list in the lists document
        const char* entry;      // an entry of that name in the list
    };
    const Need needs[] = {
        {"item", kItemKey, settings.importItemName, "//ItemRef/FullName[. != 'Subtotal']",
         "//ItemQueryRs", "*[FullName = $name]"},
        {"item group", kItemGroupKey, settings.importItemGroupName, "//ItemGroupRef/Name",
         "//ItemGroupQueryRs", "*[Name = $name]"},
        {"terms", kTermKey, settings.importTermsName, "//TermsRef/FullName", "//TermsQueryRs",
         "*[Name = $name]"},
        {"account", kAccountKey, settings.importAccountName,
         "/ExpenseLineAdd/AccountRef/FullName | //DepositToAccountRef/FullName", "//AccountQueryRs",
         "*[FullName = $name]"},
    };
    std::vector<MissingRecord> missing;
    for (const Need& need : needs) {
        if (!doc->selectOne(need.reference)) {
            continue;
        }
        const xml::Node list =
            m_lists.itemList().selectOne(std::string(need.list) + "[@statusSeverity != 'Error']");
        if (list && !list.selectOne(need.entry, {{"name", need.name}})) {
            missing.push_back({need.kind, need.name, need.key, {}});
        }
    }
    return missing;
}

}  // namespace dorvane::imports
