// SPDX-License-Identifier: GPL-3.0-or-later
// Add requests and TxnDel: references resolved by ListID or FullName, amounts, totals and
// balances computed as QuickBooks computes them.
#include <algorithm>
#include <unordered_map>

#include "qbsandbox/engine.h"

namespace dorvane::qbsandbox {

namespace {

constexpr const char* kFeatureOff =
    "This feature is not enabled or not available in this version of QuickBooks.";

bool endsWith(std::string_view s, std::string_view tail) {
    return s.size() >= tail.size() && s.compare(s.size() - tail.size(), tail.size(), tail) == 0;
}

[[noreturn]] void failWith(int code, std::string message) {
    throw StatusFailure{RsStatus::error(code, std::move(message))};
}

struct RefTarget {
    std::string kindOrSpace;
    std::string label;
};

RefTarget refTarget(const std::string& ref, const std::string& recordKind) {
    if (ref == "ParentRef") {
        std::string space = nameSpaceOf(recordKind);
        return {space == "entity" ? recordKind : space,
                recordKind.rfind("Item", 0) == 0 ? "Item" : recordKind};
    }
    if (ref == "CustomerRef") {
        return {"Customer", "Customer"};
    }
    if (ref == "VendorRef" || ref == "PrefVendorRef" || ref == "TaxVendorRef") {
        return {"Vendor", "Vendor"};
    }
    if (ref == "EntityRef" || ref == "PayeeEntityRef" || ref == "ShipToEntityRef") {
        return {"entity", "Entity"};
    }
    if (endsWith(ref, "AccountRef")) {
        return {"account", "Account"};
    }
    if (ref == "ItemRef") {
        return {"item", "Item"};
    }
    if (ref == "ItemGroupRef") {
        return {"ItemGroup", "Item"};
    }
    if (ref == "ItemServiceRef") {
        return {"ItemService", "Item"};
    }
    if (ref == "ItemSalesTaxRef") {
        return {"ItemSalesTax", "Item"};
    }
    if (ref == "TermsRef") {
        return {"terms", "Terms"};
    }
    if (ref == "PayrollItemWageRef") {
        return {"PayrollItemWage", "Payroll Item"};
    }
    if (ref == "SalesTaxCodeRef" || ref == "CustomerSalesTaxCodeRef") {
        return {"SalesTaxCode", "Sales Tax Code"};
    }
    if (ref == "PaymentMethodRef" || ref == "PreferredPaymentMethodRef") {
        return {"PaymentMethod", "Payment Method"};
    }
    std::string kind = ref.substr(0, ref.size() - 3);
    return {kind, kind};
}

struct Collector {
    RequestContext& ctx;
    std::string recordKind;
    std::string lineOf;  // the transaction type while collecting one of its lines
    std::unordered_map<std::string, ListRecord> resolved;

    ListRecord resolve(const xml::Node& ref, const std::string& name) {
        RefTarget target = refTarget(name, recordKind);
        std::string id = ref.valueOf("ListID");
        std::string fullName = ref.valueOf("FullName");
        std::optional<ListRecord> r;
        if (!id.empty()) {
            r = ctx.file.listById(id);
            if (r && r->kind != target.kindOrSpace && nameSpaceOf(r->kind) != target.kindOrSpace) {
                r.reset();
            }
        } else if (!fullName.empty()) {
            r = ctx.file.listByName(target.kindOrSpace, fullName);
        }
        if (!r) {
            std::string value = id.empty() ? fullName : id;
            failWith(3140, "There is an invalid reference to QuickBooks " + target.label + " \"" +
                               value + "\"" +
                               (lineOf.empty() ? "" : " in the " + lineOf + " line") + ".");
        }
        return *r;
    }

    static std::string normalise(const ElementRule& rule, const std::string& value) {
        switch (rule.type) {
            case ValueType::Amount:
                return Decimal::parse(value, 2).value_or(Decimal{}).amount();
            case ValueType::Price:
            case ValueType::Percent:
                return Decimal::parse(value).value_or(Decimal{}).price();
            case ValueType::Quantity:
                return Decimal::parse(value).value_or(Decimal{}).quantity();
            case ValueType::Bool:
                return boolText(parseBool(value).value_or(false));
            case ValueType::Duration:
                return durationText(parseDuration(value).value_or(0));
            default:
                return value;
        }
    }

