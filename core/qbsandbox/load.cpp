// SPDX-License-Identifier: GPL-3.0-or-later
#include "qbsandbox/load.h"

#include <algorithm>
#include <cstdlib>
#include <map>

#include "qbsandbox/companyfile.h"
#include "qbsandbox/schema.h"
#include "xml/xml.h"

namespace dorvane::qbsandbox {

namespace {

const char* const kTxnTypes[] = {"Invoice",       "Estimate",        "SalesReceipt", "CreditMemo",
                                 "PurchaseOrder", "ReceivePayment",  "TimeTracking", "Bill",
                                 "Check",         "CreditCardCharge"};

bool isLineKind(std::string_view name) {
    auto ends = [&](std::string_view s) {
        return name.size() >= s.size() && name.compare(name.size() - s.size(), s.size(), s) == 0;
    };
    return ends("LineRet") || ends("LineGroupRet") || name == "AppliedToTxnRet";
}

const ElementRule* ruleFor(const AggregateRule* rule, const std::string& name) {
    if (!rule) {
        return nullptr;
    }
    auto it = std::find_if(rule->children.begin(), rule->children.end(),
                           [&](const ElementRule& e) { return e.name == name; });
    return it == rule->children.end() ? nullptr : &*it;
}

struct Flattener {
    std::vector<LineRecord>* lines;
    int nextSeq = 0;

