// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane sandbox — what a new company and the demo company are made of, as plain tables;
// demo.cpp writes them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace dorvane::qbsandbox::demodata {

// A setting or a field of a list record. With `space` set, `value` is the full name of a list
// record in that name space (or of that kind) and its ListID is stored.
struct Field {
    const char* key;
    const char* value;
    const char* space = nullptr;
};

struct ListEntry {
    const char* kind;
    const char* name;
    std::vector<Field> fields;
    const char* parent = nullptr;  // full name of the parent record
    bool active = true;
    std::int64_t balanceCents = 0;
};

// Every new company.
extern const std::vector<Field> kPreferences;
extern const std::vector<ListEntry> kStartingLists;

// The demo company: a landscaping business.
extern const char* const kCompanyName;
extern const std::vector<Field> kCompanyIdentity;
extern const std::int64_t kCheckingBalanceCents;
// Accounts, terms, payroll items and services, in the order they are written.
extern const std::vector<ListEntry> kLists;

// Materials bought and sold; the inventory ones start with a random quantity on hand.
struct Material {
    bool inventory;
    const char* name;
    const char* desc;
    const char* price;
    const char* cost;
};
extern const std::vector<Material> kMaterials;
// The items written after the materials: charges, groups, discounts and the like.
extern const std::vector<ListEntry> kMoreItems;
extern const std::vector<std::string> kVendorNames;
// Written after the vendors, whom the tax items name.
extern const std::vector<ListEntry> kSalesTaxItems;
extern const std::vector<Field> kSalesTaxPreferences;

struct Employee {
    const char* first;
    const char* last;
    const char* type;
};
extern const std::vector<Employee> kEmployees;
extern const std::vector<ListEntry> kOtherNames;

// Names customers and jobs are made of.
extern const std::vector<std::string> kFirstNames;
extern const std::vector<std::string> kLastNames;
extern const std::vector<std::string> kCompanies;
extern const std::vector<std::string> kJobs;
extern const std::vector<std::string> kJobStatuses;
extern const std::vector<std::string> kStreets;
extern const std::vector<std::string> kCities;
extern const std::vector<std::string> kDomains;

// What the transactions pick from.
extern const std::vector<std::string> kSaleItems;
extern const std::vector<std::string> kStockItems;
extern const std::vector<std::string> kSuppliers;
extern const std::vector<std::string> kExpenseAccounts;
extern const std::vector<std::string> kTimeKeepers;

// How many of each document besides invoices and payments.
struct DocumentCounts {
    int estimates;
    int salesReceipts;
    int creditMemos;
    int purchaseOrders;
    int bills;
    int checks;
    int cardCharges;
    int timeEntries;
};
extern const DocumentCounts kDocuments;

}  // namespace dorvane::qbsandbox::demodata