    // Copies the children of `node` (an aggregate described as `aggName`) into fields keyed
    // by path; line aggregates go to `lines` instead.
    void collect(const xml::Node& node, const std::string& aggName, const std::string& prefix,
                 Fields& out, std::vector<xml::Node>* lines) {
        const AggregateRule* rule = findAggregate(aggName);
        if (!rule) {
            return;
        }
        std::unordered_map<std::string, int> repeats;
        for (xml::Node child = node.firstChildElement(); child;
             child = child.nextSiblingElement()) {
            std::string name = child.name();
            auto it = std::find_if(rule->children.begin(), rule->children.end(),
                                   [&](const ElementRule& e) { return e.name == name; });
            if (it == rule->children.end()) {
                continue;
            }
            std::string key = prefix + name;
            switch (it->type) {
                case ValueType::Ref: {
                    ListRecord r = resolve(child, name);
                    setField(out, key, r.listId);
                    resolved[key] = std::move(r);
                    break;
                }
                case ValueType::Address:
                    for (xml::Node part = child.firstChildElement(); part;
                         part = part.nextSiblingElement()) {
                        setField(out, key + "/" + part.name(), part.text());
                    }
                    break;
                case ValueType::Aggregate:
                    if (lines && (endsWith(name, "LineAdd") || endsWith(name, "LineGroupAdd") ||
                                  name == "AppliedToTxnAdd")) {
                        lines->push_back(child);
                    } else if (it->repeats) {
                        int n = ++repeats[name];
                        collect(child, name, key + "#" + std::to_string(n) + "/", out, nullptr);
                    } else {
                        collect(child, name, key + "/", out, nullptr);
                    }
                    break;
                default:
                    if (it->repeats) {
                        out.emplace_back(key, normalise(*it, child.text()));
                    } else {
                        setField(out, key, normalise(*it, child.text()));
                    }
            }
        }
    }
};

std::string take(Fields& fields, std::string_view key) {
    for (auto it = fields.begin(); it != fields.end(); ++it) {
        if (it->first == key) {
            std::string v = std::move(it->second);
            fields.erase(it);
            return v;
        }
    }
    return {};
}

Decimal decimalField(const Fields& f, std::string_view key) {
    const std::string* v = findField(f, key);
    return v ? Decimal::parse(*v).value_or(Decimal{}) : Decimal{};
}

std::string firstOf(const Fields& f, std::initializer_list<const char*> keys) {
    for (const char* k : keys) {
        if (const std::string* v = findField(f, k); v && !v->empty()) {
            return *v;
        }
    }
    return {};
}

std::string salesPrice(const ListRecord& item) {
    return firstOf(item.fields, {"SalesOrPurchase/Price", "SalesAndPurchase/SalesPrice",
                                 "SalesPrice", "DiscountRate"});
}
std::string salesDesc(const ListRecord& item) {
    return firstOf(item.fields,
                   {"SalesOrPurchase/Desc", "SalesAndPurchase/SalesDesc", "SalesDesc", "ItemDesc"});
}
std::string purchaseCost(const ListRecord& item) {
    return firstOf(item.fields,
                   {"SalesAndPurchase/PurchaseCost", "PurchaseCost", "SalesOrPurchase/Price"});
}
std::string purchaseDesc(const ListRecord& item) {
    return firstOf(item.fields,
                   {"SalesAndPurchase/PurchaseDesc", "PurchaseDesc", "SalesOrPurchase/Desc"});
}

enum class LineMode { Sales, Purchase, Order };

struct LineTotals {
    Decimal total;
    Decimal taxable;
};

bool isTaxable(RequestContext& ctx, const std::string& codeId) {
    if (codeId.empty()) {
        return false;
    }
    auto code = ctx.file.listById(codeId);
    return code && fieldOr(code->fields, "IsTaxable") == "true";
}

// Completes one item line: description, rate or cost from the item, amount = quantity x rate.
void completeItemLine(RequestContext& ctx, Fields& f, const ListRecord* item, LineMode mode,
                      Decimal groupQuantity, LineTotals& totals, Decimal& sinceSubtotal) {
    const char* rateKey = mode == LineMode::Purchase ? "Cost" : "Rate";
    if (item && !findField(f, "Desc")) {
        std::string desc = mode == LineMode::Sales ? salesDesc(*item) : purchaseDesc(*item);
        if (!desc.empty()) {
            setField(f, "Desc", desc);
        }
    }
    Decimal amount;
    if (item && item->kind == "ItemSubtotal") {
        amount = sinceSubtotal;
        sinceSubtotal = Decimal{};
    } else if (const std::string* pct = findField(f, "RatePercent")) {
        amount = sinceSubtotal.times(Decimal::parse(*pct).value_or(Decimal{}))
                     .dividedBy(Decimal::fromUnits(100 * Decimal::kScale));
        if (item && item->kind == "ItemDiscount") {
            amount = amount > Decimal{} ? -amount : amount;
        }
    } else {
        std::optional<Decimal> quantity;
        if (findField(f, "Quantity")) {
            quantity = decimalField(f, "Quantity").times(groupQuantity);
            setField(f, "Quantity", quantity->quantity());
        }
        const std::string* given = findField(f, "Amount");
        std::optional<Decimal> rate;
        if (findField(f, rateKey)) {
            rate = decimalField(f, rateKey);
        } else if (given && quantity && !quantity->isZero()) {
            rate = decimalField(f, "Amount").dividedBy(*quantity);
        } else if (!given && item) {
            std::string price = mode == LineMode::Sales ? salesPrice(*item) : purchaseCost(*item);
            if (!price.empty()) {
                rate = Decimal::parse(price).value_or(Decimal{});
            }
        }
        if (rate) {
            setField(f, rateKey, rate->price());
        }
        if (given) {
            amount = decimalField(f, "Amount");
        } else if (rate) {
            amount = rate->times(quantity.value_or(Decimal::fromUnits(Decimal::kScale)));
        }
    }
    amount = amount.roundedToCents();
    setField(f, "Amount", amount.amount());
    if (mode == LineMode::Sales && item && !findField(f, "SalesTaxCodeRef")) {
        if (const std::string* code = findField(item->fields, "SalesTaxCodeRef")) {
            setField(f, "SalesTaxCodeRef", *code);
        }
    }
    if (mode == LineMode::Order) {
        setField(f, "ReceivedQuantity", "0");
        setField(f, "IsManuallyClosed", "false");
    }
    if (mode == LineMode::Sales && isTaxable(ctx, fieldOr(f, "SalesTaxCodeRef"))) {
        totals.taxable += amount;
    }
    totals.total += amount;
    sinceSubtotal += amount;
}

std::string retKind(const std::string& addName) {
    return addName.substr(0, addName.size() - 3) + "Ret";
}

// Builds the lines of a transaction from its line add elements.
LineTotals buildLines(RequestContext& ctx, const std::string& type, std::vector<xml::Node>& nodes,
                      LineMode mode, std::vector<LineRecord>& lines) {
    LineTotals totals;
    Decimal sinceSubtotal;
    int seq = 0;
    for (const auto& node : nodes) {
        std::string name = node.name();
        Collector c{ctx, "", type, {}};
        Fields f;
        c.collect(node, name, "", f, nullptr);
        if (c.resolved.count("ItemGroupRef")) {
            const ListRecord& group = c.resolved.at("ItemGroupRef");
            LineRecord g;
            g.kind = retKind(name);
            g.seq = seq++;
            Decimal quantity = findField(f, "Quantity") ? decimalField(f, "Quantity")
                                                        : Decimal::fromUnits(Decimal::kScale);
            Fields gf;
            gf.emplace_back("ItemGroupRef", group.listId);
            if (std::string desc = fieldOr(group.fields, "ItemDesc"); !desc.empty()) {
                gf.emplace_back("Desc", desc);
            }
            gf.emplace_back("Quantity", quantity.quantity());
            gf.emplace_back("IsPrintItemsInGroup",
                            fieldOr(group.fields, "IsPrintItemsInGroup", "false"));
            std::string childKind = type == "Bill" || type == "Check" || type == "CreditCardCharge"
                                        ? "ItemLineRet"
                                        : type + "LineRet";
            LineTotals groupTotals;
            std::vector<LineRecord> children;
            for (int n = 1;; ++n) {
                std::string prefix = "ItemGroupLine#" + std::to_string(n) + "/";
                const std::string* itemId = findField(group.fields, prefix + "ItemRef");
                if (!itemId) {
                    if (!findField(group.fields, prefix + "Quantity")) {
                        break;
                    }
                    continue;
                }
                auto item = ctx.file.listById(*itemId);
                LineRecord child;
                child.kind = childKind;
                child.parentSeq = g.seq;
                child.fields.emplace_back("ItemRef", *itemId);
                child.fields.emplace_back("Quantity",
                                          fieldOr(group.fields, prefix + "Quantity", "1"));
                Decimal groupSubtotal;
                completeItemLine(ctx, child.fields, item ? &*item : nullptr, mode, quantity,
                                 groupTotals, groupSubtotal);
                children.push_back(std::move(child));
            }
            gf.emplace_back("TotalAmount", groupTotals.total.amount());
            g.fields = std::move(gf);
            lines.push_back(std::move(g));
            for (auto& child : children) {
                child.seq = seq++;
                lines.push_back(std::move(child));
            }
            totals.total += groupTotals.total;
            totals.taxable += groupTotals.taxable;
            sinceSubtotal += groupTotals.total;
            continue;
        }
        LineRecord line;
        line.kind = retKind(name);
        line.seq = seq++;
        if (name == "ExpenseLineAdd") {
            Decimal amount = decimalField(f, "Amount");
            setField(f, "Amount", amount.amount());
            totals.total += amount;
        } else {
            auto it = c.resolved.find("ItemRef");
            completeItemLine(ctx, f, it == c.resolved.end() ? nullptr : &it->second, mode,
                             Decimal::fromUnits(Decimal::kScale), totals, sinceSubtotal);
        }
        line.fields = std::move(f);
        lines.push_back(std::move(line));
    }
    return totals;
}

std::string accountOfType(RequestContext& ctx, const char* accountType,
                          const char* preferredName = nullptr) {
    if (preferredName) {
        if (auto r = ctx.file.listByName("account", preferredName)) {
            return r->listId;
        }
    }
    auto r = ctx.file.firstListOfKind("Account", "AccountType", accountType);
    return r ? r->listId : std::string();
}

Date dueDate(RequestContext& ctx, Date txnDate, const std::string& termsId, int fallbackDays) {
    if (!termsId.empty()) {
        if (auto terms = ctx.file.listById(termsId)) {
            if (terms->kind == "StandardTerms") {
                return txnDate.plusDays(std::stoi(fieldOr(terms->fields, "StdDueDays", "0")));
            }
            int day = std::stoi(fieldOr(terms->fields, "DayOfMonthDue", "1"));
            int y, m, d;
            addMonths(txnDate, 1).ymd(y, m, d);
            return Date::fromYmd(y, m, std::min(day, daysInMonth(y, m)));
        }
    }
    return txnDate.plusDays(fallbackDays);
}

std::string nextRefNumber(RequestContext& ctx, const std::string& type) {
    std::string key = "counter/ref/" + type;
    std::int64_t n = std::stoll(ctx.file.setting(key, "1"));
    ctx.file.setSetting(key, std::to_string(n + 1));
    return std::to_string(n);
}

void copyPrefix(const Fields& from, const std::string& fromPrefix, Fields& to,
                const std::string& toPrefix) {
    for (const auto& [k, v] : from) {
        if (k.compare(0, fromPrefix.size(), fromPrefix) == 0) {
            setField(to, toPrefix + k.substr(fromPrefix.size()), v);
        }
    }
}

// --- lists -----------------------------------------------------------------------------------

RsStatus addList(RequestContext& ctx, const xml::Node& add, const std::string& kind,
                 std::string& body) {
    Collector c{ctx, kind, "", {}};
    Fields f;
    c.collect(add, kind + "Add", "", f, nullptr);
    ListRecord r;
    r.kind = kind;
    if (kind == "Employee") {
        std::string name;
        for (const char* part : {"FirstName", "MiddleName", "LastName"}) {
            if (std::string v = fieldOr(f, part); !v.empty()) {
                name += (name.empty() ? "" : " ") + v;
            }
        }
        if (name.empty()) {
            failWith(3150, "There is a missing element: \"FirstName\".");
        }
        r.name = name;
    } else {
        r.name = take(f, "Name");
    }
    if (r.name.find(':') != std::string::npos) {
        failWith(3180, "There was an error when saving a " + kind +
                           " list, element \"Name\". "
                           "QuickBooks error message: The name may not contain a colon.");
    }
    r.active = take(f, "IsActive") != "false";
    r.fullName = r.name;
    if (std::string parent = take(f, "ParentRef"); !parent.empty()) {
        const ListRecord& p = c.resolved.at("ParentRef");
        r.parentId = parent;
        r.fullName = p.fullName + ":" + r.name;
        r.sublevel = p.sublevel + 1;
    }
    if (ctx.file.listByName(nameSpaceOf(kind), r.fullName)) {
        failWith(3100, "The name \"" + r.fullName + "\" of the list element is already in use.");
    }
    r.balanceCents = Decimal::parse(take(f, "OpenBalance"), 2).value_or(Decimal{}).cents();
    take(f, "OpenBalanceDate");
    if (kind == "Customer" && !findField(f, "JobStatus")) {
        f.emplace_back("JobStatus", "None");
    }
    r.fields = std::move(f);
    ctx.file.insertList(r);
    ctx.forgetNames();
    Fields out = listRetFields(ctx, r, nullptr);
    if (kind == "Customer" || kind == "Account") {
        out.emplace_back("TotalBalance", Decimal::fromCents(r.balanceCents).amount());
    }
    writeRet(ctx, body, kind + "Ret", out, nullptr, {});
    return {};
}

// --- transactions ----------------------------------------------------------------------------

void applyPayment(RequestContext& ctx, const std::string& customerId,
                  std::vector<xml::Node>& applied, bool autoApply, std::int64_t totalCents,
                  std::vector<std::pair<std::string, std::int64_t>>& applications) {
    if (autoApply) {
        auto s = ctx.file.prepare(
            "SELECT txn_id, open_amount FROM txns WHERE type = 'Invoice' AND entity_id = ? AND "
            "open_amount > 0 ORDER BY txn_date, id");
        s.bind(1, customerId);
        std::int64_t left = totalCents;
        while (left > 0 && s.step()) {
            std::int64_t amount = std::min(left, s.integer(1));
            applications.emplace_back(s.text(0), amount);
            left -= amount;
        }
        return;
    }
    for (const auto& node : applied) {
        std::string txnId = node.valueOf("TxnID");
        auto invoice = ctx.file.txnById(txnId, false);
        if (!invoice || invoice->type != "Invoice" || invoice->entityId != customerId) {
            failWith(3120, "Object \"" + txnId + "\" specified in the request cannot be found.");
        }
        std::string amountText = node.valueOf("PaymentAmount");
        std::int64_t amount = amountText.empty()
                                  ? invoice->openCents
                                  : Decimal::parse(amountText, 2).value_or(Decimal{}).cents();
        applications.emplace_back(txnId, amount);
    }
}

// Fills `key` unless the request gave it.
void setDefault(Fields& f, std::string_view key, std::string value) {
    if (!findField(f, key)) {
        setField(f, key, std::move(value));
    }
}

// Takes `key` from the referenced record (a customer's terms, say) unless the request gave it.
void inherit(Fields& f, std::string_view key, const ListRecord* from) {
    if (findField(f, key) || !from) {
        return;
    }
    if (const std::string* value = findField(from->fields, key)) {
        setField(f, key, *value);
    }
}

struct Effect {
    std::string listId;
    std::int64_t delta;
};

// One transaction add while it is being built: the request's fields with their references
// resolved, the line elements still to build and what saving it changes elsewhere.
struct TxnAdd {
    RequestContext& ctx;
    Collector& refs;
    Fields& f;
    std::vector<xml::Node>& lineNodes;
    TxnRecord& t;
    std::vector<Effect> effects;
    std::vector<std::pair<std::string, std::int64_t>> applications;  // invoice, cents

