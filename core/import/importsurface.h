// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — what the batch import and the handheld sync see of the import window: its status
// bar, its pane, and the document it has open. The import window implements it; tests may
// implement it with no window at all.
#pragma once

#include <string>
#include <string_view>

#include "xml/xml.h"

namespace dorvane::imports {

// The status text after a step that failed.
inline constexpr const char* kErrorStatus = "An error occurred";

class ImportSurface {
public:
    virtual ~ImportSurface() = default;

    virtual void setImportStatusText(std::string text) = 0;
    // Points the pane at a file of the program folder (and shows it) / replaces the body of the
    // page it shows.
    virtual void navigate(std::string_view fileName) = 0;
    virtual void setBrowserBody(std::string body) = 0;
    // The idle caption, no party label, the Import button off.
    virtual void resetImportWindow() = 0;
    // Opens a file as the person would, and the document it opened.
    virtual void openExchangeFile(const std::string& path) = 0;
    virtual xml::Document& exchangeDocument() = 0;
};

}  // namespace dorvane::imports
