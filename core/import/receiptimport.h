// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — an Authorize.Net receipt taken one at a time: read from the clipboard (or given as
// text) into the receipt document, never booked twice without asking, converted into a sales
// receipt with or without a customer, and recorded in the import log as the batch import
// records its own.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "import/conversion.h"
#include "xml/xml.h"

namespace dorvane::platform {
class ProgramFolder;
}

namespace dorvane::ui {
class UiPort;
}

namespace dorvane::imports {

inline constexpr const char* kReceiptAlreadyImported =
    "This Authorize.Net transaction was imported before: ";

class ReceiptImport {
public:
    ReceiptImport(ui::UiPort& ui, const platform::ProgramFolder& folder)
        : m_ui(ui), m_folder(folder) {}

    // Asks for the receipt in the clipboard; its text, nullopt when the person cancelled.
    std::optional<std::string> readClipboard();
    // Writes the receipt document of `receiptText` to "tmpauthorize.xml"; the file's path,
    // nullopt when the text is longer than any receipt (kMaxReceiptText) or the file could not
    // be written (the box said why).
    std::optional<std::string> writeReceiptFile(std::string_view receiptText);

    // The question to ask when the import log holds the receipt's transaction already; nullopt
    // when it does not.
    std::optional<std::string> importedBefore(const xml::Document& receipt) const;

    // The sales receipt's add request, with the document's company as customer or with none.
    ConvertedRequest salesReceiptRequest(const xml::Document& receipt, bool withoutCustomer) const;

    // Records the booked receipt's transaction in the import log; says so when it cannot.
    void logBooked(const xml::Document& receipt);

private:
    ui::UiPort& m_ui;
    const platform::ProgramFolder& m_folder;
};

}  // namespace dorvane::imports
