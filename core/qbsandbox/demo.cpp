// SPDX-License-Identifier: GPL-3.0-or-later
#include "qbsandbox/demo.h"

#include <algorithm>
#include <functional>
#include <tuple>
#include <vector>

#include "qbsandbox/companyfile.h"
#include "qbsandbox/datemacro.h"
#include "qbsandbox/demodata.h"
#include "qbsandbox/engine.h"

namespace dorvane::qbsandbox {

namespace {

struct Rng {
    std::uint32_t state;
    std::uint32_t next() {
        state = state * 1664525u + 1013904223u;
        return state >> 8;
    }
    int range(int lo, int hi) {
        return lo + static_cast<int>(next() % static_cast<std::uint32_t>(hi - lo + 1));
    }
    bool chance(int percent) { return range(1, 100) <= percent; }
    template <class T>
    const T& pick(const std::vector<T>& v) {
        return v[next() % v.size()];
    }
};

std::string esc(std::string_view s) {
    std::string out;
    appendEscaped(out, s);
    return out;
}

ListRecord addList(CompanyFile& file, const std::string& kind, const std::string& name,
                   Fields fields, const std::string& parentFullName = {}, bool active = true) {
    ListRecord r;
    r.kind = kind;
    r.name = name;
    r.fullName = name;
    r.active = active;
    if (!parentFullName.empty()) {
        auto parent = file.listByName(nameSpaceOf(kind) == "entity" ? kind : nameSpaceOf(kind),
                                      parentFullName);
        if (parent) {
            r.parentId = parent->listId;
            r.fullName = parent->fullName + ":" + name;
            r.sublevel = parent->sublevel + 1;
        }
    }
    r.fields = std::move(fields);
    file.insertList(r);
    return r;
}

std::string idOf(CompanyFile& file, const std::string& space, const std::string& name) {
    auto r = file.listByName(space, name);
    return r ? r->listId : std::string();
}

std::string valueOf(CompanyFile& file, const demodata::Field& f) {
    return f.space ? idOf(file, f.space, f.value) : std::string(f.value);
}

void writeSettings(CompanyFile& file, const std::vector<demodata::Field>& settings) {
    for (const auto& s : settings) {
        file.setSetting(s.key, valueOf(file, s));
    }
}

void writeLists(CompanyFile& file, const std::vector<demodata::ListEntry>& entries) {
    for (const auto& e : entries) {
        Fields fields;
        for (const auto& f : e.fields) {
            fields.emplace_back(f.key, valueOf(file, f));
        }
        ListRecord r =
            addList(file, e.kind, e.name, std::move(fields), e.parent ? e.parent : "", e.active);
        file.adjustListBalance(r.listId, e.balanceCents, 0);
    }
}

void setDefaults(CompanyFile& file, const std::string& companyName, bool demo) {
    file.setSetting("IsSampleCompany", demo ? "true" : "false");
    file.setSetting("Company/CompanyName", companyName);
    file.setSetting("Company/LegalCompanyName", companyName + (demo ? " LLC" : ""));
    file.setSetting("Company/FirstMonthFiscalYear", "January");
    file.setSetting("Company/FirstMonthIncomeTaxYear", "January");
    // A new company file knows its name only; the demo company is a whole business.
    if (demo) {
        writeSettings(file, demodata::kCompanyIdentity);
    }
    writeSettings(file, demodata::kPreferences);
    writeLists(file, demodata::kStartingLists);
}

// Runs one qbXML message of adds; a refused add is a bug in the generator.
void run(CompanyFile& file, const std::string& requests) {
    if (requests.empty()) {
        return;
    }
    std::string message =
        "<?xml version=\"1.0\"?>\n<?qbxml version=\"13.0\"?>\n<QBXML>\n"
        "<QBXMLMsgsRq onError=\"stopOnError\">\n" +
        requests + "</QBXMLMsgsRq>\n</QBXML>\n";
    std::string trace;
    auto answer = answerMessage(file, message, &trace);
    if (!answer) {
        throw CompanyFileError("demo request refused: " + answer.error().description + " " + trace);
    }
    auto bad = answer->find("statusSeverity=\"Error\"");
    if (bad != std::string::npos) {
        auto start = answer->rfind('<', bad);
        throw CompanyFileError("demo request failed: " + answer->substr(start, 300));
    }
}

std::string ref(const char* element, const std::string& fullName) {
    return "<" + std::string(element) + "><FullName>" + esc(fullName) + "</FullName></" + element +
           ">";
}

std::string lower(std::string s) {
    std::transform(s.begin(), s.end(), s.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    s.erase(std::remove_if(s.begin(), s.end(),
                           [](char c) { return !std::isalnum(static_cast<unsigned char>(c)); }),
            s.end());
    return s;
}

// The demo company's generator: one random sequence and one clock, so that the same options
// and the same day give the same company.
struct DemoWriter {
    CompanyFile& file;
    Rng rng;
    Date now;
    Date start;  // a year before this fiscal year began

    Date dateIn(int minDaysAgo = 0) {
        std::int64_t span = now.days - start.days;
        return Date{start.days +
                    rng.range(0, static_cast<int>(std::max<std::int64_t>(0, span - minDaysAgo)))};
    }
    // A day of the current week, `back` days ago at most.
    Date thisWeek(std::int64_t back) const {
        return now.plusDays(-std::min<std::int64_t>(back, now.weekday()));
    }

    void materials() {
        std::string tax = idOf(file, "SalesTaxCode", "Tax");
        std::string income = idOf(file, "account", "Materials Income");
        std::string cogs = idOf(file, "account", "Cost of Goods Sold");
        std::string jobExpenses = idOf(file, "account", "Job Expenses");
        std::string asset = idOf(file, "account", "Inventory Asset");
        for (const auto& m : demodata::kMaterials) {
            if (!m.inventory) {
                addList(file, "ItemNonInventory", m.name,
                        {{"SalesTaxCodeRef", tax},
                         {"SalesAndPurchase/SalesDesc", m.desc},
                         {"SalesAndPurchase/SalesPrice", m.price},
                         {"SalesAndPurchase/IncomeAccountRef", income},
                         {"SalesAndPurchase/PurchaseDesc", m.desc},
                         {"SalesAndPurchase/PurchaseCost", m.cost},
                         {"SalesAndPurchase/ExpenseAccountRef", jobExpenses}});
                continue;
            }
            addList(file, "ItemInventory", m.name,
                    {{"SalesTaxCodeRef", tax},
                     {"SalesDesc", m.desc},
                     {"SalesPrice", m.price},
                     {"IncomeAccountRef", income},
                     {"PurchaseDesc", m.desc},
                     {"PurchaseCost", m.cost},
                     {"COGSAccountRef", cogs},
                     {"AssetAccountRef", asset},
                     {"ReorderPoint", "5"},
                     {"QuantityOnHand", std::to_string(rng.range(0, 60))},
                     {"AverageCost", m.cost},
                     {"QuantityOnOrder", "0"},
                     {"QuantityOnSalesOrder", "0"}});
        }
    }

    void vendors() {
        const auto& streets = demodata::kStreets;
        const auto& cities = demodata::kCities;
        for (std::size_t i = 0; i < demodata::kVendorNames.size(); ++i) {
            const std::string& v = demodata::kVendorNames[i];
            Fields f = {{"CompanyName", v},
                        {"VendorAddress/Addr1", v},
                        {"VendorAddress/Addr2",
                         std::to_string(100 + i * 17) + " " + streets[i % streets.size()]},
                        {"VendorAddress/City", cities[i % cities.size()]},
                        {"VendorAddress/State", "CA"},
                        {"VendorAddress/PostalCode", "94" + std::to_string(100 + i * 7)},
                        {"Phone", "650-555-" + std::to_string(1000 + i * 37)}};
            if (i % 3 != 2) {
                f.emplace_back("Email", "billing." + lower(v) + "@" + demodata::kDomains[i % 3]);
            }
            f.emplace_back("NameOnCheck", v);
            f.emplace_back("TermsRef", idOf(file, "terms", i % 2 ? "Net 30" : "Net 15"));
            f.emplace_back("IsVendorEligibleFor1099", i % 4 == 0 ? "true" : "false");
            addList(file, "Vendor", v, std::move(f));
        }
    }

    void employees() {
        const auto& streets = demodata::kStreets;
        const auto& cities = demodata::kCities;
        for (int i = 0; i < static_cast<int>(demodata::kEmployees.size()); ++i) {
            const auto& e = demodata::kEmployees[static_cast<std::size_t>(i)];
            auto at = static_cast<std::size_t>(i);
            std::string name = std::string(e.first) + " " + e.last;
            Fields f = {{"FirstName", e.first},
                        {"LastName", e.last},
                        {"EmployeeAddress/Addr1",
                         std::to_string(20 + i * 11) + " " + streets[at % streets.size()]},
                        {"EmployeeAddress/City", cities[at % cities.size()]},
                        {"EmployeeAddress/State", "CA"},
                        {"EmployeeAddress/PostalCode", "94" + std::to_string(300 + i)},
                        {"PrintAs", name},
                        {"Phone", "650-555-" + std::to_string(2000 + i)}};
            if (i != 3) {
                f.emplace_back("Email", lower(e.first) + "." + lower(e.last) + "@example.com");
            }
            f.emplace_back("EmployeeType", e.type);
            f.emplace_back("HiredDate", addMonths(now, -(14 + i * 5)).text());
            addList(file, "Employee", name, std::move(f), "", i != 5);
        }
    }

    // Customers and jobs, `count` together.
    void customers(int count) {
        using demodata::kCities;
        using demodata::kCompanies;
        using demodata::kFirstNames;
        using demodata::kJobs;
        using demodata::kLastNames;
        using demodata::kStreets;
        std::string tax = idOf(file, "SalesTaxCode", "Tax");
        std::string non = idOf(file, "SalesTaxCode", "Non");
        int jobs = std::max(1, count * 14 / 50);
        int parents = std::max(1, count - jobs);
        std::vector<std::string> parentNames;
        for (int i = 0; i < parents; ++i) {
            auto at = static_cast<std::size_t>(i);
            bool company = i % 4 == 1 && static_cast<std::size_t>(i / 4) < kCompanies.size();
            std::string first = kFirstNames[at % kFirstNames.size()];
            std::string last = kLastNames[(at * 7 + 3) % kLastNames.size()];
            std::string name =
                company ? kCompanies[static_cast<std::size_t>(i / 4)] : last + ", " + first;
            if (i >= static_cast<int>(kFirstNames.size() * 2)) {
                name += " " + std::to_string(i);
            }
            Fields f;
            if (company) {
                f.emplace_back("CompanyName", name);
            } else {
                f.emplace_back("FirstName", first);
                f.emplace_back("LastName", last);
            }
            f.emplace_back("BillAddress/Addr1", company ? name : first + " " + last);
            f.emplace_back("BillAddress/Addr2",
                           std::to_string(100 + i * 13) + " " + kStreets[at % kStreets.size()]);
            f.emplace_back("BillAddress/City", kCities[at % kCities.size()]);
            f.emplace_back("BillAddress/State", "CA");
            f.emplace_back("BillAddress/PostalCode", "94" + std::to_string(400 + i % 500));
            f.emplace_back("Phone", "650-555-" + std::to_string(3000 + i));
            if (i % 5 != 3) {
                f.emplace_back("Email", (company ? "accounts." + lower(name)
                                                 : lower(first) + "." + lower(last)) +
                                            "@" + demodata::kDomains[at % 3]);
            }
            f.emplace_back("Contact", first + " " + last);
            f.emplace_back("TermsRef",
                           idOf(file, "terms", i % 3 == 0 ? "Due on receipt" : "Net 30"));
            f.emplace_back("SalesTaxCodeRef", i % 2 ? tax : non);
            if (i % 2) {
                f.emplace_back("ItemSalesTaxRef", idOf(file, "item", "State Tax"));
            }
            f.emplace_back("JobStatus", "None");
            addList(file, "Customer", name, std::move(f), "", i % 11 != 7);
            parentNames.push_back(name);
        }
        for (int j = 0; j < jobs; ++j) {
            const std::string& parent =
                parentNames[static_cast<std::size_t>(j * 3) % parentNames.size()];
            std::string job = kJobs[static_cast<std::size_t>(j) % kJobs.size()];
            if (j >= static_cast<int>(kJobs.size())) {
                job += " " + std::to_string(j / kJobs.size() + 1);
            }
            if (file.listByName("entity", parent + ":" + job)) {
                job += " " + std::to_string(j);
            }
            auto p = file.listByName("entity", parent);
            Fields f;
            for (const auto& [k, v] : p->fields) {
                if (k.rfind("BillAddress/", 0) == 0 || k == "Email" || k == "Phone" ||
                    k == "TermsRef" || k == "SalesTaxCodeRef" || k == "ItemSalesTaxRef") {
                    f.emplace_back(k, v);
                }
            }
            f.emplace_back("JobStatus", demodata::kJobStatuses[static_cast<std::size_t>(j % 4)]);
            f.emplace_back("JobStartDate", dateIn(60).text());
            f.emplace_back("JobDesc", job);
            addList(file, "Customer", job, std::move(f), parent, true);
        }
    }

    void lists(int customerCount) {
        CompanyFile::Transaction t(file);
        setDefaults(file, demodata::kCompanyName, true);
        writeLists(file, demodata::kLists);
        file.adjustListBalance(idOf(file, "account", "Checking"), demodata::kCheckingBalanceCents,
                               0);
        materials();
        writeLists(file, demodata::kMoreItems);
        vendors();
        writeLists(file, demodata::kSalesTaxItems);
        writeSettings(file, demodata::kSalesTaxPreferences);
        employees();
        writeLists(file, demodata::kOtherNames);
        customers(customerCount);
        t.commit();
    }

    std::vector<std::string> customerNames{};  // the active ones
    std::vector<std::string> buyers{};         // those who buy on account

    std::string salesLines(const char* lineTag, const char* groupTag, bool allowGroup) {
        std::string lines;
        int count = rng.range(1, 3);
        for (int l = 0; l < count; ++l) {
            lines += std::string("<") + lineTag + ">" +
                     ref("ItemRef", rng.pick(demodata::kSaleItems)) + "<Quantity>" +
                     std::to_string(rng.range(1, 12)) + "</Quantity></" + lineTag + ">";
        }
        if (allowGroup && rng.chance(12)) {
            lines += std::string("<") + groupTag + ">" +
                     ref("ItemGroupRef", rng.chance(50) ? "Spring Package" : "Fountain Kit") +
                     "<Quantity>1</Quantity></" + groupTag + ">";
        }
        return lines;
    }

    // Runs `n` requests made by `one`, a few messages at most.
    void batch(int n, const std::function<std::string(int)>& one) {
        std::string requests;
        for (int i = 0; i < n; ++i) {
            requests += one(i);
            if (requests.size() > 2000000) {
                run(file, requests);
                requests.clear();
            }
        }
        run(file, requests);
    }

    void findCustomers() {
        auto s = file.prepare(
            "SELECT full_name FROM lists WHERE kind = 'Customer' AND is_active = 1 ORDER BY id");
        while (s.step()) {
            customerNames.push_back(s.text(0));
        }
        // Every third customer keeps a zero balance: no sales on account.
        for (std::size_t i = 0; i < customerNames.size(); ++i) {
            if (i % 3 != 2) {
                buyers.push_back(customerNames[i]);
            }
        }
    }

    // The first invoices fall in the current week, so "this week" has data on any day.
    void invoices(int count) {
        batch(count, [&](int i) {
            Date d = i < 7 ? thisWeek(i) : dateIn();
            return "<InvoiceAddRq><InvoiceAdd>" + ref("CustomerRef", rng.pick(buyers)) +
                   "<TxnDate>" + d.text() + "</TxnDate>" +
                   (i % 6 == 0 ? "<PONumber>PO-" + std::to_string(4000 + i) + "</PONumber>" : "") +
                   salesLines("InvoiceLineAdd", "InvoiceLineGroupAdd", true) +
                   "</InvoiceAdd></InvoiceAddRq>\n";
        });
    }

    // Payments for most invoices older than a month; some only partly.
    void payments() {
        std::vector<std::tuple<std::string, std::string, Date, std::int64_t>> open;
        auto s = file.prepare(
            "SELECT t.txn_id, l.full_name, t.txn_date, t.open_amount FROM txns t JOIN lists l "
            "ON "
            "l.list_id = t.entity_id "
            "WHERE t.type = 'Invoice' AND t.txn_date < ? ORDER BY t.id");
        s.bind(1, now.plusDays(-30).text());
        while (s.step()) {
            open.emplace_back(s.text(0), s.text(1), *Date::parse(s.text(2)), s.integer(3));
        }
        std::string requests;
        int n = 0;
        for (const auto& [txnId, customer, date, cents] : open) {
            if (!rng.chance(70) || cents <= 0) {
                continue;
            }
            std::int64_t pay = (n % 7 == 3) ? cents / 2 : cents;
            Date paid = std::min(now, date.plusDays(rng.range(5, 35)));
            requests +=
                "<ReceivePaymentAddRq><ReceivePaymentAdd>" + ref("CustomerRef", customer) +
                "<TxnDate>" + paid.text() + "</TxnDate><RefNumber>" + std::to_string(1001 + n) +
                "</RefNumber><TotalAmount>" + Decimal::fromCents(pay).amount() + "</TotalAmount>" +
                ref("PaymentMethodRef", n % 3 ? "Check" : "Visa") + "<AppliedToTxnAdd><TxnID>" +
                txnId + "</TxnID><PaymentAmount>" + Decimal::fromCents(pay).amount() +
                "</PaymentAmount></AppliedToTxnAdd></ReceivePaymentAdd></"
                "ReceivePaymentAddRq>\n";
            ++n;
        }
        run(file, requests);
    }

    void otherSales() {
        batch(demodata::kDocuments.estimates, [&](int i) {
            return "<EstimateAddRq><EstimateAdd>" + ref("CustomerRef", rng.pick(customerNames)) +
                   "<TxnDate>" + (i < 3 ? thisWeek(i) : dateIn()).text() + "</TxnDate>" +
                   salesLines("EstimateLineAdd", "EstimateLineGroupAdd", true) +
                   "</EstimateAdd></EstimateAddRq>\n";
        });
        batch(demodata::kDocuments.salesReceipts, [&](int i) {
            return "<SalesReceiptAddRq><SalesReceiptAdd>" +
                   ref("CustomerRef", rng.pick(customerNames)) + "<TxnDate>" +
                   (i < 3 ? thisWeek(i) : dateIn()).text() + "</TxnDate>" +
                   ref("PaymentMethodRef", i % 2 ? "Cash" : "MasterCard") +
                   salesLines("SalesReceiptLineAdd", "SalesReceiptLineGroupAdd", false) +
                   "</SalesReceiptAdd></SalesReceiptAddRq>\n";
        });
        batch(demodata::kDocuments.creditMemos, [&](int i) {
            return "<CreditMemoAddRq><CreditMemoAdd>" + ref("CustomerRef", rng.pick(buyers)) +
                   "<TxnDate>" + (i == 0 ? now : dateIn()).text() +
                   "</TxnDate><Memo>Returned materials</Memo><CreditMemoLineAdd>" +
                   ref("ItemRef", rng.chance(50) ? "Mulch" : "Plants") + "<Quantity>" +
                   std::to_string(rng.range(1, 4)) +
                   "</Quantity></CreditMemoLineAdd></CreditMemoAdd></CreditMemoAddRq>\n";
        });
    }

    void purchases() {
        batch(demodata::kDocuments.purchaseOrders, [&](int i) {
            std::string lines;
            for (int l = rng.range(1, 3); l > 0; --l) {
                lines += "<PurchaseOrderLineAdd>" +
                         ref("ItemRef", rng.pick(demodata::kStockItems)) + "<Quantity>" +
                         std::to_string(rng.range(2, 20)) + "</Quantity></PurchaseOrderLineAdd>";
            }
            return "<PurchaseOrderAddRq><PurchaseOrderAdd>" +
                   ref("VendorRef", rng.pick(demodata::kSuppliers)) + "<TxnDate>" +
                   (i < 2 ? thisWeek(i) : dateIn()).text() + "</TxnDate>" + lines +
                   "</PurchaseOrderAdd></PurchaseOrderAddRq>\n";
        });
        receiveSomeOrders();
        batch(demodata::kDocuments.bills, [&](int i) {
            std::string lines = "<ExpenseLineAdd>" +
                                ref("AccountRef", rng.pick(demodata::kExpenseAccounts)) +
                                "<Amount>" + Decimal::fromCents(rng.range(2500, 120000)).amount() +
                                "</Amount></ExpenseLineAdd>";
            if (i % 3 == 0) {
                lines += "<ItemLineAdd>" + ref("ItemRef", rng.pick(demodata::kStockItems)) +
                         "<Quantity>" + std::to_string(rng.range(1, 10)) +
                         "</Quantity></ItemLineAdd>";
            }
            return "<BillAddRq><BillAdd>" + ref("VendorRef", rng.pick(demodata::kSuppliers)) +
                   "<TxnDate>" + (i < 2 ? now : dateIn()).text() + "</TxnDate><RefNumber>INV-" +
                   std::to_string(7000 + i * 3) + "</RefNumber>" + lines +
                   "</BillAdd></BillAddRq>\n";
        });
        batch(demodata::kDocuments.checks, [&](int i) {
            return "<CheckAddRq><CheckAdd>" + ref("AccountRef", "Checking") +
                   ref("PayeeEntityRef", rng.pick(demodata::kSuppliers)) + "<RefNumber>" +
                   std::to_string(2001 + i) + "</RefNumber><TxnDate>" + dateIn().text() +
                   "</TxnDate><ExpenseLineAdd>" +
                   ref("AccountRef", rng.pick(demodata::kExpenseAccounts)) + "<Amount>" +
                   Decimal::fromCents(rng.range(1500, 90000)).amount() +
                   "</Amount></ExpenseLineAdd></CheckAdd></CheckAddRq>\n";
        });
        batch(demodata::kDocuments.cardCharges, [&](int) {
            return "<CreditCardChargeAddRq><CreditCardChargeAdd>" + ref("AccountRef", "Visa Card") +
                   ref("PayeeEntityRef", rng.chance(50) ? "Golden State Fuel" : "Evergreen Tools") +
                   "<TxnDate>" + dateIn().text() + "</TxnDate><ExpenseLineAdd>" +
                   ref("AccountRef", rng.chance(50) ? "Automobile:Fuel" : "Job Expenses") +
                   "<Amount>" + Decimal::fromCents(rng.range(1200, 25000)).amount() +
                   "</Amount></ExpenseLineAdd></CreditCardChargeAdd></CreditCardChargeAddRq>\n";
        });
    }

    // Some purchase orders are partly received.
    void receiveSomeOrders() {
        auto s = file.prepare(
            "SELECT l.id, l.fields FROM lines l JOIN txns t ON t.id = l.txn "
            "WHERE t.type = 'PurchaseOrder' ORDER BY l.id");
        std::vector<std::pair<std::int64_t, Fields>> updates;
        int n = 0;
        while (s.step()) {
            if (n++ % 3 == 0) {
                Fields f = decodeFields(s.text(1));
                Decimal q = Decimal::parse(fieldOr(f, "Quantity", "0")).value_or(Decimal{});
                setField(f, "ReceivedQuantity",
                         Decimal::fromUnits(q.units() / 2 / Decimal::kScale * Decimal::kScale)
                             .quantity());
                updates.emplace_back(s.integer(0), std::move(f));
            }
        }
        auto u = file.prepare("UPDATE lines SET fields = ? WHERE id = ?");
        for (const auto& [id, f] : updates) {
            u.bind(1, encodeFields(f)).bind(2, id);
            u.step();
            u.reset();
        }
    }

    void timeEntries() {
        batch(demodata::kDocuments.timeEntries, [&](int i) {
            bool billable = i % 2 == 0;
            Date d = i < 8 ? thisWeek(i % 3) : dateIn();
            return "<TimeTrackingAddRq><TimeTrackingAdd><TxnDate>" + d.text() + "</TxnDate>" +
                   ref("EntityRef", rng.pick(demodata::kTimeKeepers)) +
                   ref("CustomerRef", rng.pick(customerNames)) +
                   ref("ItemServiceRef", rng.chance(50) ? "Maintenance" : "Installation") +
                   "<Duration>PT" + std::to_string(rng.range(1, 8)) + "H" +
                   std::to_string(rng.chance(50) ? 30 : 0) + "M</Duration>" +
                   ref("PayrollItemWageRef", "Hourly Rate") + "<BillableStatus>" +
                   (billable ? "Billable" : "NotBillable") +
                   "</BillableStatus></TimeTrackingAdd></TimeTrackingAddRq>\n";
        });
    }

    // Documents, through the same requests Dorvane sends.
    void documents(int invoiceCount) {
        findCustomers();
        invoices(invoiceCount);
        payments();
        otherSales();
        purchases();
        timeEntries();
    }
};

}  // namespace

void createEmptyCompany(const std::filesystem::path& path, const std::string& companyName) {
    auto file = CompanyFile::create(path);
    CompanyFile::Transaction t(*file);
    setDefaults(*file, companyName, false);
    t.commit();
}

void createDemoCompany(const std::filesystem::path& path, const DemoOptions& options) {
    auto file = CompanyFile::create(path);
    Date now = today();
    Date fiscalStart = dateMacroRange("ThisFiscalYear", now, 1).from.value_or(now);
    DemoWriter demo{*file, Rng{options.seed}, now, addMonths(fiscalStart, -12)};
    std::int64_t clock = (demo.start.days - 1) * 86400 + 9 * 3600;
    file->setClock([&clock] { return clock += 37; });
    demo.lists(options.customers);
    demo.documents(options.invoices);
}

}  // namespace dorvane::qbsandbox
