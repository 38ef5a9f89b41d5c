// SPDX-License-Identifier: GPL-3.0-or-later
#include "qbsandbox/demodata.h"

namespace dorvane::qbsandbox::demodata {

const std::vector<Field> kPreferences = {
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

const std::vector<ListEntry> kStartingLists = {
    {"Account", "Checking", {{"AccountType", "Bank"}}},
    {"Account", "Accounts Receivable", {{"AccountType", "AccountsReceivable"}}},
    {"Account", "Undeposited Funds", {{"AccountType", "OtherCurrentAsset"}}},
    {"Account", "Inventory Asset", {{"AccountType", "OtherCurrentAsset"}}},
    {"Account", "Accounts Payable", {{"AccountType", "AccountsPayable"}}},
    {"Account", "Sales Tax Payable", {{"AccountType", "OtherCurrentLiability"}}},
    {"Account", "Opening Balance Equity", {{"AccountType", "Equity"}}},
    {"Account", "Sales", {{"AccountType", "Income"}}},
    {"Account", "Cost of Goods Sold", {{"AccountType", "CostOfGoodsSold"}}},
    {"Account", "Office Supplies", {{"AccountType", "Expense"}}},
    // What imported documents are booked onto until the bookkeeper sorts them out.
    {"Account", "Uncategorized Expenses", {{"AccountType", "Expense"}}},
    {"SalesTaxCode", "Tax", {{"Desc", "Taxable Sales"}, {"IsTaxable", "true"}}},
    {"SalesTaxCode", "Non", {{"Desc", "Non-Taxable Sales"}, {"IsTaxable", "false"}}},
    {"PaymentMethod", "Cash", {}},
    {"PaymentMethod", "Check", {}},
    {"PaymentMethod", "Visa", {}},
    {"PaymentMethod", "MasterCard", {}},
    {"StandardTerms",
     "Due on receipt",
     {{"StdDueDays", "0"}, {"StdDiscountDays", "0"}, {"DiscountPct", "0.00"}}},
    {"StandardTerms",
     "Net 15",
     {{"StdDueDays", "15"}, {"StdDiscountDays", "0"}, {"DiscountPct", "0.00"}}},
    {"StandardTerms",
     "Net 30",
     {{"StdDueDays", "30"}, {"StdDiscountDays", "0"}, {"DiscountPct", "0.00"}}},
};

const char* const kCompanyName = "Harbor Lane Landscaping";

const std::vector<Field> kCompanyIdentity = {
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

const std::int64_t kCheckingBalanceCents = 4875000;

namespace {

ListEntry account(const char* name, const char* type, const char* parent = nullptr,
                  std::int64_t balanceCents = 0) {
    return {"Account", name, {{"AccountType", type}}, parent, true, balanceCents};
}

ListEntry service(const char* name, const char* desc, const char* price, const char* account,
                  const char* parent = nullptr, bool active = true) {
    return {"ItemService",
            name,
            {{"SalesTaxCodeRef", "Non", "SalesTaxCode"},
             {"SalesOrPurchase/Desc", desc},
             {"SalesOrPurchase/Price", price},
             {"SalesOrPurchase/AccountRef", account, "account"}},
            parent,
            active};
}

ListEntry wage(const char* name, const char* type) {
    return {"PayrollItemWage",
            name,
            {{"WageType", type}, {"ExpenseAccountRef", "Payroll Expenses", "account"}}};
}

}  // namespace

const std::vector<ListEntry> kLists = {
    account("Savings", "Bank", nullptr, 2500000),
    account("Petty Cash", "Bank", nullptr, 25000),
    account("Truck", "FixedAsset", nullptr, 3200000),
    account("Visa Card", "CreditCard"),
    account("Payroll Liabilities", "OtherCurrentLiability"),
    account("Owner's Equity", "Equity"),
    account("Landscaping Services", "Income"),
    account("Design", "Income", "Landscaping Services"),
    account("Maintenance", "Income", "Landscaping Services"),
    account("Materials Income", "Income"),
    account("Automobile", "Expense"),
    account("Fuel", "Expense", "Automobile"),
    account("Insurance", "Expense"),
    account("Rent", "Expense"),
    account("Utilities", "Expense"),
    account("Payroll Expenses", "Expense"),
    account("Job Expenses", "Expense"),
    account("Interest Income", "OtherIncome"),
    {"StandardTerms",
     "1% 10 Net 30",
     {{"StdDueDays", "30"}, {"StdDiscountDays", "10"}, {"DiscountPct", "1.00"}}},
    {"DateDrivenTerms",
     "Due 10th of next month",
     {{"DayOfMonthDue", "10"}, {"DueNextMonthDays", "5"}}},
    {"PaymentMethod", "American Express", {}},
    wage("Hourly Rate", "HourlyRegular"),
    wage("Overtime Rate", "HourlyOvertime"),
    wage("Salary", "SalaryRegular"),
    wage("Sick Hourly", "HourlySick"),
    wage("Vacation Hourly", "HourlyVacation"),
    service("Design", "Custom landscape design", "55.00", "Landscaping Services:Design"),
    service("Installation", "Installation labor", "45.00", "Landscaping Services:Maintenance"),
    service("Maintenance", "Weekly maintenance visit", "35.00", "Landscaping Services:Maintenance"),
    service("Consulting", "Consultation, per hour", "75.00", "Landscaping Services:Design"),
    service("Labor", "General labor", "40.00", "Landscaping Services:Maintenance"),
    service("Trimming", "Tree and hedge trimming", "42.00", "Landscaping Services:Maintenance",
            "Labor"),
    service("Snow Removal", "Snow removal", "60.00", "Landscaping Services:Maintenance", nullptr,
            false),
};

const std::vector<Material> kMaterials = {
    {false, "Soil", "Garden soil, per cubic yard", "32.00", "18.00"},
    {false, "Mulch", "Bark mulch, per cubic yard", "38.00", "21.50"},
    {false, "Gravel", "Pea gravel, per ton", "45.00", "27.00"},
    {false, "Plants", "Perennial plants", "12.50", "6.25"},
    {true, "Pump", "Fountain pump", "149.99", "82.00"},
    {true, "Fountain", "Stone fountain", "650.00", "390.00"},
    {true, "Sprinkler Heads", "Pop-up sprinkler head", "4.75", "1.90"},
    {true, "Timer", "Irrigation timer", "89.00", "48.00"},
};

const std::vector<ListEntry> kMoreItems = {
    {"ItemOtherCharge",
     "Delivery",
     {{"SalesTaxCodeRef", "Non", "SalesTaxCode"},
      {"SalesOrPurchase/Desc", "Delivery charge"},
      {"SalesOrPurchase/Price", "25.00"},
      {"SalesOrPurchase/AccountRef", "Materials Income", "account"}}},
    {"ItemOtherCharge",
     "Fuel Surcharge",
     {{"SalesTaxCodeRef", "Non", "SalesTaxCode"},
      {"SalesOrPurchase/Desc", "Fuel surcharge"},
      {"SalesOrPurchase/PricePercent", "3.00"},
      {"SalesOrPurchase/AccountRef", "Materials Income", "account"}}},
    {"ItemSubtotal", "Subtotal", {{"ItemDesc", "Subtotal"}}},
    {"ItemDiscount",
     "10% Discount",
     {{"ItemDesc", "Preferred customer discount"},
      {"SalesTaxCodeRef", "Non", "SalesTaxCode"},
      {"DiscountRatePercent", "10.00"},
      {"AccountRef", "Materials Income", "account"}}},
    {"ItemPayment",
     "Deposit",
     {{"ItemDesc", "Customer deposit"}, {"DepositToAccountRef", "Undeposited Funds", "account"}}},
    {"ItemGroup",
     "Spring Package",
     {{"ItemDesc", "Spring cleanup package"},
      {"IsPrintItemsInGroup", "false"},
      {"ItemGroupLine#1/ItemRef", "Maintenance", "item"},
      {"ItemGroupLine#1/Quantity", "4"},
      {"ItemGroupLine#2/ItemRef", "Mulch", "item"},
      {"ItemGroupLine#2/Quantity", "2"}}},
    {"ItemGroup",
     "Fountain Kit",
     {{"ItemDesc", "Fountain with pump, installed"},
      {"IsPrintItemsInGroup", "true"},
      {"ItemGroupLine#1/ItemRef", "Fountain", "item"},
      {"ItemGroupLine#1/Quantity", "1"},
      {"ItemGroupLine#2/ItemRef", "Pump", "item"},
      {"ItemGroupLine#2/Quantity", "1"},
      {"ItemGroupLine#3/ItemRef", "Installation", "item"},
      {"ItemGroupLine#3/Quantity", "3"}}},
    // Sold, never bought: non-inventory items with one price and description.
    {"ItemNonInventory",
     "Garden Gloves",
     {{"SalesTaxCodeRef", "Tax", "SalesTaxCode"},
      {"SalesOrPurchase/Desc", "Leather garden gloves, one pair"},
      {"SalesOrPurchase/Price", "14.95"},
      {"SalesOrPurchase/AccountRef", "Materials Income", "account"}}},
    {"ItemNonInventory",
     "Planter Box",
     {{"SalesTaxCodeRef", "Tax", "SalesTaxCode"},
      {"SalesOrPurchase/Desc", "Cedar planter box, 24 inch"},
      {"SalesOrPurchase/Price", "89.00"},
      {"SalesOrPurchase/AccountRef", "Materials Income", "account"}}},
    // The import settings' defaults name these: received bills and purchase orders land on
    // them until the lines are sorted out.
    {"ItemNonInventory",
     "Uncategorized Expenses",
     {{"SalesOrPurchase/Desc", "Imported, to be sorted out"},
      {"SalesOrPurchase/AccountRef", "Uncategorized Expenses", "account"}}},
    {"ItemGroup",
     "Uncategorized Expense Group",
     {{"ItemDesc", "Imported group, to be sorted out"},
      {"IsPrintItemsInGroup", "false"},
      {"ItemGroupLine#1/ItemRef", "Uncategorized Expenses", "item"},
      {"ItemGroupLine#1/Quantity", "1"}}},
};

// A mix with and without e-mail.
const std::vector<std::string> kVendorNames = {
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

const std::vector<ListEntry> kSalesTaxItems = {
    {"ItemSalesTax",
     "State Tax",
     {{"ItemDesc", "CA sales tax"},
      {"TaxRate", "7.25"},
      {"TaxVendorRef", "Union Hardware", "entity"}}},
    {"ItemSalesTax",
     "County Tax",
     {{"ItemDesc", "San Mateo County"},
      {"TaxRate", "9.375"},
      {"TaxVendorRef", "Union Hardware", "entity"}}},
};

const std::vector<Field> kSalesTaxPreferences = {
    {"Preferences/SalesTaxPreferences/DefaultItemSalesTaxRef", "State Tax", "item"},
    {"Preferences/SalesTaxPreferences/PaySalesTax", "Monthly"},
    {"Preferences/SalesTaxPreferences/DefaultTaxableSalesTaxCodeRef", "Tax", "SalesTaxCode"},
    {"Preferences/SalesTaxPreferences/DefaultNonTaxableSalesTaxCodeRef", "Non", "SalesTaxCode"},
};

const std::vector<Employee> kEmployees = {
    {"Ana", "Lopez", "Regular"},     {"Ben", "Carter", "Regular"}, {"Chloe", "Nguyen", "Regular"},
    {"Diego", "Ramirez", "Regular"}, {"Erin", "Walsh", "Officer"}, {"Frank", "Moore", "Regular"}};

const std::vector<ListEntry> kOtherNames = {
    {"OtherName", "Owner Draw", {{"CompanyName", "Harbor Lane Landscaping"}}},
    {"OtherName",
     "State Board of Equalization",
     {{"CompanyName", "State Board of Equalization"}, {"Email", "returns@example.org"}}},
};

const std::vector<std::string> kFirstNames = {"Maria",   "James",  "Linda",  "Robert", "Susan",
                                              "Michael", "Karen",  "David",  "Nancy",  "Daniel",
                                              "Laura",   "Paul",   "Emily",  "Kevin",  "Grace",
                                              "Brian",   "Olivia", "Steven", "Hannah", "Thomas"};
const std::vector<std::string> kLastNames = {
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
const std::vector<std::string> kJobStatuses = {"InProgress", "Awarded", "Closed", "Pending"};
const std::vector<std::string> kStreets = {"Maple St",   "Oak Ave",     "Harbor Blvd",
                                           "Elm Ct",     "Bay Rd",      "Hillside Dr",
                                           "Sunset Way", "Lakeview Ter"};
const std::vector<std::string> kCities = {"Bayview", "San Mateo", "Redwood City", "Half Moon Bay",
                                          "Belmont"};
const std::vector<std::string> kDomains = {"example.com", "example.net", "example.org"};

const std::vector<std::string> kSaleItems = {
    "Design",  "Installation", "Maintenance", "Consulting", "Labor:Trimming",  "Soil",
    "Mulch",   "Gravel",       "Plants",      "Pump",       "Sprinkler Heads", "Timer",
    "Delivery"};
const std::vector<std::string> kStockItems = {"Pump", "Fountain", "Sprinkler Heads", "Timer"};
const std::vector<std::string> kSuppliers = {
    "Bay Area Nursery", "Coastal Stone Supply",  "Delta Irrigation",
    "Evergreen Tools",  "Green Thumb Wholesale", "Redwood Lumber",
    "Union Hardware",   "West Coast Pumps",      "Quarry Direct"};
const std::vector<std::string> kExpenseAccounts = {
    "Automobile:Fuel", "Insurance", "Rent", "Utilities", "Office Supplies", "Job Expenses"};
const std::vector<std::string> kTimeKeepers = {"Ana Lopez", "Ben Carter", "Chloe Nguyen",
                                               "Diego Ramirez"};

const DocumentCounts kDocuments = {25, 40, 8, 15, 40, 20, 20, 60};

}  // namespace dorvane::qbsandbox::demodata