    void flatten(const xml::Node& node, const std::string& aggName, const std::string& prefix,
                 Fields& out, int parentSeq) {
        const AggregateRule* rule = findAggregate(aggName);
        std::map<std::string, int> repeats;
        for (xml::Node child = node.firstChildElement(); child;
             child = child.nextSiblingElement()) {
            std::string name = child.name();
            std::string key = prefix + name;
            const ElementRule* e = ruleFor(rule, name);
            if (lines && isLineKind(name)) {
                LineRecord line;
                line.kind = name;
                line.seq = nextSeq++;
                line.parentSeq = parentSeq;
                line.lineId = child.valueOf("TxnLineID");
                if (line.lineId.empty()) {
                    line.lineId = child.valueOf("TxnID");
                }
                std::size_t at = lines->size();
                lines->push_back(line);
                Fields f;
                flatten(child, name, "", f, line.seq);
                f.erase(std::remove_if(f.begin(), f.end(),
                                       [](const auto& kv) { return kv.first == "TxnLineID"; }),
                        f.end());
                (*lines)[at].fields = std::move(f);
                continue;
            }
            ValueType type =
                e ? e->type : (child.firstChildElement() ? ValueType::Aggregate : ValueType::Str);
            if (type == ValueType::Ref ||
                (!e && name.size() > 3 && name.compare(name.size() - 3, 3, "Ref") == 0)) {
                std::string id = child.valueOf("ListID");
                std::string full = child.valueOf("FullName");
                if (!id.empty()) {
                    out.emplace_back(key, id);
                }
                if (!full.empty()) {
                    out.emplace_back(key + "@FullName", full);
                }
            } else if (type == ValueType::Address) {
                for (xml::Node part = child.firstChildElement(); part;
                     part = part.nextSiblingElement()) {
                    out.emplace_back(key + "/" + part.name(), part.text());
                }
            } else if (type == ValueType::Aggregate) {
                if (e && e->repeats) {
                    int n = ++repeats[name];
                    flatten(child, name, key + "#" + std::to_string(n) + "/", out, parentSeq);
                } else if (name != "DataExtRet") {
                    flatten(child, name, key + "/", out, parentSeq);
                }
            } else {
                out.emplace_back(key, child.text());
            }
        }
    }
};

std::string take(Fields& f, std::string_view key) {
    for (auto it = f.begin(); it != f.end(); ++it) {
        if (it->first == key) {
            std::string v = std::move(it->second);
            f.erase(it);
            return v;
        }
    }
    return {};
}

std::int64_t cents(const std::string& text) {
    return Decimal::parse(text, 5).value_or(Decimal{}).cents();
}

std::int64_t timeOf(const std::string& text) {
    return parseDateTime(text).value_or(0);
}

}  // namespace

Result<LoadReport> loadResponse(CompanyFile& file, std::string_view responseText) {
    xml::ParseOptions options;
    options.refuseInternalSubset = true;
    auto doc = xml::Document::parse(responseText, options);
    if (!doc) {
        return Error{1, "The response is not well-formed XML: " + doc.error().description};
    }
    xml::Node msgs = doc->root().firstChildElement("QBXMLMsgsRs");
    if (doc->root().name() != "QBXML" || !msgs) {
        return Error{1, "The file is not a qbXML response (no QBXML/QBXMLMsgsRs)."};
    }
    LoadReport report;
    CompanyFile::Transaction transaction(file);
    for (xml::Node rs = msgs.firstChildElement(); rs; rs = rs.nextSiblingElement()) {
        for (xml::Node ret = rs.firstChildElement(); ret; ret = ret.nextSiblingElement()) {
            std::string retName = ret.name();
            if (retName.size() < 4 || retName.compare(retName.size() - 3, 3, "Ret") != 0) {
                ++report.skipped;
                continue;
            }
            std::string kind = retName.substr(0, retName.size() - 3);
            if (kind == "Company" || kind == "Preferences") {
                Fields f;
                Flattener{nullptr}.flatten(ret, retName, "", f, -1);
                for (const auto& [k, v] : f) {
                    if (k == "IsSampleCompany") {
                        continue;
                    }
                    file.setSetting(kind + "/" + k, v);
                }
                continue;
            }
            if (kind == "Host") {
                continue;
            }
            bool isTxn =
                std::find(std::begin(kTxnTypes), std::end(kTxnTypes), kind) != std::end(kTxnTypes);
            if (isTxn) {
                TxnRecord t;
                t.type = kind;
                Flattener flattener{&t.lines};
                flattener.flatten(ret, retName, "", t.fields, -1);
                Fields& f = t.fields;
                t.txnId = take(f, "TxnID");
                if (t.txnId.empty() || file.txnById(t.txnId, false)) {
                    ++report.skipped;
                    continue;
                }
                t.created = timeOf(take(f, "TimeCreated"));
                t.modified = timeOf(take(f, "TimeModified"));
                t.editSequence = take(f, "EditSequence");
                t.txnNumber = std::atoll(take(f, "TxnNumber").c_str());
                auto date = Date::parse(take(f, "TxnDate"));
                if (!date) {
                    ++report.skipped;
                    continue;
                }
                t.txnDate = *date;
                t.refNumber = take(f, "RefNumber");
                for (const char* k : {"CustomerRef", "VendorRef", "PayeeEntityRef", "EntityRef"}) {
                    if (const std::string* v = findField(f, k); v && t.entityId.empty()) {
                        t.entityId = *v;
                    }
                }
                for (const char* k :
                     {"ARAccountRef", "APAccountRef", "AccountRef", "DepositToAccountRef"}) {
                    if (const std::string* v = findField(f, k); v && t.accountId.empty()) {
                        t.accountId = *v;
                    }
                }
                if (kind == "Invoice") {
                    t.totalCents =
                        cents(fieldOr(f, "Subtotal")) + cents(fieldOr(f, "SalesTaxTotal"));
                } else {
                    t.totalCents = cents(
                        fieldOr(f, "TotalAmount", fieldOr(f, "AmountDue", fieldOr(f, "Amount"))));
                }
                t.appliedCents = cents(take(f, "AppliedAmount"));
                for (const char* k :
                     {"BalanceRemaining", "OpenAmount", "CreditRemaining", "UnusedPayment"}) {
                    if (const std::string* v = findField(f, k)) {
                        t.openCents = cents(*v);
                    }
                }
                for (const char* k : {"BalanceRemaining", "OpenAmount", "CreditRemaining",
                                      "UnusedPayment", "UnusedCredits", "IsPaid"}) {
                    take(f, k);
                }
                file.insertTxn(t);
                ++report.transactions;
                continue;
            }
            ListRecord r;
            r.kind = kind;
            Flattener{nullptr}.flatten(ret, retName, "", r.fields, -1);
            Fields& f = r.fields;
            r.listId = take(f, "ListID");
            r.name = take(f, "Name");
            r.fullName = take(f, "FullName");
            if (r.fullName.empty()) {
                r.fullName = r.name;
            }
            if (r.listId.empty() || r.name.empty() || file.listById(r.listId) ||
                file.listByName(nameSpaceOf(kind), r.fullName)) {
                ++report.skipped;
                continue;
            }
            r.created = timeOf(take(f, "TimeCreated"));
            r.modified = timeOf(take(f, "TimeModified"));
            r.editSequence = take(f, "EditSequence");
            r.active = take(f, "IsActive") != "false";
            r.parentId = take(f, "ParentRef");
            take(f, "ParentRef@FullName");
            r.sublevel = std::atoi(take(f, "Sublevel").c_str());
            r.balanceCents = cents(take(f, "Balance"));
            take(f, "TotalBalance");
            file.insertList(r);
            ++report.lists;
        }
    }
    transaction.commit();
    return report;
}

}  // namespace dorvane::qbsandbox
