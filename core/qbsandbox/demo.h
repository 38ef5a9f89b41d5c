// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane sandbox — company files: the demo company (a small landscaping business with a year
// and a half of history relative to today) and an empty company.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

namespace dorvane::qbsandbox {

struct DemoOptions {
    int customers = 50;  // customers and jobs together
    int invoices = 120;
    std::uint32_t seed = 20261118;
};

// Creates (replacing) a company file with the demo company. The same options and the same
// "today" give the same company. Throws CompanyFileError when it cannot be written.
void createDemoCompany(const std::filesystem::path& path, const DemoOptions& options);

// Creates (replacing) a company file with only the accounts, tax codes and preferences a new
// QuickBooks company starts with.
void createEmptyCompany(const std::filesystem::path& path, const std::string& companyName);

}  // namespace dorvane::qbsandbox
