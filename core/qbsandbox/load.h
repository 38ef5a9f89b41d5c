// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane sandbox — taking the Ret elements of a captured qbXML response into a company file,
// so a company captured from a real QuickBooks can be rehearsed on.
#pragma once

#include <string>
#include <string_view>

#include "common/result.h"

namespace dorvane::qbsandbox {

class CompanyFile;

struct LoadReport {
    int lists = 0;         // list entries added
    int transactions = 0;  // transactions added
    int skipped = 0;       // entries already present (same ID or name) or not understood
};

// Adds every Ret element of the response. Identifiers, times and amounts are kept as captured;
// references to entries the file does not hold keep their captured name. The error names the
// reason when the text is not a qbXML response.
Result<LoadReport> loadResponse(CompanyFile& file, std::string_view responseText);

}  // namespace dorvane::qbsandbox
