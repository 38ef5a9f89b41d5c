// SPDX-License-Identifier: GPL-3.0-or-later
#include "qbsandbox/demo.h"

#include <algorithm>
#include <functional>
#include <tuple>
#include <vector>

#include "qbsandbox/companyfile.h"
#include "qbsandbox/datemacro.h"
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

void setDefaults(CompanyFile& file, const std::string& companyName, bool demo) {
    file.setSetting("IsSampleCompany", demo ? "true" : "false");
    file.setSetting("Company/CompanyName", companyName);
    file.setSetting("Company/LegalCompanyName", companyName + (demo ? " LLC" : ""));
    file.setSetting("Company/FirstMonthFiscalYear", "January");
    file.setSetting("Company/FirstMonthIncomeTaxYear", "January");
    // A new company file knows its name only; the demo company is a whole business.
    const std::vector<std::pair<std::string, std::string>> identity = {
        {"Company/Address/Addr1", "1250 Harbor Lane"},
        {"Company/Address/City", "Bayview"},
        {"Company/Address/State", "CA"},
        {"Company/Address/PostalCode", "94400"},
        {"Company/Address/Country", "US"},
        {"Company/LegalAddress/Addr1", "1250 Harbor Lane"},
        {"Company/LegalAddress/City", "Bayview"},
        {"Company/LegalAddress/State", "CA"},
        {"Company/LegalAddress/PostalCode", "94400"},
        {"Company/LegalAddress/Country", "US"},
        {"Company/Phone", "650-555-0134"},
        {"Company/Email", "office@example.com"},
        {"Company/CompanyWebSite", "www.example.com"},
        {"Company/CompanyType", "Landscaping"},
        {"Company/EIN", "94-1234567"},
        {"Company/TaxForm", "Form1120S"},
    };
    if (demo) {
        for (const auto& [k, v] : identity) {
            file.setSetting(k, v);
        }
    }
    const std::vector<std::pair<std::string, std::string>> settings = {
        {"Preferences/AccountingPreferences/IsUsingAccountNumbers", "false"},
        {"Preferences/AccountingPreferences/IsRequiringAccounts", "true"},
        {"Preferences/AccountingPreferences/IsUsingClassTracking", "false"},
        {"Preferences/AccountingPreferences/IsUsingAuditTrail", "true"},
        {"Preferences/AccountingPreferences/IsAssigningJournalEntryNumbers", "true"},
        {"Preferences/FinanceChargePreferences/AnnualInterestRate", "0.00"},
        {"Preferences/FinanceChargePreferences/MinFinanceCharge", "0.00"},
        {"Preferences/FinanceChargePreferences/GracePeriod", "0"},
        {"Preferences/FinanceChargePreferences/IsAssessingForOverdueCharges", "false"},
        {"Preferences/FinanceChargePreferences/CalculateChargesFrom", "DueDate"},
        {"Preferences/FinanceChargePreferences/IsMarkedToBePrinted", "false"},
        {"Preferences/JobsAndEstimatesPreferences/IsUsingEstimates", "true"},
        {"Preferences/JobsAndEstimatesPreferences/IsUsingProgressInvoicing", "false"},
        {"Preferences/JobsAndEstimatesPreferences/IsPrintingItemsWithZeroAmounts", "false"},
        {"Preferences/PurchasesAndVendorsPreferences/IsUsingInventory", "true"},
        {"Preferences/PurchasesAndVendorsPreferences/DaysBillsAreDue", "10"},
        {"Preferences/PurchasesAndVendorsPreferences/IsAutomaticallyUsingDiscounts", "false"},
        {"Preferences/ReportsPreferences/AgingReportBasis", "AgeFromDueDate"},
        {"Preferences/ReportsPreferences/SummaryReportBasis", "Accrual"},
        {"Preferences/SalesAndCustomersPreferences/IsTrackingReimbursedExpensesAsIncome", "false"},
        {"Preferences/SalesAndCustomersPreferences/IsAutoApplyingPayments", "true"},
        {"Preferences/TimeTrackingPreferences/FirstDayOfWeek", "Sunday"},
        {"Preferences/CurrentAppAccessRights/IsAutomaticLoginAllowed", "false"},
        {"Preferences/CurrentAppAccessRights/IsPersonalDataAccessAllowed", "false"},
    };
    for (const auto& [k, v] : settings) {
        file.setSetting(k, v);
    }
    struct Acct {
        const char* name;
        const char* type;
        const char* parent;
    };
    const Acct accounts[] = {
        {"Checking", "Bank", nullptr},
        {"Accounts Receivable", "AccountsReceivable", nullptr},
        {"Undeposited Funds", "OtherCurrentAsset", nullptr},
        {"Inventory Asset", "OtherCurrentAsset", nullptr},
        {"Accounts Payable", "AccountsPayable", nullptr},
        {"Sales Tax Payable", "OtherCurrentLiability", nullptr},
        {"Opening Balance Equity", "Equity", nullptr},
        {"Sales", "Income", nullptr},
        {"Cost of Goods Sold", "CostOfGoodsSold", nullptr},
        {"Office Supplies", "Expense", nullptr},
        // What imported documents are booked onto until the bookkeeper sorts them out.
        {"Uncategorized Expenses", "Expense", nullptr},
    };
    for (const auto& a : accounts) {
        addList(file, "Account", a.name, {{"AccountType", a.type}});
    }
    addList(file, "SalesTaxCode", "Tax", {{"Desc", "Taxable Sales"}, {"IsTaxable", "true"}});
    addList(file, "SalesTaxCode", "Non", {{"Desc", "Non-Taxable Sales"}, {"IsTaxable", "false"}});
    for (const char* m : {"Cash", "Check", "Visa", "MasterCard"}) {
        addList(file, "PaymentMethod", m, {});
    }
    addList(file, "StandardTerms", "Due on receipt",
            {{"StdDueDays", "0"}, {"StdDiscountDays", "0"}, {"DiscountPct", "0.00"}});
    addList(file, "StandardTerms", "Net 15",
            {{"StdDueDays", "15"}, {"StdDiscountDays", "0"}, {"DiscountPct", "0.00"}});
    addList(file, "StandardTerms", "Net 30",
            {{"StdDueDays", "30"}, {"StdDiscountDays", "0"}, {"DiscountPct", "0.00"}});
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

const std::vector<std::string> kFirst = {"Maria",   "James",  "Linda",  "Robert", "Susan",
                                         "Michael", "Karen",  "David",  "Nancy",  "Daniel",
                                         "Laura",   "Paul",   "Emily",  "Kevin",  "Grace",
                                         "Brian",   "Olivia", "Steven", "Hannah", "Thomas"};
const std::vector<std::string> kLast = {
    "Alvarez", "Becker", "Chen",   "Dawson",   "Ellis",     "Fischer", "Garcia",
    "Hughes",  "Ito",    "Jensen", "Kowalski", "Lindqvist", "Moreau",  "Nakamura",
    "Okafor",  "Patel",  "Quinn",  "Rossi",    "Schmidt",   "Turner",  "Underwood",
    "Vargas",  "Walsh",  "Young",  "Zimmerman"};
const std::vector<std::string> kCompanies = {
    "Bayview Dental Group", "Cedar Ridge HOA",      "Harborside Cafe",  "Northgate Office Park",
    "Oak Hollow School",    "Pinecrest Apartments", "Riverbend Church", "Summit Realty",
    "Willow Creek Clinic",  "Granite Bay Library"};
const std::vector<std::string> kJobs = {"Backyard Patio",   "Front Lawn",     "Irrigation Repair",
                                        "Spring Cleanup",   "Retaining Wall", "Tree Planting",
                                        "Pond Installation"};
const std::vector<std::string> kStreets = {"Maple St",   "Oak Ave",     "Harbor Blvd",
                                           "Elm Ct",     "Bay Rd",      "Hillside Dr",
                                           "Sunset Way", "Lakeview Ter"};
const std::vector<std::string> kCities = {"Bayview", "San Mateo", "Redwood City", "Half Moon Bay",
                                          "Belmont"};
const char* const kDomains[] = {"example.com", "example.net", "example.org"};

std::string lower(std::string s) {
    std::transform(s.begin(), s.end(), s.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    s.erase(std::remove_if(s.begin(), s.end(),
                           [](char c) { return !std::isalnum(static_cast<unsigned char>(c)); }),
            s.end());
    return s;
}

}  // namespace

void createEmptyCompany(const std::filesystem::path& path, const std::string& companyName) {
    auto file = CompanyFile::create(path);
    CompanyFile::Transaction t(*file);
    setDefaults(*file, companyName, false);
    t.commit();
}

void createDemoCompany(const std::filesystem::path& path, const DemoOptions& options) {
    auto file = CompanyFile::create(path);
    Rng rng{options.seed};
    Date now = today();
    Date fiscalStart = dateMacroRange("ThisFiscalYear", now, 1).from.value_or(now);
    Date start = addMonths(fiscalStart, -12);
    std::int64_t span = now.days - start.days;
    std::int64_t clock = (start.days - 1) * 86400 + 9 * 3600;
    file->setClock([&clock] { return clock += 37; });
    auto dateIn = [&](int minDaysAgo = 0) {
        return Date{start.days +
                    rng.range(0, static_cast<int>(std::max<std::int64_t>(0, span - minDaysAgo)))};
    };

    {
        CompanyFile::Transaction t(*file);
        setDefaults(*file, "Harbor Lane Landscaping", true);
        struct Acct {
            const char* name;
            const char* type;
            const char* parent;
            std::int64_t balance;
        };
        const Acct accounts[] = {
            {"Savings", "Bank", nullptr, 2500000},
            {"Petty Cash", "Bank", nullptr, 25000},
            {"Truck", "FixedAsset", nullptr, 3200000},
            {"Visa Card", "CreditCard", nullptr, 0},
            {"Payroll Liabilities", "OtherCurrentLiability", nullptr, 0},
            {"Owner's Equity", "Equity", nullptr, 0},
            {"Landscaping Services", "Income", nullptr, 0},
            {"Design", "Income", "Landscaping Services", 0},
            {"Maintenance", "Income", "Landscaping Services", 0},
            {"Materials Income", "Income", nullptr, 0},
            {"Automobile", "Expense", nullptr, 0},
            {"Fuel", "Expense", "Automobile", 0},
            {"Insurance", "Expense", nullptr, 0},
            {"Rent", "Expense", nullptr, 0},
            {"Utilities", "Expense", nullptr, 0},
            {"Payroll Expenses", "Expense", nullptr, 0},
            {"Job Expenses", "Expense", nullptr, 0},
            {"Interest Income", "OtherIncome", nullptr, 0},
        };
        for (const auto& a : accounts) {
            ListRecord r = addList(*file, "Account", a.name, {{"AccountType", a.type}},
                                   a.parent ? a.parent : "");
            file->adjustListBalance(r.listId, a.balance, 0);
        }
        file->adjustListBalance(idOf(*file, "account", "Checking"), 4875000, 0);
        addList(*file, "StandardTerms", "1% 10 Net 30",
                {{"StdDueDays", "30"}, {"StdDiscountDays", "10"}, {"DiscountPct", "1.00"}});
        addList(*file, "DateDrivenTerms", "Due 10th of next month",
                {{"DayOfMonthDue", "10"}, {"DueNextMonthDays", "5"}});
        addList(*file, "PaymentMethod", "American Express", {});

        std::string expenseAcct = idOf(*file, "account", "Payroll Expenses");
        for (auto [name, type] : std::vector<std::pair<const char*, const char*>>{
                 {"Hourly Rate", "HourlyRegular"},
                 {"Overtime Rate", "HourlyOvertime"},
                 {"Salary", "SalaryRegular"},
                 {"Sick Hourly", "HourlySick"},
                 {"Vacation Hourly", "HourlyVacation"}}) {
            addList(*file, "PayrollItemWage", name,
                    {{"WageType", type}, {"ExpenseAccountRef", expenseAcct}});
        }

        std::string tax = idOf(*file, "SalesTaxCode", "Tax");
        std::string non = idOf(*file, "SalesTaxCode", "Non");
        std::string design = idOf(*file, "account", "Landscaping Services:Design");
        std::string maint = idOf(*file, "account", "Landscaping Services:Maintenance");
        std::string materials = idOf(*file, "account", "Materials Income");
        std::string cogs = idOf(*file, "account", "Cost of Goods Sold");
        std::string jobExp = idOf(*file, "account", "Job Expenses");
        std::string asset = idOf(*file, "account", "Inventory Asset");
        struct Svc {
            const char* name;
            const char* desc;
            const char* price;
            const std::string* account;
            const char* parent;
        };
        const Svc services[] = {
            {"Design", "Custom landscape design", "55.00", &design, nullptr},
            {"Installation", "Installation labor", "45.00", &maint, nullptr},
            {"Maintenance", "Weekly maintenance visit", "35.00", &maint, nullptr},
            {"Consulting", "Consultation, per hour", "75.00", &design, nullptr},
            {"Labor", "General labor", "40.00", &maint, nullptr},
            {"Trimming", "Tree and hedge trimming", "42.00", &maint, "Labor"},
        };
        for (const auto& s : services) {
            addList(*file, "ItemService", s.name,
                    {{"SalesTaxCodeRef", non},
                     {"SalesOrPurchase/Desc", s.desc},
                     {"SalesOrPurchase/Price", s.price},
                     {"SalesOrPurchase/AccountRef", *s.account}},
                    s.parent ? s.parent : "");
        }
        addList(*file, "ItemService", "Snow Removal",
                {{"SalesTaxCodeRef", non},
                 {"SalesOrPurchase/Desc", "Snow removal"},
                 {"SalesOrPurchase/Price", "60.00"},
                 {"SalesOrPurchase/AccountRef", maint}},
                "", false);
        struct Mat {
            const char* kind;
            const char* name;
            const char* desc;
            const char* price;
            const char* cost;
        };
        const Mat materialsList[] = {
            {"ItemNonInventory", "Soil", "Garden soil, per cubic yard", "32.00", "18.00"},
            {"ItemNonInventory", "Mulch", "Bark mulch, per cubic yard", "38.00", "21.50"},
            {"ItemNonInventory", "Gravel", "Pea gravel, per ton", "45.00", "27.00"},
            {"ItemNonInventory", "Plants", "Perennial plants", "12.50", "6.25"},
            {"ItemInventory", "Pump", "Fountain pump", "149.99", "82.00"},
            {"ItemInventory", "Fountain", "Stone fountain", "650.00", "390.00"},
            {"ItemInventory", "Sprinkler Heads", "Pop-up sprinkler head", "4.75", "1.90"},
            {"ItemInventory", "Timer", "Irrigation timer", "89.00", "48.00"},
        };
        for (const auto& m : materialsList) {
            if (std::string(m.kind) == "ItemNonInventory") {
                addList(*file, m.kind, m.name,
                        {{"SalesTaxCodeRef", tax},
                         {"SalesAndPurchase/SalesDesc", m.desc},
                         {"SalesAndPurchase/SalesPrice", m.price},
                         {"SalesAndPurchase/IncomeAccountRef", materials},
                         {"SalesAndPurchase/PurchaseDesc", m.desc},
                         {"SalesAndPurchase/PurchaseCost", m.cost},
                         {"SalesAndPurchase/ExpenseAccountRef", jobExp}});
            } else {
                addList(*file, m.kind, m.name,
                        {{"SalesTaxCodeRef", tax},
                         {"SalesDesc", m.desc},
                         {"SalesPrice", m.price},
                         {"IncomeAccountRef", materials},
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
        addList(*file, "ItemOtherCharge", "Delivery",
                {{"SalesTaxCodeRef", non},
                 {"SalesOrPurchase/Desc", "Delivery charge"},
                 {"SalesOrPurchase/Price", "25.00"},
                 {"SalesOrPurchase/AccountRef", materials}});
        addList(*file, "ItemOtherCharge", "Fuel Surcharge",
                {{"SalesTaxCodeRef", non},
                 {"SalesOrPurchase/Desc", "Fuel surcharge"},
                 {"SalesOrPurchase/PricePercent", "3.00"},
                 {"SalesOrPurchase/AccountRef", materials}});
        addList(*file, "ItemSubtotal", "Subtotal", {{"ItemDesc", "Subtotal"}});
        addList(*file, "ItemDiscount", "10% Discount",
                {{"ItemDesc", "Preferred customer discount"},
                 {"SalesTaxCodeRef", non},
                 {"DiscountRatePercent", "10.00"},
                 {"AccountRef", materials}});
        addList(*file, "ItemPayment", "Deposit",
                {{"ItemDesc", "Customer deposit"},
                 {"DepositToAccountRef", idOf(*file, "account", "Undeposited Funds")}});
        addList(*file, "ItemGroup", "Spring Package",
                {{"ItemDesc", "Spring cleanup package"},
                 {"IsPrintItemsInGroup", "false"},
                 {"ItemGroupLine#1/ItemRef", idOf(*file, "item", "Maintenance")},
                 {"ItemGroupLine#1/Quantity", "4"},
                 {"ItemGroupLine#2/ItemRef", idOf(*file, "item", "Mulch")},
                 {"ItemGroupLine#2/Quantity", "2"}});
        addList(*file, "ItemGroup", "Fountain Kit",
                {{"ItemDesc", "Fountain with pump, installed"},
                 {"IsPrintItemsInGroup", "true"},
                 {"ItemGroupLine#1/ItemRef", idOf(*file, "item", "Fountain")},
                 {"ItemGroupLine#1/Quantity", "1"},
                 {"ItemGroupLine#2/ItemRef", idOf(*file, "item", "Pump")},
                 {"ItemGroupLine#2/Quantity", "1"},
                 {"ItemGroupLine#3/ItemRef", idOf(*file, "item", "Installation")},
                 {"ItemGroupLine#3/Quantity", "3"}});
        // Sold, never bought: non-inventory items with one price and description.
        addList(*file, "ItemNonInventory", "Garden Gloves",
                {{"SalesTaxCodeRef", tax},
                 {"SalesOrPurchase/Desc", "Leather garden gloves, one pair"},
                 {"SalesOrPurchase/Price", "14.95"},
                 {"SalesOrPurchase/AccountRef", materials}});
        addList(*file, "ItemNonInventory", "Planter Box",
                {{"SalesTaxCodeRef", tax},
                 {"SalesOrPurchase/Desc", "Cedar planter box, 24 inch"},
                 {"SalesOrPurchase/Price", "89.00"},
                 {"SalesOrPurchase/AccountRef", materials}});
        // The import settings' defaults name these: received bills and purchase orders land on
        // them until the lines are sorted out.
        addList(*file, "ItemNonInventory", "Uncategorized Expenses",
                {{"SalesOrPurchase/Desc", "Imported, to be sorted out"},
                 {"SalesOrPurchase/AccountRef", idOf(*file, "account", "Uncategorized Expenses")}});
        addList(*file, "ItemGroup", "Uncategorized Expense Group",
                {{"ItemDesc", "Imported group, to be sorted out"},
                 {"IsPrintItemsInGroup", "false"},
                 {"ItemGroupLine#1/ItemRef", idOf(*file, "item", "Uncategorized Expenses")},
                 {"ItemGroupLine#1/Quantity", "1"}});

        // Vendors: a mix with and without e-mail.
        const std::vector<std::string> vendorNames = {
            "Bay Area Nursery",       "Coastal Stone Supply",
            "Delta Irrigation",       "Evergreen Tools",
            "Golden State Fuel",      "Hillside Rentals",
            "Pacific Gas & Power",    "Redwood Lumber",
            "Sierra Insurance",       "Sunrise Office Supply",
            "Valley Fertilizer",      "West Coast Pumps",
            "Bayview Water District", "Cal Trucks",
            "Green Thumb Wholesale",  "Mission Landscape Lighting",
            "Peninsula Telecom",      "Quarry Direct",
            "Tri-County Waste",       "Union Hardware"};
        for (std::size_t i = 0; i < vendorNames.size(); ++i) {
            const std::string& v = vendorNames[i];
            Fields f = {{"CompanyName", v},
                        {"VendorAddress/Addr1", v},
                        {"VendorAddress/Addr2",
                         std::to_string(100 + i * 17) + " " + kStreets[i % kStreets.size()]},
                        {"VendorAddress/City", kCities[i % kCities.size()]},
                        {"VendorAddress/State", "CA"},
                        {"VendorAddress/PostalCode", "94" + std::to_string(100 + i * 7)},
                        {"Phone", "650-555-" + std::to_string(1000 + i * 37)}};
            if (i % 3 != 2) {
                f.emplace_back("Email", "billing." + lower(v) + "@" + kDomains[i % 3]);
            }
            f.emplace_back("NameOnCheck", v);
            f.emplace_back("TermsRef", idOf(*file, "terms", i % 2 ? "Net 30" : "Net 15"));
            f.emplace_back("IsVendorEligibleFor1099", i % 4 == 0 ? "true" : "false");
            addList(*file, "Vendor", v, std::move(f));
        }
        addList(*file, "ItemSalesTax", "State Tax",
                {{"ItemDesc", "CA sales tax"},
                 {"TaxRate", "7.25"},
                 {"TaxVendorRef", idOf(*file, "entity", "Union Hardware")}});
        addList(*file, "ItemSalesTax", "County Tax",
                {{"ItemDesc", "San Mateo County"},
                 {"TaxRate", "9.375"},
                 {"TaxVendorRef", idOf(*file, "entity", "Union Hardware")}});
        file->setSetting("Preferences/SalesTaxPreferences/DefaultItemSalesTaxRef",
                         idOf(*file, "item", "State Tax"));
        file->setSetting("Preferences/SalesTaxPreferences/PaySalesTax", "Monthly");
        file->setSetting("Preferences/SalesTaxPreferences/DefaultTaxableSalesTaxCodeRef", tax);
        file->setSetting("Preferences/SalesTaxPreferences/DefaultNonTaxableSalesTaxCodeRef", non);

        const char* employees[][3] = {
            {"Ana", "Lopez", "Regular"},    {"Ben", "Carter", "Regular"},
            {"Chloe", "Nguyen", "Regular"}, {"Diego", "Ramirez", "Regular"},
            {"Erin", "Walsh", "Officer"},   {"Frank", "Moore", "Regular"}};
        for (int i = 0; i < 6; ++i) {
            std::string name = std::string(employees[i][0]) + " " + employees[i][1];
            Fields f = {{"FirstName", employees[i][0]},
                        {"LastName", employees[i][1]},
                        {"EmployeeAddress/Addr1",
                         std::to_string(20 + i * 11) + " " + kStreets[i % kStreets.size()]},
                        {"EmployeeAddress/City", kCities[i % kCities.size()]},
                        {"EmployeeAddress/State", "CA"},
                        {"EmployeeAddress/PostalCode", "94" + std::to_string(300 + i)},
                        {"PrintAs", name},
                        {"Phone", "650-555-" + std::to_string(2000 + i)}};
            if (i != 3) {
                f.emplace_back("Email", lower(employees[i][0]) + "." + lower(employees[i][1]) +
                                            "@example.com");
            }
            f.emplace_back("EmployeeType", employees[i][2]);
            f.emplace_back("HiredDate", addMonths(now, -(14 + i * 5)).text());
            addList(*file, "Employee", name, std::move(f), "", i != 5);
        }
        addList(*file, "OtherName", "Owner Draw", {{"CompanyName", "Harbor Lane Landscaping"}});
        addList(*file, "OtherName", "State Board of Equalization",
                {{"CompanyName", "State Board of Equalization"}, {"Email", "returns@example.org"}});

        // Customers and jobs.
        int jobs = std::max(1, options.customers * 14 / 50);
        int parents = std::max(1, options.customers - jobs);
        std::vector<std::string> parentNames;
        for (int i = 0; i < parents; ++i) {
            bool company = i % 4 == 1 && static_cast<std::size_t>(i / 4) < kCompanies.size();
            std::string first = kFirst[static_cast<std::size_t>(i) % kFirst.size()];
            std::string last = kLast[(static_cast<std::size_t>(i) * 7 + 3) % kLast.size()];
            std::string name =
                company ? kCompanies[static_cast<std::size_t>(i / 4)] : last + ", " + first;
            if (i >= static_cast<int>(kFirst.size() * 2)) {
                name += " " + std::to_string(i);
            }
            std::string street = std::to_string(100 + i * 13) + " " +
                                 kStreets[static_cast<std::size_t>(i) % kStreets.size()];
            std::string city = kCities[static_cast<std::size_t>(i) % kCities.size()];
            Fields f;
            if (company) {
                f.emplace_back("CompanyName", name);
            } else {
                f.emplace_back("FirstName", first);
                f.emplace_back("LastName", last);
            }
            f.emplace_back("BillAddress/Addr1", company ? name : first + " " + last);
            f.emplace_back("BillAddress/Addr2", street);
            f.emplace_back("BillAddress/City", city);
            f.emplace_back("BillAddress/State", "CA");
            f.emplace_back("BillAddress/PostalCode", "94" + std::to_string(400 + i % 500));
            f.emplace_back("Phone", "650-555-" + std::to_string(3000 + i));
            if (i % 5 != 3) {
                f.emplace_back(
                    "Email",
                    (company ? "accounts." + lower(name) : lower(first) + "." + lower(last)) + "@" +
                        std::string(kDomains[static_cast<std::size_t>(i) % 3]));
            }
            f.emplace_back("Contact", first + " " + last);
            f.emplace_back("TermsRef",
                           idOf(*file, "terms", i % 3 == 0 ? "Due on receipt" : "Net 30"));
            f.emplace_back("SalesTaxCodeRef", i % 2 ? tax : non);
            if (i % 2) {
                f.emplace_back("ItemSalesTaxRef", idOf(*file, "item", "State Tax"));
            }
            f.emplace_back("JobStatus", "None");
            addList(*file, "Customer", name, std::move(f), "", i % 11 != 7);
            parentNames.push_back(name);
        }
        for (int j = 0; j < jobs; ++j) {
            const std::string& parent =
                parentNames[static_cast<std::size_t>(j * 3) % parentNames.size()];
            std::string job = kJobs[static_cast<std::size_t>(j) % kJobs.size()];
            if (j >= static_cast<int>(kJobs.size())) {
                job += " " + std::to_string(j / kJobs.size() + 1);
            }
            if (file->listByName("entity", parent + ":" + job)) {
                job += " " + std::to_string(j);
            }
            auto p = file->listByName("entity", parent);
            Fields f;
            for (const auto& [k, v] : p->fields) {
                if (k.rfind("BillAddress/", 0) == 0 || k == "Email" || k == "Phone" ||
                    k == "TermsRef" || k == "SalesTaxCodeRef" || k == "ItemSalesTaxRef") {
                    f.emplace_back(k, v);
                }
            }
            const char* statuses[] = {"InProgress", "Awarded", "Closed", "Pending"};
            f.emplace_back("JobStatus", statuses[j % 4]);
            f.emplace_back("JobStartDate", dateIn(60).text());
            f.emplace_back("JobDesc", job);
            addList(*file, "Customer", job, std::move(f), parent, true);
        }
        t.commit();
    }

    // Transactions, through the same requests Dorvane sends.
    std::vector<std::string> customers;
    {
        auto s = file->prepare(
            "SELECT full_name FROM lists WHERE kind = 'Customer' AND is_active = 1 ORDER BY id");
        while (s.step()) {
            customers.push_back(s.text(0));
        }
    }
    // Every third customer keeps a zero balance: no sales on account.
    std::vector<std::string> buyers;
    for (std::size_t i = 0; i < customers.size(); ++i) {
        if (i % 3 != 2) {
            buyers.push_back(customers[i]);
        }
    }
    const std::vector<std::string> saleItems = {
        "Design",  "Installation", "Maintenance", "Consulting", "Labor:Trimming",  "Soil",
        "Mulch",   "Gravel",       "Plants",      "Pump",       "Sprinkler Heads", "Timer",
        "Delivery"};
    const std::vector<std::string> stockItems = {"Pump", "Fountain", "Sprinkler Heads", "Timer"};
    const std::vector<std::string> vendors = {
        "Bay Area Nursery", "Coastal Stone Supply",  "Delta Irrigation",
        "Evergreen Tools",  "Green Thumb Wholesale", "Redwood Lumber",
        "Union Hardware",   "West Coast Pumps",      "Quarry Direct"};
    const std::vector<std::string> expenseAccounts = {
        "Automobile:Fuel", "Insurance", "Rent", "Utilities", "Office Supplies", "Job Expenses"};
    const std::vector<std::string> employeeNames = {"Ana Lopez", "Ben Carter", "Chloe Nguyen",
                                                    "Diego Ramirez"};

    auto salesLines = [&](const char* lineTag, const char* groupTag, bool allowGroup) {
        std::string lines;
        int count = rng.range(1, 3);
        for (int l = 0; l < count; ++l) {
            lines += std::string("<") + lineTag + ">" + ref("ItemRef", rng.pick(saleItems)) +
                     "<Quantity>" + std::to_string(rng.range(1, 12)) + "</Quantity></" + lineTag +
                     ">";
        }
        if (allowGroup && rng.chance(12)) {
            lines += std::string("<") + groupTag + ">" +
                     ref("ItemGroupRef", rng.chance(50) ? "Spring Package" : "Fountain Kit") +
                     "<Quantity>1</Quantity></" + groupTag + ">";
        }
        return lines;
    };
    auto batch = [&](int n, const std::function<std::string(int)>& one) {
        std::string requests;
        for (int i = 0; i < n; ++i) {
            requests += one(i);
            if (requests.size() > 2000000) {
                run(*file, requests);
                requests.clear();
            }
        }
        run(*file, requests);
    };

    // The first invoices fall in the current week, so "this week" has data on any day.
    batch(options.invoices, [&](int i) {
        Date d = i < 7 ? now.plusDays(-std::min<std::int64_t>(i, now.weekday())) : dateIn();
        return "<InvoiceAddRq><InvoiceAdd>" + ref("CustomerRef", rng.pick(buyers)) + "<TxnDate>" +
               d.text() + "</TxnDate>" +
               (i % 6 == 0 ? "<PONumber>PO-" + std::to_string(4000 + i) + "</PONumber>" : "") +
               salesLines("InvoiceLineAdd", "InvoiceLineGroupAdd", true) +
               "</InvoiceAdd></InvoiceAddRq>\n";
    });
    // Payments for most invoices older than a month; some only partly.
    {
        std::vector<std::tuple<std::string, std::string, Date, std::int64_t>> open;
        auto s = file->prepare(
            "SELECT t.txn_id, l.full_name, t.txn_date, t.open_amount FROM txns t JOIN lists l ON "
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
                "</PaymentAmount></AppliedToTxnAdd></ReceivePaymentAdd></ReceivePaymentAddRq>\n";
            ++n;
        }
        run(*file, requests);
    }
    batch(25, [&](int i) {
        return "<EstimateAddRq><EstimateAdd>" + ref("CustomerRef", rng.pick(customers)) +
               "<TxnDate>" +
               (i < 3 ? now.plusDays(-std::min<std::int64_t>(i, now.weekday())) : dateIn()).text() +
               "</TxnDate>" + salesLines("EstimateLineAdd", "EstimateLineGroupAdd", true) +
               "</EstimateAdd></EstimateAddRq>\n";
    });
    batch(40, [&](int i) {
        return "<SalesReceiptAddRq><SalesReceiptAdd>" + ref("CustomerRef", rng.pick(customers)) +
               "<TxnDate>" +
               (i < 3 ? now.plusDays(-std::min<std::int64_t>(i, now.weekday())) : dateIn()).text() +
               "</TxnDate>" + ref("PaymentMethodRef", i % 2 ? "Cash" : "MasterCard") +
               salesLines("SalesReceiptLineAdd", "SalesReceiptLineGroupAdd", false) +
               "</SalesReceiptAdd></SalesReceiptAddRq>\n";
    });
    batch(8, [&](int i) {
        return "<CreditMemoAddRq><CreditMemoAdd>" + ref("CustomerRef", rng.pick(buyers)) +
               "<TxnDate>" + (i == 0 ? now : dateIn()).text() +
               "</TxnDate><Memo>Returned materials</Memo><CreditMemoLineAdd>" +
               ref("ItemRef", rng.chance(50) ? "Mulch" : "Plants") + "<Quantity>" +
               std::to_string(rng.range(1, 4)) +
               "</Quantity></CreditMemoLineAdd></CreditMemoAdd></CreditMemoAddRq>\n";
    });
    batch(15, [&](int i) {
        std::string lines;
        for (int l = rng.range(1, 3); l > 0; --l) {
            lines += "<PurchaseOrderLineAdd>" + ref("ItemRef", rng.pick(stockItems)) +
                     "<Quantity>" + std::to_string(rng.range(2, 20)) +
                     "</Quantity></PurchaseOrderLineAdd>";
        }
        return "<PurchaseOrderAddRq><PurchaseOrderAdd>" + ref("VendorRef", rng.pick(vendors)) +
               "<TxnDate>" +
               (i < 2 ? now.plusDays(-std::min<std::int64_t>(i, now.weekday())) : dateIn()).text() +
               "</TxnDate>" + lines + "</PurchaseOrderAdd></PurchaseOrderAddRq>\n";
    });
    {
        // Some purchase orders are partly received.
        auto s = file->prepare(
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
        auto u = file->prepare("UPDATE lines SET fields = ? WHERE id = ?");
        for (const auto& [id, f] : updates) {
            u.bind(1, encodeFields(f)).bind(2, id);
            u.step();
            u.reset();
        }
    }
    batch(40, [&](int i) {
        std::string lines = "<ExpenseLineAdd>" + ref("AccountRef", rng.pick(expenseAccounts)) +
                            "<Amount>" + Decimal::fromCents(rng.range(2500, 120000)).amount() +
                            "</Amount></ExpenseLineAdd>";
        if (i % 3 == 0) {
            lines += "<ItemLineAdd>" + ref("ItemRef", rng.pick(stockItems)) + "<Quantity>" +
                     std::to_string(rng.range(1, 10)) + "</Quantity></ItemLineAdd>";
        }
        return "<BillAddRq><BillAdd>" + ref("VendorRef", rng.pick(vendors)) + "<TxnDate>" +
               (i < 2 ? now : dateIn()).text() + "</TxnDate><RefNumber>INV-" +
               std::to_string(7000 + i * 3) + "</RefNumber>" + lines + "</BillAdd></BillAddRq>\n";
    });
    batch(20, [&](int i) {
        return "<CheckAddRq><CheckAdd>" + ref("AccountRef", "Checking") +
               ref("PayeeEntityRef", rng.pick(vendors)) + "<RefNumber>" + std::to_string(2001 + i) +
               "</RefNumber><TxnDate>" + dateIn().text() + "</TxnDate><ExpenseLineAdd>" +
               ref("AccountRef", rng.pick(expenseAccounts)) + "<Amount>" +
               Decimal::fromCents(rng.range(1500, 90000)).amount() +
               "</Amount></ExpenseLineAdd></CheckAdd></CheckAddRq>\n";
    });
    batch(20, [&](int) {
        return "<CreditCardChargeAddRq><CreditCardChargeAdd>" + ref("AccountRef", "Visa Card") +
               ref("PayeeEntityRef", rng.chance(50) ? "Golden State Fuel" : "Evergreen Tools") +
               "<TxnDate>" + dateIn().text() + "</TxnDate><ExpenseLineAdd>" +
               ref("AccountRef", rng.chance(50) ? "Automobile:Fuel" : "Job Expenses") + "<Amount>" +
               Decimal::fromCents(rng.range(1200, 25000)).amount() +
               "</Amount></ExpenseLineAdd></CreditCardChargeAdd></CreditCardChargeAddRq>\n";
    });
    batch(60, [&](int i) {
        bool billable = i % 2 == 0;
        Date d = i < 8 ? now.plusDays(-std::min<std::int64_t>(i % 3, now.weekday())) : dateIn();
        return "<TimeTrackingAddRq><TimeTrackingAdd><TxnDate>" + d.text() + "</TxnDate>" +
               ref("EntityRef", rng.pick(employeeNames)) + ref("CustomerRef", rng.pick(customers)) +
               ref("ItemServiceRef", rng.chance(50) ? "Maintenance" : "Installation") +
               "<Duration>PT" + std::to_string(rng.range(1, 8)) + "H" +
               std::to_string(rng.chance(50) ? 30 : 0) + "M</Duration>" +
               ref("PayrollItemWageRef", "Hourly Rate") + "<BillableStatus>" +
               (billable ? "Billable" : "NotBillable") +
               "</BillableStatus></TimeTrackingAdd></TimeTrackingAddRq>\n";
    });
}

}  // namespace dorvane::qbsandbox