    const ListRecord* resolved(const char* ref) const {
        auto it = refs.resolved.find(ref);
        return it == refs.resolved.end() ? nullptr : &it->second;
    }
    LineTotals buildLines(LineMode mode) {
        return qbsandbox::buildLines(ctx, t.type, lineNodes, mode, t.lines);
    }
    void assignRefNumber() {
        if (t.refNumber.empty()) {
            t.refNumber = nextRefNumber(ctx, t.type);
        }
    }
    // The transaction's own total on its name and on the account it posts to.
    void post(std::int64_t cents) {
        effects.push_back({t.entityId, cents});
        effects.push_back({t.accountId, cents});
    }
};

// Invoices and credit memos: receivables with terms and a due date.
void receivableDefaults(TxnAdd& a, const ListRecord* customer) {
    Fields& f = a.f;
    setDefault(f, "ARAccountRef", accountOfType(a.ctx, "AccountsReceivable"));
    a.t.accountId = fieldOr(f, "ARAccountRef");
    inherit(f, "TermsRef", customer);
    if (!findField(f, "DueDate")) {
        setField(f, "DueDate", dueDate(a.ctx, a.t.txnDate, fieldOr(f, "TermsRef"), 0).text());
    }
    setDefault(f, "IsPending", "false");
    if (a.t.type == "Invoice") {
        setField(f, "IsFinanceCharge", "false");
    }
}

// The customer's sales tax item at its rate, on the taxable lines.
Decimal salesTax(TxnAdd& a, const ListRecord* customer, Decimal taxable) {
    inherit(a.f, "ItemSalesTaxRef", customer);
    Decimal tax;
    if (const std::string* taxItemId = findField(a.f, "ItemSalesTaxRef")) {
        if (auto taxItem = a.ctx.file.listById(*taxItemId)) {
            Decimal rate = decimalField(taxItem->fields, "TaxRate");
            setField(a.f, "SalesTaxPercentage", rate.price());
            tax = taxable.times(rate)
                      .dividedBy(Decimal::fromUnits(100 * Decimal::kScale))
                      .roundedToCents();
        }
    }
    return tax;
}

// Invoice, SalesReceipt, Estimate, CreditMemo.
void addSale(TxnAdd& a) {
    const std::string& type = a.t.type;
    Fields& f = a.f;
    const ListRecord* customer = a.resolved("CustomerRef");
    if (type == "Estimate" &&
        !preferenceOn(a.ctx.file, "JobsAndEstimatesPreferences/IsUsingEstimates", true)) {
        failWith(3250, kFeatureOff);
    }
    a.assignRefNumber();
    LineTotals totals = a.buildLines(LineMode::Sales);
    if (customer) {
        a.t.entityId = customer->listId;
        if (!findField(f, "BillAddress/Addr1")) {
            copyPrefix(customer->fields, "BillAddress/", f, "BillAddress/");
        }
    }
    if (type == "Invoice" || type == "CreditMemo") {
        receivableDefaults(a, customer);
    } else if (type == "Estimate") {
        if (a.ctx.version >= 30) {
            setDefault(f, "IsActive", "true");
        }
    } else {
        setDefault(f, "DepositToAccountRef",
                   accountOfType(a.ctx, "OtherCurrentAsset", "Undeposited Funds"));
        a.t.accountId = fieldOr(f, "DepositToAccountRef");
    }
    Decimal tax = salesTax(a, customer, totals.taxable);
    setField(f, "Subtotal", totals.total.amount());
    setField(f, "SalesTaxTotal", tax.amount());
    Decimal total = totals.total + tax;
    a.t.totalCents = total.cents();
    if (type != "Invoice") {
        setField(f, "TotalAmount", total.amount());
    }
    if (type == "Invoice" || type == "CreditMemo") {
        a.t.openCents = a.t.totalCents;
        a.post(type == "Invoice" ? a.t.totalCents : -a.t.totalCents);
    } else if (type == "SalesReceipt") {
        a.effects.push_back({a.t.accountId, a.t.totalCents});
    }
    if (type != "Estimate") {
        setDefault(f, "IsToBePrinted", "false");
    }
    if (a.ctx.version >= 60) {
        setDefault(f, "IsToBeEmailed", "false");
    }
}

void addPurchaseOrder(TxnAdd& a) {
    Fields& f = a.f;
    LineTotals totals = a.buildLines(LineMode::Order);
    a.t.entityId = fieldOr(f, "VendorRef");
    if (const ListRecord* vendor = a.resolved("VendorRef");
        vendor && !findField(f, "VendorAddress/Addr1")) {
        copyPrefix(vendor->fields, "VendorAddress/", f, "VendorAddress/");
    }
    a.assignRefNumber();
    setField(f, "TotalAmount", totals.total.amount());
    setField(f, "IsManuallyClosed", "false");
    setField(f, "IsFullyReceived", "false");
    setDefault(f, "IsToBePrinted", "false");
    a.t.totalCents = totals.total.cents();
}

void billDefaults(TxnAdd& a, const LineTotals& totals) {
    Fields& f = a.f;
    const ListRecord& vendor = a.refs.resolved.at("VendorRef");
    a.t.entityId = vendor.listId;
    setDefault(f, "APAccountRef", accountOfType(a.ctx, "AccountsPayable"));
    a.t.accountId = fieldOr(f, "APAccountRef");
    inherit(f, "TermsRef", &vendor);
    if (!findField(f, "DueDate")) {
        int days = std::stoi(
            a.ctx.file.setting("Preferences/PurchasesAndVendorsPreferences/DaysBillsAreDue", "10"));
        setField(f, "DueDate", dueDate(a.ctx, a.t.txnDate, fieldOr(f, "TermsRef"), days).text());
    }
    setField(f, "AmountDue", totals.total.amount());
    a.t.openCents = a.t.totalCents;
    a.post(a.t.totalCents);
}

// Bill, Check, CreditCardCharge: expense and item lines.
void addPurchase(TxnAdd& a) {
    LineTotals totals = a.buildLines(LineMode::Purchase);
    a.t.totalCents = totals.total.cents();
    if (a.t.type == "Bill") {
        billDefaults(a, totals);
    } else {
        a.t.entityId = fieldOr(a.f, "PayeeEntityRef");
        a.t.accountId = fieldOr(a.f, "AccountRef");
        setField(a.f, "Amount", totals.total.amount());
        if (a.t.type == "Check") {
            setDefault(a.f, "IsToBePrinted", "false");
            a.effects.push_back({a.t.accountId, -a.t.totalCents});
        } else {
            a.effects.push_back({a.t.accountId, a.t.totalCents});
        }
    }
    for (const auto& line : a.t.lines) {
        if (line.kind == "ExpenseLineRet") {
            a.effects.push_back(
                {fieldOr(line.fields, "AccountRef"), decimalField(line.fields, "Amount").cents()});
        }
    }
}

void addPayment(TxnAdd& a) {
    Fields& f = a.f;
    TxnRecord& t = a.t;
    t.entityId = fieldOr(f, "CustomerRef");
    setDefault(f, "ARAccountRef", accountOfType(a.ctx, "AccountsReceivable"));
    setDefault(f, "DepositToAccountRef",
               accountOfType(a.ctx, "OtherCurrentAsset", "Undeposited Funds"));
    t.accountId = fieldOr(f, "ARAccountRef");
    bool autoApply = take(f, "IsAutoApply") == "true";
    std::int64_t total = Decimal::parse(fieldOr(f, "TotalAmount"), 2).value_or(Decimal{}).cents();
    applyPayment(a.ctx, t.entityId, a.lineNodes, autoApply, total, a.applications);
    std::int64_t appliedSum = 0;
    for (const auto& applied : a.applications) {
        appliedSum += applied.second;
    }
    if (!findField(f, "TotalAmount")) {
        total = appliedSum;
    }
    if (appliedSum > total) {
        failWith(3180,
                 "There was an error when saving a ReceivePayment, element \"TotalAmount\". "
                 "QuickBooks error message: The payments applied exceed the amount received.");
    }
    setField(f, "TotalAmount", Decimal::fromCents(total).amount());
    t.totalCents = total;
    t.openCents = total - appliedSum;
    int seq = 0;
    for (const auto& [invoiceId, amount] : a.applications) {
        auto invoice = a.ctx.file.txnById(invoiceId, false);
        LineRecord l;
        l.kind = "AppliedToTxnRet";
        l.lineId = invoiceId;
        l.seq = seq++;
        l.fields = {{"TxnID", invoiceId},
                    {"TxnType", "Invoice"},
                    {"TxnDate", invoice->txnDate.text()},
                    {"RefNumber", invoice->refNumber},
                    {"BalanceRemaining", Decimal::fromCents(invoice->openCents - amount).amount()},
                    {"Amount", Decimal::fromCents(amount).amount()}};
        t.lines.push_back(std::move(l));
    }
    a.post(-total);
    a.effects.push_back({fieldOr(f, "DepositToAccountRef"), total});
}

void addTimeEntry(TxnAdd& a) {
    Fields& f = a.f;
    if (!timeTrackingOn(a.ctx.file)) {
        failWith(3250, kFeatureOff);
    }
    a.t.entityId = fieldOr(f, "EntityRef");
    const ListRecord& entity = a.refs.resolved.at("EntityRef");
    if (entity.kind == "Customer") {
        failWith(3140,
                 "There is an invalid reference to QuickBooks Entity \"" + entity.fullName + "\".");
    }
    bool billable = take(f, "IsBillable") == "true";
    std::string status = take(f, "BillableStatus");
    if (status.empty()) {
        status = billable ? "Billable" : "NotBillable";
    }
    if (status == "Billable") {
        for (const char* needed : {"CustomerRef", "ItemServiceRef"}) {
            if (!findField(f, needed)) {
                failWith(3150, std::string("There is a missing element: \"") + needed + "\".");
            }
        }
    }
    take(f, "Rate");
    // Stored in both forms; each version of the answer shows its own.
    f.emplace_back("IsBillable", boolText(status == "Billable"));
    f.emplace_back("IsBilled", boolText(status == "HasBeenBilled"));
    f.emplace_back("BillableStatus", status);
}

using TxnHandler = void (*)(TxnAdd&);
const std::unordered_map<std::string_view, TxnHandler> kTxnHandlers = {
    {"Invoice", addSale},
    {"SalesReceipt", addSale},
    {"Estimate", addSale},
    {"CreditMemo", addSale},
    {"PurchaseOrder", addPurchaseOrder},
    {"Bill", addPurchase},
    {"Check", addPurchase},
    {"CreditCardCharge", addPurchase},
    {"ReceivePayment", addPayment},
    {"TimeTracking", addTimeEntry},
};

// A payment's amount comes off each invoice it pays, and the invoice links to it.
void linkApplications(RequestContext& ctx, const TxnRecord& payment,
                      const std::vector<std::pair<std::string, std::int64_t>>& applications) {
    for (const auto& [invoiceId, amount] : applications) {
        ctx.file.adjustTxnOpen(invoiceId, -amount, -amount, payment.rowid);
        auto invoice = ctx.file.txnById(invoiceId, false);
        int n = 1;
        while (findField(invoice->fields, "LinkedTxn#" + std::to_string(n) + "/TxnID")) {
            ++n;
        }
        std::string p = "LinkedTxn#" + std::to_string(n) + "/";
        invoice->fields.emplace_back(p + "TxnID", payment.txnId);
        invoice->fields.emplace_back(p + "TxnType", "ReceivePayment");
        invoice->fields.emplace_back(p + "TxnDate", payment.txnDate.text());
        if (!payment.refNumber.empty()) {
            invoice->fields.emplace_back(p + "RefNumber", payment.refNumber);
        }
        invoice->fields.emplace_back(p + "LinkType", "AMTTYPE");
        invoice->fields.emplace_back(p + "Amount", Decimal::fromCents(-amount).amount());
        ctx.file.updateTxnFields(*invoice);
    }
}

RsStatus addTxn(RequestContext& ctx, const xml::Node& add, const std::string& type,
                std::string& body) {
    Collector c{ctx, type, "", {}};
    Fields f;
    std::vector<xml::Node> lineNodes;
    c.collect(add, type + "Add", "", f, &lineNodes);
    TxnRecord t;
    t.type = type;
    t.txnDate = Date::parse(take(f, "TxnDate")).value_or(ctx.today);
    t.refNumber = take(f, "RefNumber");
    std::int64_t now = ctx.file.now();
    t.created = now;
    t.txnId = ctx.file.newTxnId(now);

    TxnAdd a{ctx, c, f, lineNodes, t, {}, {}};
    if (auto handler = kTxnHandlers.find(type); handler != kTxnHandlers.end()) {
        handler->second(a);
    }

    t.fields = std::move(f);
    ctx.file.insertTxn(t);
    for (const auto& e : a.effects) {
        ctx.file.adjustListBalance(e.listId, e.delta, t.rowid);
    }
    linkApplications(ctx, t, a.applications);
    Fields out = txnRetFields(t);
    writeRet(ctx, body, type + "Ret", out, &t.lines, {true, false});
    return {};
}

}  // namespace

RsStatus handleAdd(RequestContext& ctx, const xml::Node& rq, const std::string& base,
                   std::string& body) {
    xml::Node add = rq.firstChildElement(base + "Add");
    static const std::set<std::string, std::less<>> lists = {
        "Account",   "ItemService", "ItemNonInventory", "ItemOtherCharge",
        "ItemGroup", "Vendor",      "Customer",         "Employee"};
    if (base == "PurchaseOrder" &&
        !preferenceOn(ctx.file, "PurchasesAndVendorsPreferences/IsUsingInventory", true)) {
        return RsStatus::error(3250, kFeatureOff);
    }
    if (lists.count(base)) {
        return addList(ctx, add, base, body);
    }
    return addTxn(ctx, add, base, body);
}

RsStatus handleTxnDel(RequestContext& ctx, const xml::Node& rq, std::string& body) {
    std::string type = rq.valueOf("TxnDelType");
    std::string txnId = rq.valueOf("TxnID");
    if (!ctx.file.deleteTxn(type, txnId)) {
        return RsStatus::error(
            3120, "Object \"" + txnId + "\" specified in the request cannot be found.");
    }
    // Links other transactions keep to the deleted one go with it.
    auto s = ctx.file.prepare("SELECT txn_id FROM txns WHERE instr(fields, ?) > 0");
    s.bind(1, txnId);
    std::vector<std::string> linked;
    while (s.step()) {
        linked.push_back(s.text(0));
    }
    for (const auto& id : linked) {
        auto other = ctx.file.txnById(id, false);
        Fields kept;
        std::vector<std::string> dropPrefixes;
        for (const auto& [k, v] : other->fields) {
            if (k.rfind("LinkedTxn#", 0) == 0 && endsWith(k, "/TxnID") && v == txnId) {
                dropPrefixes.push_back(k.substr(0, k.size() - 5));
            }
        }
        for (auto& kv : other->fields) {
            bool drop =
                std::any_of(dropPrefixes.begin(), dropPrefixes.end(),
                            [&](const std::string& p) { return kv.first.rfind(p, 0) == 0; });
            if (!drop) {
                kept.push_back(std::move(kv));
            }
        }
        other->fields = std::move(kept);
        ctx.file.updateTxnFields(*other);
    }
    ResponseWriter w(body);
    w.leaf("TxnDelType", type);
    w.leaf("TxnID", txnId);
    w.leaf("TimeDeleted", qbDateTime(ctx.file.now()));
    return {};
}

}  // namespace dorvane::qbsandbox
