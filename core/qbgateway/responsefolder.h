// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — a request processor that answers from response files in a folder.
//
// It stands in for QuickBooks where a fixed answer is wanted (tests, demonstrations of a
// captured answer). A request is answered with the file named after its first request
// element, "Rq" turned into "Rs" ("InvoiceQueryRq" → "InvoiceQueryRs.xml"), else with
// "default.xml". The file "failures.txt" makes operations fail: each line names an
// operation, a code and a description ("BeginSession 0x80040416 no company file open").
// "companyfile.txt" holds the name GetCurrentCompanyFileName answers.
#pragma once

#include <filesystem>

#include "qbgateway/requestprocessor.h"

namespace dorvane::qbgateway {

ProcessorFactory responseFolderFactory(std::filesystem::path folder);

}  // namespace dorvane::qbgateway
