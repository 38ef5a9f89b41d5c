// SPDX-License-Identifier: GPL-3.0-or-later
#include "batch/batchimport.h"

#include <algorithm>
#include <cctype>

#include "common/clock.h"
#include "common/text.h"
#include "import/assignment.h"
#include "import/exchangefile.h"
#include "import/importsurface.h"
#include "import/receipt.h"
#include "platform/activitylog.h"
#include "platform/programfolder.h"
#include "platform/settings.h"
#include "qbgateway/gateway.h"
#include "qbgateway/response.h"
#include "ui/uiport.h"

namespace dorvane::batch {
namespace {

// How a receipt names its transaction in the memo (the receipt sheets write it first).
constexpr std::string_view kMemoMarker = "Authorize.Net transaction ";

std::string field(const xml::Node& record, std::string_view name) {
    return record.firstChildElement(name).text();
}

// The receipt's date as the request gives it; today (QuickBooks' default) when it gives none.
std::string requestDate(std::string_view request) {
    constexpr std::string_view open = "<TxnDate>";
    const auto from = request.find(open);
    const auto to = from == std::string_view::npos ? from : request.find("</TxnDate>", from);
    if (to == std::string_view::npos) {
        return clock::todayIso();
    }
    return std::string(request.substr(from + open.size(), to - from - open.size()));
}

bool memoNames(std::string_view memo, std::string_view txnId) {
    const std::string marker = std::string(kMemoMarker) + std::string(txnId);
    for (auto at = memo.find(marker); at != std::string_view::npos;
         at = memo.find(marker, at + 1)) {
        const auto after = at + marker.size();
        if (after == memo.size() || !std::isalnum(static_cast<unsigned char>(memo[after]))) {
            return true;
        }
    }
    return false;
}

// One line of a results page. Its text comes from the download, so it is markup-escaped.
std::string dt(const std::string& text) {
    return "<dt>" + xml::escapeText(text) + "</dt>";
}

// The records a reader has left: its lines with anything on them.
std::size_t countRecords(CsvLineReader& reader) {
    std::size_t count = 0;
    while (auto line = reader.next()) {
        if (line->find_first_not_of(" \t") != std::string::npos) {
            ++count;
        }
    }
    return count;
}

}  // namespace

std::string missingColumns(const Fields& header, const std::string& fileName) {
    std::string missing;
    for (const RequiredColumn& column : kRequiredColumns) {
        if (std::find(header.begin(), header.end(), column.field) == header.end()) {
            missing += missing.empty() ? "" : ", ";
            missing += '"';
            missing += column.heading;
            missing += '"';
        }
    }
    if (missing.empty()) {
        return {};
    }
    // A hostile header may hold thousands of names: the first few tell what the file is.
    constexpr std::size_t kNamesShown = 30;
    std::string holds;
    for (std::size_t i = 0; i < header.size() && i < kNamesShown; ++i) {
        holds += i == 0 ? "" : ", ";
        holds += header[i].substr(0, 64);
    }
    if (header.size() > kNamesShown) {
        holds += ", ... (" + std::to_string(header.size()) + " columns)";
    }
    const bool one = missing.find(',') == std::string::npos;
    return fileName + " is not imported: its header lacks the column" + (one ? " " : "s ") +
           missing + " of an Authorize.Net transaction download (the header holds: " +
           (holds.empty() ? std::string("nothing") : holds) +
           "). Download the transactions again with these columns; nothing was booked.";
}

std::string stopReport(const RunSummary& run) {
    if (!run.stopped || !run.refusedFile.empty()) {
        return {};
    }
    const char* why = run.unreachable ? "QuickBooks could not be reached"
                      : run.cancelled ? "cancelled"
                                      : "a failure";
    std::string text = "The import stopped";
    text += run.stoppedAt.empty() ? " before its first transaction"
                                  : " at transaction " + run.stoppedAt;
    text += ": ";
    text += why;
    text += ". " + std::to_string(run.notTried) +
            (run.notTried == 1 ? " transaction was" : " transactions were") + " not tried";
    text += run.stoppedAt.empty() ? "" : ", that one included";
    text += ". Import the same file again to go on where it stopped; nothing is booked twice.";
    return text;
}

struct BatchImport::Sheets {
    xml::Stylesheet receipt;
    std::optional<xml::Stylesheet> customer;
    bool createCustomers = false;
};

BatchImport::BatchImport(imports::ImportSurface& window, ui::UiPort& ui,
                         const platform::ProgramFolder& folder, qbgateway::Gateway& gateway,
                         imports::ImportSettingsSource& settings)
    : m_window(window),
      m_ui(ui),
      m_folder(folder),
      m_gateway(gateway),
      m_settings(settings),
      m_log(folder),
      m_journal(folder) {}

// ---- the menu entries ------------------------------------------------------------------

void BatchImport::impAuthNetBatch() {
    const auto file = m_ui.openFileDialog(kSelectBatchFileTitle, kBatchFileFilter);
    if (file && !file->empty()) {
        processAuthNetBatch(*file);
    }
}

void BatchImport::impAuthNetBulk() {
    if (m_ui.messageBox(kBulkWarning, ui::kProgramTitle, ui::Icon::None, ui::Buttons::OkCancel) !=
        ui::Answer::Ok) {
        return;
    }
    const auto file = m_ui.openFileDialog(kSelectBatchFileTitle, kBatchFileFilter);
    if (file && !file->empty()) {
        processAuthNetBulk(*file);
    }
}

// ---- runs --------------------------------------------------------------------------------

bool BatchImport::quotedFields() const {
    if (m_quotedOverride) {
        return *m_quotedOverride;
    }
    return m_settings.store().getInt(imports::kImportSection, imports::kQuotedFieldsKey, 0) != 0;
}

CsvOptions BatchImport::csvOptions(std::vector<std::size_t>* cut) const {
    CsvOptions options;
    options.quoting = quotedFields() ? FieldQuoting::Rfc4180 : FieldQuoting::Exported;
    options.cutRecords = cut;
    return options;
}

// Starts a run: the waiting page, the settings, the log, and the receipt an earlier run may
// have left unfinished. False when the run cannot start.
Fields BatchImport::readHeader(CsvLineReader& reader, std::string& delimiter) const {
    auto header = reader.next();
    return header ? headerFieldNames(*header, delimiter, csvOptions(nullptr).quoting) : Fields{};
}

bool BatchImport::beginRun(CsvLineReader& reader, const Fields& names,
                           const std::string& fileName) {
    if (m_running) {
        return false;
    }
    m_running = true;
    m_cancelRequested = false;
    m_keepJournal = false;
    m_summary = {};
    m_listed = 0;
    m_window.navigate(kStartPage);
    m_ui.yield();
    m_settings.reload();
    m_log.refresh();
    bool ok = acceptHeader(names, fileName);
    if (ok && !recoverInterruptedReceipt()) {
        m_summary.unreachable = true;
        m_summary.stopped = true;
        m_summary.notTried = countRecords(reader);
        m_window.setImportStatusText(imports::kErrorStatus);
        showStop(kResultsHead);
        ok = false;
    }
    if (!ok) {
        m_running = false;
        progress(-1);
        return false;
    }
    progress(0);
    return true;
}

bool BatchImport::acceptHeader(const Fields& names, const std::string& fileName) {
    m_summary.refusedFile = missingColumns(names, fileName);
    if (m_summary.refusedFile.empty()) {
        return true;
    }
    m_summary.stopped = true;
    m_window.setImportStatusText("Not imported: columns missing");
    m_window.setBrowserBody(std::string(kResultsHead) + "<p>" +
                            xml::escapeText(m_summary.refusedFile) + "</p></body>");
    return false;
}

void BatchImport::list(std::vector<std::string>& lines, std::string text) {
    if (m_summary.unlisted == 0 && m_listed < kMaxPageLines) {
        ++m_listed;
        lines.push_back(std::move(text));
    } else {
        ++m_summary.unlisted;
    }
}

// The page of a run that stopped early ends with where it stopped and what to do.
void BatchImport::showStop(std::string page) {
    if (m_summary.unlisted > 0) {
        page += "<p>" + std::to_string(m_summary.unlisted) +
                (m_summary.unlisted == 1 ? " more result is" : " more results are") +
                " not listed here, to keep the page small enough to open.</p>";
    }
    if (const std::string stop = stopReport(m_summary); !stop.empty()) {
        page += "<p>" + xml::escapeText(stop) + "</p>";
        if (m_summary.unreachable) {
            m_window.setImportStatusText("Import stopped: QuickBooks could not be reached");
        }
    }
    page += kReviewTail;
    m_window.setBrowserBody(std::move(page));
}

void BatchImport::endRun() {
    // Every receipt sent has its outcome, unless the run stopped without knowing one.
    if (!m_keepJournal) {
        m_journal.clear();
    }
    // A log that cannot be created is said when a record could not be logged; nothing was
    // added otherwise.
    [[maybe_unused]] const Status created = m_log.create();
    m_running = false;
    progress(-1);
}

// A receipt noted in the journal but not in the log went out when a run was killed: asked of
// QuickBooks, and logged when it is there. False when QuickBooks cannot tell.
bool BatchImport::recoverInterruptedReceipt() {
    const auto entry = m_journal.pending();
    if (!entry) {
        return true;
    }
    if (m_log.holdsExactly(entry->txnId)) {
        m_journal.clear();
        return true;
    }
    const auto found = receiptInQuickBooks(*entry);
    if (!found) {
        return false;
    }
    if (*found) {
        if (Status logged = m_log.append(entry->txnId); !logged) {
            m_ui.messageBox(std::string("Could not write ") + imports::kBatchLogFile + ": " +
                            logged.error().description);
            return false;
        }
        m_window.setImportStatusText("Transaction " + entry->txnId +
                                     " of the interrupted import is in QuickBooks: logged");
    }
    m_journal.clear();
    return true;
}

std::optional<bool> BatchImport::receiptInQuickBooks(const BatchJournal::Entry& entry) {
    const std::string query =
        "<QBXML><QBXMLMsgsRq onError=\"stopOnError\"><SalesReceiptQueryRq "
        "requestID=\"1\"><TxnDateRangeFilter><FromTxnDate>" +
        xml::escapeText(entry.date) + "</FromTxnDate><ToTxnDate>" + xml::escapeText(entry.date) +
        "</ToTxnDate></TxnDateRangeFilter></SalesReceiptQueryRq></QBXMLMsgsRq></QBXML>";
    const std::string response = m_gateway.processRequest(imports::withRequestProlog(query));
    if (response.empty() || !qbgateway::checkResponseStatus(response, nullptr)) {
        return std::nullopt;
    }
    auto doc = xml::Document::parse(response);
    if (!doc) {
        return std::nullopt;
    }
    for (const xml::Node& memo : doc->selectAll("//SalesReceiptRet/Memo")) {
        if (memoNames(memo.text(), entry.txnId)) {
            return true;
        }
    }
    return false;
}

bool BatchImport::loadSheets(Sheets& sheets) {
    sheets.createCustomers = !m_settings.current().ignoreAuthNetCustomer;
    const auto& folder = m_folder;
    auto receipt = xml::Stylesheet::load(
        folder.filePath(sheets.createCustomers ? kReceiptSheet : kReceiptWithoutCustomerSheet));
    if (!receipt) {
        m_window.setImportStatusText(kConversionFailed);
        return false;
    }
    sheets.receipt = std::move(receipt).value();
    if (auto customer = xml::Stylesheet::load(folder.filePath(kCustomerSheet))) {
        sheets.customer = std::move(customer).value();
    }
    return true;
}

void BatchImport::report(RecordOutcome outcome) {
    switch (outcome.kind) {
        case RecordOutcome::Kind::Added:
            ++m_summary.added;
            break;
        case RecordOutcome::Kind::NotApproved:
            ++m_summary.notApproved;
            break;
        case RecordOutcome::Kind::AlreadyImported:
            ++m_summary.alreadyImported;
            break;
        case RecordOutcome::Kind::Refused:
        case RecordOutcome::Kind::NotImported:
            ++m_summary.refused;
            break;
    }
    if (m_recordHandler) {
        m_recordHandler(outcome);
    }
}

void BatchImport::progress(int percent) {
    if (m_progressHandler) {
        m_progressHandler(percent);
    }
}

void BatchImport::processAuthNetBatch(const std::string& fileName) {
    const FieldQuoting quoting = csvOptions(nullptr).quoting;
    CsvLineReader reader(fileName, quoting);
    std::string delimiter = ",";
    const Fields names = readHeader(reader, delimiter);
    if (!beginRun(reader, names, fileName)) {
        return;
    }
    Sheets sheets;
    if (!loadSheets(sheets)) {
        endRun();
        return;
    }
    // The file is converted a chunk at a time, as the bulk import does, so that what the run
    // holds does not grow with the file: only the page does, a line per record.
    {
        CsvLineReader counter(fileName, quoting);
        counter.next();
        m_batchTotal = countRecords(counter);
    }
    m_batchDone = 0;
    std::string page = kResultsHead;
    std::vector<std::string> lines;
    std::vector<std::string> results;
    bool going = true;
    while (going) {
        auto line = reader.next();
        if (line) {
            lines.push_back(std::move(*line));
        }
        if (lines.size() >= kChunkLines || (!line && !lines.empty())) {
            std::vector<std::size_t> cut;
            const xml::Document document =
                csvLinesToXml(names, lines, kRecordTag, kRootTag, delimiter, csvOptions(&cut));
            lines.clear();
            guardedRecords(document, cut, Mode::Batch, sheets, results);
            for (const std::string& result : results) {
                page += result;
            }
            results.clear();
            going = !m_summary.stopped;
        }
        going = going && line.has_value();
    }
    if (m_summary.stopped) {
        m_summary.notTried += countRecords(reader);
    }
    m_ui.yield();
    showStop(std::move(page));
    if (m_summary.cancelled) {
        m_window.setImportStatusText("Import cancelled");
    }
    endRun();
}

void BatchImport::processAuthNetBulk(const std::string& fileName) {
    CsvLineReader reader(fileName, csvOptions(nullptr).quoting);
    std::string delimiter = ",";
    const Fields names = readHeader(reader, delimiter);
    if (!beginRun(reader, names, fileName)) {
        return;
    }
    std::vector<std::string> exceptions;
    std::vector<std::string> lines;
    auto chunk = [&] {
        processAuthNetBatchFromString(lines, names, delimiter, exceptions);
        lines.clear();
        if (reader.size() > 0) {
            progress(static_cast<int>(reader.position() * 100 / reader.size()));
        }
        return !m_summary.stopped;
    };
    bool going = true;
    while (going) {
        auto line = reader.next();
        if (!line) {
            break;
        }
        lines.push_back(std::move(*line));
        if (lines.size() >= kChunkLines) {
            going = chunk();
        }
    }
    if (going) {
        chunk();
    } else {
        m_summary.notTried += countRecords(reader);
    }
    std::string page = kExceptionsHead;
    for (const std::string& text : exceptions) {
        page += dt(text);
    }
    m_window.setImportStatusText(m_summary.cancelled ? "Import cancelled" : "Done");
    showStop(std::move(page));
    endRun();
}

void BatchImport::processAuthNetBatchFromString(const std::vector<std::string>& lines,
                                                const Fields& fieldNames,
                                                std::string_view delimiter,
                                                std::vector<std::string>& exceptions) {
    if (m_chunkHandler) {
        m_chunkHandler(lines.size());
    }
    const bool standalone = !m_running;
    if (standalone) {
        m_running = true;
        m_cancelRequested = false;
        m_keepJournal = false;
        m_summary = {};
        m_listed = 0;
        m_settings.reload();
        m_log.refresh();
        if (!recoverInterruptedReceipt()) {
            m_summary.unreachable = m_summary.stopped = true;
            m_running = false;
            return;
        }
    }
    std::vector<std::size_t> cut;
    const xml::Document document =
        csvLinesToXml(fieldNames, lines, kRecordTag, kRootTag, delimiter, csvOptions(&cut));
    Sheets sheets;
    if (loadSheets(sheets)) {
        m_log.refresh();
        guardedRecords(document, cut, Mode::Bulk, sheets, exceptions);
    }
    m_ui.yield();
    if (standalone) {
        endRun();
    }
}

// ---- the records ------------------------------------------------------------------------

// An unexpected failure leaves the record loop; what QuickBooks accepted so far is logged.
void BatchImport::guardedRecords(const xml::Document& document, const std::vector<std::size_t>& cut,
                                 Mode mode, Sheets& sheets, std::vector<std::string>& lines) {
    try {
        processRecords(document, cut, mode, sheets, lines);
    } catch (const std::exception& e) {
        m_summary.stopped = true;
        m_keepJournal = true;
        m_ui.messageBox(std::string("The batch import stopped: ") + e.what(), ui::kProgramTitle,
                        ui::Icon::Exclamation);
    }
}

bool BatchImport::processRecords(const xml::Document& document, const std::vector<std::size_t>& cut,
                                 Mode mode, Sheets& sheets, std::vector<std::string>& lines) {
    ui::UiPort& ui = m_ui;
    qbgateway::Gateway& gateway = m_gateway;
    const bool batch = mode == Mode::Batch;
    const std::vector<xml::Node> records = document.root().selectAll(kRecordTag);
    std::size_t at = 0;
    auto stop = [&](const std::string& why) {
        m_summary.stopped = true;
        m_summary.notTried += records.size() - at;
        if (at < records.size()) {
            m_summary.stoppedAt = field(records[at], "TransactionID");
        }
        if (!why.empty()) {
            ui.messageBox("The batch import stopped: " + why, ui::kProgramTitle,
                          ui::Icon::Exclamation);
        }
        return false;
    };
    auto send = [&](const std::string& body) {
        return gateway.processRequest(imports::withRequestProlog(body));
    };
    auto cutAt = cut.begin();
    for (std::size_t i = 0; i < records.size(); ++i) {
        at = i;
        if (m_cancelRequested) {
            m_summary.cancelled = true;
            return stop({});
        }
        const xml::Node& record = records[i];
        RecordOutcome outcome;
        outcome.transactionId = field(record, "TransactionID");
        outcome.company = field(record, "Company");
        outcome.amount = field(record, "TotalAmount");
        const std::string& txnId = outcome.transactionId;
        std::string& company = outcome.company;
        const std::string& amount = outcome.amount;
        auto line = [&](const std::string& text) { list(lines, batch ? dt(text) : text); };

        while (cutAt != cut.end() && *cutAt < i) {
            ++cutAt;
        }
        if (cutAt != cut.end() && *cutAt == i) {
            // Its later values are shifted: only the transaction ID can be trusted.
            outcome.kind = RecordOutcome::Kind::NotImported;
            outcome.company.clear();
            outcome.amount.clear();
            outcome.reason = kCutQuoteReason;
            line("Transaction " + txnId + " not imported: " + kCutQuoteReason + ".");
            report(std::move(outcome));
            continue;
        }
        if (field(record, "AuthorizationCode").empty()) {
            outcome.kind = RecordOutcome::Kind::NotApproved;
            line("Transaction for " + company + " " + amount + " not approved.");
            report(std::move(outcome));
            continue;
        }
        if (text::trim(txnId).empty()) {
            // Without its ID a receipt could be booked again by every later run.
            outcome.kind = RecordOutcome::Kind::NotImported;
            outcome.reason = kNoTransactionIdReason;
            line("Transaction for " + company + " " + amount +
                 " not imported: " + kNoTransactionIdReason + ".");
            report(std::move(outcome));
            continue;
        }
        if (m_log.holds(txnId)) {
            outcome.kind = RecordOutcome::Kind::AlreadyImported;
            line("Transaction for " + company + " " + amount + " ignored. Already imported.");
            report(std::move(outcome));
            continue;
        }

        if (sheets.createCustomers) {
            if (company.empty()) {
                company =
                    field(record, "CustomerFirstName") + " " + field(record, "CustomerLastName");
                record.firstChildElement("Company").setText(company);
            }
            if (!sheets.customer) {
                return stop(std::string(kCustomerSheet) + " could not be loaded.");
            }
            auto request = sheets.customer->transformNode(record);
            if (!request) {
                return stop(request.error().description);
            }
            const std::string response = send(*request);
            if (response.empty()) {
                m_summary.unreachable = true;
                return stop({});
            }
            if (batch) {
                const bool ok = qbgateway::isResponseOK(response, ui);
                line(company + (ok ? " added." : " failed. Customer already defined."));
            } else if (const Status s = qbgateway::checkResponseStatus(response, nullptr); !s) {
                list(lines, s.error().description + ". Customer already defined");
                m_window.setImportStatusText(s.error().description + ". Customer already defined");
            } else {
                m_window.setImportStatusText(company + " added.");
            }
        }

        auto converted = sheets.receipt.transformNode(record);
        if (!converted) {
            return stop(converted.error().description);
        }
        std::string request = std::move(converted).value();
        imports::applyItemAssignment(request, m_settings.current());
        const BatchJournal::Entry entry{requestDate(request), txnId};
        if (Status noted = m_journal.note(entry.date, entry.txnId); !noted) {
            return stop(std::string("Could not write ") + kJournalFile + ": " +
                        noted.error().description);
        }
        const std::string response = send(request);
        bool ok = false;
        std::string status;
        if (response.empty()) {
            // No answer: the receipt may or may not have reached QuickBooks. Asked now, so the
            // log stays true; when that fails too, the journal keeps the question.
            const auto found = receiptInQuickBooks(entry);
            if (!found) {
                m_summary.unreachable = true;
                m_keepJournal = true;
                return stop({});
            }
            ok = *found;
            status = ok ? "" : "QuickBooks did not answer";
        } else {
            const Status checked = qbgateway::checkResponseStatus(response, batch ? &ui : nullptr);
            ok = checked.ok();
            status = ok ? "" : checked.error().description;
        }
        if (!ok) {
            outcome.kind = RecordOutcome::Kind::Refused;
            outcome.reason = status;
            if (batch) {
                m_window.setImportStatusText(imports::kErrorStatus);
                line("Could not add sales receipt for " + company + " " + amount + " added.");
            } else {
                list(lines, status);
                m_window.setImportStatusText(std::string(imports::kErrorStatus) + " " + status);
            }
            report(std::move(outcome));
        } else {
            if (Status logged = m_log.append(txnId); !logged) {
                // The journal still names this receipt: the next run logs it.
                m_keepJournal = true;
                report(std::move(outcome));
                return stop("the sales receipt for " + company + " " + amount +
                            " is in QuickBooks, but " + imports::kBatchLogFile +
                            " could not be written (" + logged.error().description + ").");
            }
            platform::noteActivity(m_folder, {.event = std::string(platform::kActivityBatch),
                                              .type = "SalesReceipt",
                                              .txnId = txnId,
                                              .amount = amount,
                                              .party = company,
                                              .outcome = "booked"});
            if (batch) {
                m_window.setImportStatusText(imports::kReceiptAddedStatus);
                line("Sales receipt for " + company + " " + amount + " added.");
            } else {
                m_window.setImportStatusText("Salesreceipt added (" + txnId + ")");
            }
            report(std::move(outcome));
        }
        if (batch && m_batchTotal > 0) {
            ++m_batchDone;
            progress(static_cast<int>(std::min(m_batchDone, m_batchTotal) * 100 / m_batchTotal));
        }
        ui.yield();
    }
    return true;
}

}  // namespace dorvane::batch
