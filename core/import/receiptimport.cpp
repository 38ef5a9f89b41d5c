// SPDX-License-Identifier: GPL-3.0-or-later
// The import window's Authorize.Net receipt: taken from the clipboard (or given as text),
// opened like an exchange file, and booked as a sales receipt with or without a customer.
#include "common/files.h"
#include "common/text.h"
#include "import/importlog.h"
#include "import/importwindow.h"
#include "import/receipt.h"
#include "platform/programfolder.h"
#include "ui/uiport.h"

namespace dorvane::imports {

void ImportWindow::captureAuthorizeNetReceipt() {
    captureReceipt([this] { readReceiptFromClipboard(); });
}

void ImportWindow::captureReceiptText(std::string_view receiptText) {
    captureReceipt([this, receiptText] { openReceiptText(receiptText); });
}

void ImportWindow::captureReceipt(const std::function<void()>& read) {
    setNameTextQuietly({});
    clearSelection();
    read();
    if (!m_settings.ignoreAuthNetCustomer) {
        m_list.enabled = true;
        changed(kVendorListView);
        setControlVisible(kLabel2, true);
        setControlVisible(kNameText, true);
    } else {
        m_list.enabled = false;
        changed(kVendorListView);
        setLabel1({});
        setControlVisible(kLabel2, false);
        setControlVisible(kNameText, false);
    }
}

void ImportWindow::readReceiptFromClipboard() {
    if (m_ui.messageBox(kCopyReceiptQuestion, ui::kProgramTitle, ui::Icon::None,
                        ui::Buttons::OkCancel) != ui::Answer::Ok) {
        return;
    }
    openReceiptText(m_ui.clipboardText());
}

void ImportWindow::openReceiptText(std::string_view receiptText) {
    if (Status written = m_folder.writeProgramFile(receiptToXml(receiptText), kReceiptFileName,
                                                   files::Durability::Scratch);
        !written) {
        m_ui.messageBox(
            std::string("Cannot write ") + kReceiptFileName + ": " + written.error().description,
            ui::kProgramTitle, ui::Icon::Critical);
        return;
    }
    openExchangeFile(m_folder.filePath(std::string("\\") + kReceiptFileName));
}

// A receipt whose transaction is in the import log already is booked again only when the
// person says so.
bool ImportWindow::receiptPassesDuplicateGuard() {
    const std::string txnId(text::trim(m_document.valueOf("//TransactionID")));
    if (txnId.empty()) {
        return true;
    }
    const auto log = files::readAll(m_folder.filePath(kBatchLogFile));
    const auto date = log ? importLogDate(*log, txnId) : std::nullopt;
    if (!date) {
        return true;
    }
    std::string question = std::string(kReceiptAlreadyImported) + "transaction " + txnId;
    const std::string company(text::trim(m_document.valueOf("//Company")));
    const std::string amount(text::trim(m_document.valueOf("//Amount")));
    if (!company.empty() || !amount.empty()) {
        question += " (" + company + (company.empty() || amount.empty() ? "" : ", ") + amount + ")";
    }
    if (!date->empty()) {
        question += ", imported " + *date;
    }
    question += ".";
    if (confirmAgain(question)) {
        return true;
    }
    m_outcome = ImportOutcome::NotSent;
    setImportStatusText("imported before");
    return false;
}

void ImportWindow::importAuthorizeNetReceipt() {
    m_outcome = ImportOutcome::NotSent;
    m_report = {};
    if (!receiptPassesDuplicateGuard()) {
        return;
    }
    const ui::BusyScope busy(m_ui);
    std::string name;
    if (!m_settings.ignoreAuthNetCustomer) {
        name = std::string(text::trim(m_nameText));
        const auto found = m_list.findWholeWord(name);
        if (!found && !name.empty()) {
            if (!addCustomerFromReceipt(name)) {
                return;
            }
            if (!m_document.selectOne("//Company")) {
                m_outcome = ImportOutcome::NotSent;
                m_ui.messageBox(kCannotRetrieveCustomerName);
                return;
            }
        } else if (found && !name.empty()) {
            if (xml::Node company = m_document.selectOne("//Company")) {
                company.setText(m_list.items[*found]);
            }
        }
    }
    const xml::Node root = selectConversionRoot(m_document, DocumentKind::AuthorizeNet);
    const bool withoutCustomer = name.empty() || m_settings.ignoreAuthNetCustomer;
    auto sheet = xml::Stylesheet::load(m_folder.filePath(
        withoutCustomer ? kReceiptWithoutCustomerSheet : kReceiptWithCustomerSheet));
    if (!root || !sheet) {
        m_outcome = ImportOutcome::NotSent;
        return;
    }
    auto request = sheet->transformNode(root);
    if (!request || !sendAddRequest(*request)) {
        if (!request) {
            m_outcome = ImportOutcome::NotSent;
        }
        setImportStatusText(kErrorStatus);
        return;
    }
    setImportStatusText(kReceiptAddedStatus);
    setBrowserBody(kReceiptAddedPage);
    // Recorded as the batch import records its transactions, so a later export that holds
    // this transaction skips it.
    const std::string txnId(text::trim(m_document.valueOf("//TransactionID")));
    if (txnId.empty()) {
        return;
    }
    if (Status logged = m_folder.appendProgramFile(importLogRecord(txnId), kBatchLogFile);
        !logged) {
        m_ui.messageBox(std::string("The sales receipt is in QuickBooks, but ") + kBatchLogFile +
                            " could not be written (" + logged.error().description +
                            "). A later batch import may add this transaction again.",
                        ui::kProgramTitle, ui::Icon::Exclamation);
    }
}

}  // namespace dorvane::imports
