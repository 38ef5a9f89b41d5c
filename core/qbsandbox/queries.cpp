// SPDX-License-Identifier: GPL-3.0-or-later
// Query requests: transactions, lists, the company and its preferences.
#include <algorithm>
#include <map>

#include "common/text.h"
#include "qbsandbox/datemacro.h"
#include "qbsandbox/engine.h"

namespace dorvane::qbsandbox {

namespace {

const std::set<std::string, std::less<>> kTxnTypes = {
    "Invoice",        "Estimate",     "SalesReceipt", "CreditMemo", "PurchaseOrder",
    "ReceivePayment", "TimeTracking", "Bill",         "Check",      "CreditCardCharge"};

std::vector<std::string> listKindsOf(const std::string& base) {
    if (base == "Item") {
        return {"ItemService",           "ItemNonInventory",  "ItemOtherCharge", "ItemInventory",
                "ItemInventoryAssembly", "ItemSubtotal",      "ItemDiscount",    "ItemPayment",
                "ItemSalesTax",          "ItemSalesTaxGroup", "ItemGroup"};
    }
    if (base == "Terms") {
        return {"StandardTerms", "DateDrivenTerms"};
    }
    return {base};
}

std::string missingText(const std::string& value) {
    return "The query request has not been fully completed. There was a required element (\"" +
           value + "\") that could not be found in QuickBooks.";
}

bool matches(std::string_view criterion, const std::string& value, const std::string& pattern) {
    std::string v = text::toLower(value), p = text::toLower(pattern);
    if (criterion == "StartsWith") {
        return v.compare(0, p.size(), p) == 0;
    }
    if (criterion == "EndsWith") {
        return v.size() >= p.size() && v.compare(v.size() - p.size(), p.size(), p) == 0;
    }
    return v.find(p) != std::string::npos;
}

std::int64_t maxReturned(const xml::Node& rq) {
    std::string m = rq.valueOf("MaxReturned");
    return m.empty() ? -1 : std::stoll(m);
}

std::string inList(std::size_t n) {
    std::string s = "(";
    for (std::size_t i = 0; i < n; ++i) {
        s += i ? ",?" : "?";
    }
    return s + ")";
}

// ListIDs an EntityFilter/AccountFilter names, children included where asked.
std::vector<std::string> filterIds(RequestContext& ctx, const xml::Node& filter,
                                   std::string_view space) {
    std::vector<std::string> ids;
    for (const auto& n : filter.selectAll("ListID")) {
        ids.push_back(n.text());
    }
    for (const auto& n : filter.selectAll("FullName")) {
        if (auto r = ctx.file.listByName(space, n.text())) {
            ids.push_back(r->listId);
        }
    }
    std::string withId = filter.valueOf("ListIDWithChildren");
    std::string withName = filter.valueOf("FullNameWithChildren");
    std::optional<ListRecord> parent;
    if (!withId.empty()) {
        parent = ctx.file.listById(withId);
    } else if (!withName.empty()) {
        parent = ctx.file.listByName(space, withName);
    }
    if (parent) {
        ids.push_back(parent->listId);
        auto s = ctx.file.prepare(
            "SELECT list_id FROM lists WHERE ns = ? AND substr(full_name, 1, ?) = ?");
        std::string prefix = parent->fullName + ":";
        s.bind(1, space).bind(2, static_cast<std::int64_t>(prefix.size())).bind(3, prefix);
        while (s.step()) {
            ids.push_back(s.text(0));
        }
    }
    return ids;
}

RsStatus txnQuery(RequestContext& ctx, const xml::Node& rq, const std::string& type,
                  std::string& body) {
    bool lineItems = parseBool(rq.valueOf("IncludeLineItems")).value_or(false);
    bool linked = parseBool(rq.valueOf("IncludeLinkedTxns")).value_or(false);
    WriteOptions options{lineItems, linked};
    auto linesStmt = ctx.file.prepare(kLineSelect);
    std::int64_t count = 0;
    std::string retName = type + "Ret";
    auto emit = [&](TxnRecord& r) {
        if (lineItems) {
            linesStmt.bind(1, r.rowid);
            while (linesStmt.step()) {
                r.lines.push_back(readLine(linesStmt));
            }
            linesStmt.reset();
        }
        Fields f = txnRetFields(r);
        writeRet(ctx, body, retName, f, &r.lines, options);
        ++count;
    };

    std::vector<xml::Node> ids = rq.selectAll("TxnID");
    std::vector<xml::Node> refs = rq.selectAll("RefNumber | RefNumberCaseSensitive");
    if (!ids.empty() || !refs.empty()) {
        std::string firstMissing;
        for (const auto& n : ids) {
            auto s = ctx.file.prepare(std::string(kTxnSelect) + " WHERE txn_id = ? AND type = ?");
            s.bind(1, n.text()).bind(2, type);
            if (s.step()) {
                TxnRecord r = readTxn(s);
                emit(r);
            } else if (firstMissing.empty()) {
                firstMissing = n.text();
            }
        }
        for (const auto& n : refs) {
            bool caseSensitive = n.name() == "RefNumberCaseSensitive";
            auto s = ctx.file.prepare(
                std::string(kTxnSelect) + " WHERE type = ? AND ref_number = ?" +
                (caseSensitive ? "" : " COLLATE NOCASE") + " ORDER BY txn_date, id");
            s.bind(1, type).bind(2, n.text());
            bool any = false;
            while (s.step()) {
                TxnRecord r = readTxn(s);
                emit(r);
                any = true;
            }
            if (!any && firstMissing.empty()) {
                firstMissing = n.text();
            }
        }
        if (!firstMissing.empty()) {
            return RsStatus::warn(500, missingText(firstMissing));
        }
        return {};
    }

    std::string sql = std::string(kTxnSelect) + " WHERE type = ?";
    std::vector<std::string> params{type};
    if (xml::Node range = rq.firstChildElement("TxnDateRangeFilter")) {
        std::optional<Date> from, to;
        if (std::string macro = range.valueOf("DateMacro"); !macro.empty()) {
            DateRange r = dateMacroRange(macro, ctx.today, fiscalYearStartMonth(ctx.file));
            from = r.from;
            to = r.to;
        } else {
            from = Date::parse(range.valueOf("FromTxnDate"));
            to = Date::parse(range.valueOf("ToTxnDate"));
        }
        if (from && to && *from > *to) {
            return RsStatus::error(3030, "The \"from\" date is later than the \"to\" date.");
        }
        if (from) {
            sql += " AND txn_date >= ?";
            params.push_back(from->text());
        }
        if (to) {
            sql += " AND txn_date <= ?";
            params.push_back(to->text());
        }
    }
    if (xml::Node range = rq.firstChildElement("ModifiedDateRangeFilter")) {
        if (auto from = parseDateTime(range.valueOf("FromModifiedDate"))) {
            sql += " AND time_modified >= " + std::to_string(*from);
        }
        if (auto to = parseDateTime(range.valueOf("ToModifiedDate"), true)) {
            sql += " AND time_modified <= " + std::to_string(*to);
        }
    }
    for (const char* filterName : {"EntityFilter", "TimeTrackingEntityFilter", "AccountFilter"}) {
        if (xml::Node filter = rq.firstChildElement(filterName)) {
            bool account = std::string_view(filterName) == "AccountFilter";
            auto listIds = filterIds(ctx, filter, account ? "account" : "entity");
            if (listIds.empty()) {
                return {1, "Info", kNoMatch};
            }
            sql += std::string(" AND ") + (account ? "account_id" : "entity_id") + " IN " +
                   inList(listIds.size());
            params.insert(params.end(), listIds.begin(), listIds.end());
        }
    }
    if (xml::Node f = rq.firstChildElement("RefNumberFilter")) {
        std::string c = f.valueOf("MatchCriterion"), v = f.valueOf("RefNumber");
        if (c == "StartsWith") {
            sql += " AND substr(lower(ref_number), 1, length(?)) = lower(?)";
            params.push_back(v);
        } else if (c == "EndsWith") {
            sql += " AND substr(lower(ref_number), -length(?)) = lower(?)";
            params.push_back(v);
        } else {
            sql += " AND instr(lower(ref_number), lower(?)) > 0";
        }
        params.push_back(v);
    }
    if (xml::Node f = rq.firstChildElement("RefNumberRangeFilter")) {
        if (std::string from = f.valueOf("FromRefNumber"); !from.empty()) {
            sql += " AND ref_number >= ?";
            params.push_back(from);
        }
        if (std::string to = f.valueOf("ToRefNumber"); !to.empty()) {
            sql += " AND ref_number <= ?";
            params.push_back(to);
        }
    }
    std::string paid = rq.valueOf("PaidStatus");
    if (paid == "PaidOnly") {
        sql += " AND open_amount <= 0";
    } else if (paid == "NotPaidOnly") {
        sql += " AND open_amount > 0";
    }
    sql += " ORDER BY txn_date, id";
    if (std::int64_t max = maxReturned(rq); max >= 0) {
        sql += " LIMIT " + std::to_string(max);
    }
    auto s = ctx.file.prepare(sql);
    for (std::size_t i = 0; i < params.size(); ++i) {
        s.bind(static_cast<int>(i + 1), params[i]);
    }
    while (s.step()) {
        TxnRecord r = readTxn(s);
        emit(r);
    }
    if (count == 0) {
        return {1, "Info", kNoMatch};
    }
    return {};
}

// Balances including sub-records (jobs, sub-accounts), by full name.
std::unordered_map<std::string, std::int64_t> totalBalances(CompanyFile& file,
                                                            const std::string& kind) {
    std::unordered_map<std::string, std::int64_t> totals;
    auto s = file.prepare("SELECT full_name, balance FROM lists WHERE kind = ?");
    s.bind(1, kind);
    while (s.step()) {
        std::string name = s.text(0);
        std::int64_t balance = s.integer(1);
        totals[name] += balance;
        for (auto colon = name.rfind(':'); colon != std::string::npos;
             colon = name.rfind(':', colon - 1)) {
            totals[name.substr(0, colon)] += balance;
            if (colon == 0) {
                break;
            }
        }
    }
    return totals;
}

RsStatus listQuery(RequestContext& ctx, const xml::Node& rq, const std::string& base,
                   std::string& body) {
    std::vector<std::string> kinds = listKindsOf(base);
    bool wantTotals = base == "Customer" || base == "Account";
    std::unordered_map<std::string, std::int64_t> totals;
    if (wantTotals) {
        totals = totalBalances(ctx.file, base);
    }
    std::int64_t count = 0;
    auto emit = [&](ListRecord& r) {
        Fields f = listRetFields(ctx, r, wantTotals ? &totals : nullptr);
        writeRet(ctx, body, r.kind + "Ret", f, nullptr, {});
        ++count;
    };
    std::string kindSql = " kind IN " + inList(kinds.size());

    std::vector<xml::Node> ids = rq.selectAll("ListID");
    std::vector<xml::Node> names = rq.selectAll("FullName");
    if (!ids.empty() || !names.empty()) {
        std::string firstMissing;
        // Each named record in the order asked; the first that does not exist is reported.
        auto lookUp = [&](const auto& wanted, const char* condition) {
            for (const auto& n : wanted) {
                auto s = ctx.file.prepare(std::string(kListSelect) + condition + kindSql);
                s.bind(1, n.text());
                for (std::size_t i = 0; i < kinds.size(); ++i) {
                    s.bind(static_cast<int>(i + 2), kinds[i]);
                }
                if (s.step()) {
                    ListRecord r = readList(s);
                    emit(r);
                } else if (firstMissing.empty()) {
                    firstMissing = n.text();
                }
            }
        };
        lookUp(ids, " WHERE list_id = ? AND");
        lookUp(names, " WHERE full_name = ? COLLATE NOCASE AND");
        if (!firstMissing.empty()) {
            return RsStatus::warn(500, missingText(firstMissing));
        }
        return {};
    }

    std::string sql = std::string(kListSelect) + " WHERE" + kindSql;
    std::string active = rq.valueOf("ActiveStatus");
    if (active.empty() || active == "ActiveOnly") {
        sql += " AND is_active = 1";
    } else if (active == "InactiveOnly") {
        sql += " AND is_active = 0";
    }
    if (auto from = parseDateTime(rq.valueOf("FromModifiedDate"))) {
        sql += " AND time_modified >= " + std::to_string(*from);
    }
    if (auto to = parseDateTime(rq.valueOf("ToModifiedDate"), true)) {
        sql += " AND time_modified <= " + std::to_string(*to);
    }
    std::vector<std::string> accountTypes;
    for (const auto& n : rq.selectAll("AccountType")) {
        accountTypes.push_back(n.text());
    }
    sql += " ORDER BY full_name COLLATE NOCASE, id";
    auto s = ctx.file.prepare(sql);
    for (std::size_t i = 0; i < kinds.size(); ++i) {
        s.bind(static_cast<int>(i + 1), kinds[i]);
    }
    xml::Node nameFilter = rq.firstChildElement("NameFilter");
    xml::Node nameRange = rq.firstChildElement("NameRangeFilter");
    xml::Node balanceFilter = rq.firstChildElement("TotalBalanceFilter");
    std::int64_t max = maxReturned(rq);
    while ((max < 0 || count < max) && s.step()) {
        ListRecord r = readList(s);
        if (nameFilter && !matches(nameFilter.valueOf("MatchCriterion"), r.fullName,
                                   nameFilter.valueOf("Name"))) {
            continue;
        }
        if (nameRange) {
            std::string from = text::toLower(nameRange.valueOf("FromName"));
            std::string to = text::toLower(nameRange.valueOf("ToName"));
            std::string name = text::toLower(r.fullName);
            if ((!from.empty() && name < from) ||
                (!to.empty() && name.compare(0, to.size(), to) > 0)) {
                continue;
            }
        }
        if (!accountTypes.empty() &&
            std::find(accountTypes.begin(), accountTypes.end(), fieldOr(r.fields, "AccountType")) ==
                accountTypes.end()) {
            continue;
        }
        if (balanceFilter) {
            std::int64_t total = wantTotals ? totals[r.fullName] : r.balanceCents;
            std::int64_t amount =
                Decimal::parse(balanceFilter.valueOf("Amount"), 2).value_or(Decimal{}).cents();
            std::string op = balanceFilter.valueOf("Operator");
            bool ok = op == "LessThan"        ? total < amount
                      : op == "LessThanEqual" ? total <= amount
                      : op == "Equal"         ? total == amount
                      : op == "GreaterThan"   ? total > amount
                                              : total >= amount;
            if (!ok) {
                continue;
            }
        }
        emit(r);
    }
    if (count == 0) {
        return {1, "Info", kNoMatch};
    }
    return {};
}

}  // namespace

Fields listRetFields(RequestContext&, ListRecord& r,
                     const std::unordered_map<std::string, std::int64_t>* totals) {
    Fields f;
    f.reserve(r.fields.size() + 12);
    f.emplace_back("ListID", r.listId);
    f.emplace_back("TimeCreated", qbDateTime(r.created));
    f.emplace_back("TimeModified", qbDateTime(r.modified));
    f.emplace_back("EditSequence", r.editSequence);
    f.emplace_back("Name", r.name);
    f.emplace_back("FullName", r.fullName);
    f.emplace_back("IsActive", boolText(r.active));
    if (!r.parentId.empty()) {
        f.emplace_back("ParentRef", r.parentId);
    }
    f.emplace_back("Sublevel", std::to_string(r.sublevel));
    if (r.kind == "Customer" || r.kind == "Vendor" || r.kind == "Account") {
        f.emplace_back("Balance", Decimal::fromCents(r.balanceCents).amount());
    }
    if (totals) {
        auto it = totals->find(r.fullName);
        f.emplace_back(
            "TotalBalance",
            Decimal::fromCents(it == totals->end() ? r.balanceCents : it->second).amount());
    }
    for (auto& kv : r.fields) {
        f.push_back(std::move(kv));
    }
    return f;
}

Fields txnRetFields(TxnRecord& r) {
    Fields f;
    f.reserve(r.fields.size() + 12);
    f.emplace_back("TxnID", r.txnId);
    f.emplace_back("TimeCreated", qbDateTime(r.created));
    f.emplace_back("TimeModified", qbDateTime(r.modified));
    f.emplace_back("EditSequence", r.editSequence);
    f.emplace_back("TxnNumber", std::to_string(r.txnNumber));
    f.emplace_back("TxnDate", r.txnDate.text());
    if (!r.refNumber.empty()) {
        f.emplace_back("RefNumber", r.refNumber);
    }
    if (r.type == "Invoice") {
        f.emplace_back("AppliedAmount", Decimal::fromCents(r.appliedCents).amount());
        f.emplace_back("BalanceRemaining", Decimal::fromCents(r.openCents).amount());
        f.emplace_back("IsPaid", boolText(r.openCents <= 0));
    } else if (r.type == "CreditMemo") {
        f.emplace_back("CreditRemaining", Decimal::fromCents(r.openCents).amount());
    } else if (r.type == "Bill") {
        f.emplace_back("OpenAmount", Decimal::fromCents(r.openCents).amount());
        f.emplace_back("IsPaid", boolText(r.openCents <= 0));
    } else if (r.type == "ReceivePayment") {
        f.emplace_back("UnusedPayment", Decimal::fromCents(r.openCents).amount());
        f.emplace_back("UnusedCredits", "0.00");
    }
    for (auto& kv : r.fields) {
        f.push_back(std::move(kv));
    }
    return f;
}

RsStatus handleQuery(RequestContext& ctx, const xml::Node& rq, const std::string& base,
                     std::string& body) {
    if (base == "Estimate" &&
        !preferenceOn(ctx.file, "JobsAndEstimatesPreferences/IsUsingEstimates", true)) {
        return RsStatus::error(
            3250, "This feature is not enabled or not available in this version of QuickBooks.");
    }
    if (base == "TimeTracking" && !timeTrackingOn(ctx.file)) {
        return RsStatus::error(
            3250, "This feature is not enabled or not available in this version of QuickBooks.");
    }
    if (base == "PurchaseOrder" &&
        !preferenceOn(ctx.file, "PurchasesAndVendorsPreferences/IsUsingInventory", true)) {
        return RsStatus::error(
            3250, "This feature is not enabled or not available in this version of QuickBooks.");
    }
    if (base == "Company") {
        Fields f = ctx.file.settingsUnder("Company/");
        f.insert(f.begin(), {"IsSampleCompany", ctx.file.setting("IsSampleCompany", "false")});
        writeRet(ctx, body, "CompanyRet", f, nullptr, {});
        return {};
    }
    if (base == "Preferences") {
        Fields f = ctx.file.settingsUnder("Preferences/");
        writeRet(ctx, body, "PreferencesRet", f, nullptr, {});
        return {};
    }
    if (kTxnTypes.count(base)) {
        return txnQuery(ctx, rq, base, body);
    }
    return listQuery(ctx, rq, base, body);
}

}  // namespace dorvane::qbsandbox
