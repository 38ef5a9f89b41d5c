// SPDX-License-Identifier: GPL-3.0-or-later
#include "import/receiptimport.h"

#include "common/files.h"
#include "common/text.h"
#include "import/exchangefile.h"
#include "import/importlog.h"
#include "import/receipt.h"
#include "platform/activitylog.h"
#include "platform/programfolder.h"
#include "ui/uiport.h"

namespace dorvane::imports {

std::optional<std::string> ReceiptImport::readClipboard() {
    if (m_ui.messageBox(kCopyReceiptQuestion, ui::kProgramTitle, ui::Icon::None,
                        ui::Buttons::OkCancel) != ui::Answer::Ok) {
        return std::nullopt;
    }
    return m_ui.clipboardText();
}

std::optional<std::string> ReceiptImport::writeReceiptFile(std::string_view receiptText) {
    if (receiptText.size() > kMaxReceiptText) {
        m_ui.messageBox("The text to import holds " +
                            std::to_string((receiptText.size() + 1023) / 1024) +
                            " KB; an Authorize.Net receipt is a few KB, and Dorvane reads one of "
                            "at most " +
                            std::to_string(kMaxReceiptText / 1024) +
                            " KB. Copy only the receipt from its e-mail or web page, then import "
                            "it again.",
                        ui::kProgramTitle, ui::Icon::Exclamation);
        return std::nullopt;
    }
    if (Status written = m_folder.writeProgramFile(receiptToXml(receiptText), kReceiptFileName,
                                                   files::Durability::Scratch);
        !written) {
        m_ui.messageBox(
            std::string("Cannot write ") + kReceiptFileName + ": " + written.error().description,
            ui::kProgramTitle, ui::Icon::Critical);
        return std::nullopt;
    }
    return m_folder.filePath(std::string("\\") + kReceiptFileName);
}

// A receipt whose transaction is in the import log already is booked again only when the
// person says so.
std::optional<std::string> ReceiptImport::importedBefore(const xml::Document& receipt) const {
    const std::string txnId(text::trim(receipt.valueOf("//TransactionID")));
    if (txnId.empty()) {
        return std::nullopt;
    }
    const auto log = files::readAll(m_folder.filePath(kBatchLogFile));
    const auto date = log ? importLogDate(*log, txnId) : std::nullopt;
    if (!date) {
        return std::nullopt;
    }
    std::string question = std::string(kReceiptAlreadyImported) + "transaction " + txnId;
    const std::string company(text::trim(receipt.valueOf("//Company")));
    const std::string amount(text::trim(receipt.valueOf("//Amount")));
    if (!company.empty() || !amount.empty()) {
        question += " (" + company + (company.empty() || amount.empty() ? "" : ", ") + amount + ")";
    }
    if (!date->empty()) {
        question += ", imported " + *date;
    }
    return question + ".";
}

ConvertedRequest ReceiptImport::salesReceiptRequest(const xml::Document& receipt,
                                                    bool withoutCustomer) const {
    const xml::Node root = selectConversionRoot(receipt, DocumentKind::AuthorizeNet);
    auto sheet = xml::Stylesheet::load(m_folder.filePath(
        withoutCustomer ? kReceiptWithoutCustomerSheet : kReceiptWithCustomerSheet));
    if (!root || !sheet) {
        return {};
    }
    auto request = sheet->transformNode(root);
    if (!request) {
        return {std::nullopt, true, request.error().description};
    }
    return {std::move(request).value(), false, {}};
}

// Recorded as the batch import records its transactions, so a later export that holds this
// transaction skips it.
void ReceiptImport::logBooked(const xml::Document& receipt) {
    const std::string txnId(text::trim(receipt.valueOf("//TransactionID")));
    if (txnId.empty()) {
        return;
    }
    if (Status logged = m_folder.appendProgramFile(importLogRecord(txnId), kBatchLogFile);
        !logged) {
        m_ui.messageBox(std::string("The sales receipt is in QuickBooks, but ") + kBatchLogFile +
                            " could not be written (" + logged.error().description +
                            "). A later batch import may add this transaction again.",
                        ui::kProgramTitle, ui::Icon::Exclamation);
        return;
    }
    platform::noteActivity(m_folder,
                           {.event = std::string(platform::kActivityReceipt),
                            .type = "SalesReceipt",
                            .txnId = txnId,
                            .amount = std::string(text::trim(receipt.valueOf("//Amount"))),
                            .party = std::string(text::trim(receipt.valueOf("//Company"))),
                            .outcome = "booked"});
}

}  // namespace dorvane::imports
