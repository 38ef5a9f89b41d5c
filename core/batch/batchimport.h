// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — the Authorize.Net batch import: a downloaded transaction file booked as sales
// receipts, with or without creating their customers, never twice.
//
// Two ways in, both from the import window's Options menu: the batch import reports every
// record ("Batch Import Results"); the bulk import reports only the exceptions ("Batch Import
// Exceptions"). Both read and convert the file in chunks of 51 lines, so that a run holds the
// same little whatever the size or shape of the file.
// Each approved record not in "BatchImport.log" is converted by a style sheet into a qbXML
// add request, rewritten onto the import settings and sent; an accepted receipt is logged at
// once. A journal makes a run killed at any moment safe to run again (batch/batchlog.h).
//
// A record whose line lost a quoted value to a cut at a delimiter (a comma-separated download
// read without quoted fields) has its later values shifted: it is reported and never booked.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "batch/batchlog.h"
#include "batch/csvtoxml.h"
#include "xml/xml.h"

namespace dorvane::imports {
class ImportSettingsSource;
class ImportSurface;
}  // namespace dorvane::imports

namespace dorvane::platform {
class ProgramFolder;
}

namespace dorvane::qbgateway {
class Gateway;
}

namespace dorvane::ui {
class UiPort;
}

namespace dorvane::batch {

inline constexpr const char* kSelectBatchFileTitle = "Select Authorize.Net Batch file";
inline constexpr const char* kBatchFileFilter =
    "Delimited (*.csv)|*.csv|Text (*.txt)|*.txt|All files (*.*)|*.*";
inline constexpr const char* kBulkWarning =
    "You will import a number of transactions into Quickbooks. \r\nIt is strongly recommended "
    "that you BACK UP your Quickbooks company file BEFORE you import these transactions.\r\n"
    "Press OK to proceed or CANCEL to abort the import";
inline constexpr const char* kStartPage = "startBatch.htm";
inline constexpr const char* kCustomerSheet = "BatchCustomerFromAuthorize.xslt";
inline constexpr const char* kReceiptSheet = "BatchSReceiptFromAuthorize.xslt";
inline constexpr const char* kReceiptWithoutCustomerSheet = "BatchSReceiptFromAuthorizewoCust.xslt";
inline constexpr const char* kConversionFailed =
    "Authorize.Net Salesreceipt Batch conversion failed";
inline constexpr const char* kRecordTag = "AuthNetRecord";
inline constexpr const char* kRootTag = "AuthNetFile";
// Lines handed to processAuthNetBatchFromString at a time.
inline constexpr std::size_t kChunkLines = 51;
// The most result lines a run's page lists; the rest are counted at its end, so that a file
// of millions of lines still makes a page that opens.
inline constexpr std::size_t kMaxPageLines = 10000;

inline constexpr const char* kResultsHead =
    "<body><p align='center'><b><font color='#0000FF'>Batch Import Results</font></b></p>";
inline constexpr const char* kExceptionsHead =
    "<body><p align='center'><b><font color='#0000FF'>Batch Import Exceptions</font></b></p>";
inline constexpr const char* kReviewTail =
    "<p align='center'><b>Please review the results in Quickbooks ( Customer/SalesReceipts or "
    "Accounts/UndepositedFunds) </p><p align='center'>and, if necessary, adjust Items and "
    "Tax.</p></body>";
// Why a record cut at a quoted delimiter is not booked, and what to do about it.
inline constexpr const char* kCutQuoteReason =
    "a quoted value holds the delimiter and was cut there, which shifts the later fields. "
    "Turn on quoted fields in the import preferences (or use --quoted), or download the file "
    "tab-delimited, and import it again";

// Why an approved record without a transaction ID is not booked: the ID is what keeps it from
// being booked twice.
inline constexpr const char* kNoTransactionIdReason = "no transaction ID";

// The columns the import reads: their names as records carry them, and as a download heads
// them. A file without one of them is refused whole, before anything is booked.
struct RequiredColumn {
    const char* field;
    const char* heading;
};
inline constexpr RequiredColumn kRequiredColumns[] = {
    {"TransactionID", "Transaction ID"},
    {"AuthorizationCode", "Authorization Code"},
    {"TotalAmount", "Total Amount"},
    {"Company", "Company"},
    {"CustomerFirstName", "Customer First Name"},
    {"CustomerLastName", "Customer Last Name"},
};
// Empty when the header names every required column; otherwise what is missing and what the
// header holds, as a sentence about `fileName`.
std::string missingColumns(const Fields& header, const std::string& fileName);

// What became of one record.
struct RecordOutcome {
    enum class Kind { Added, NotApproved, AlreadyImported, Refused, NotImported };
    Kind kind = Kind::Added;
    std::string transactionId;
    std::string company;
    std::string amount;
    std::string reason;  // QuickBooks' message for Refused, why for NotImported
};

// What a run did.
struct RunSummary {
    std::size_t added = 0;
    std::size_t notApproved = 0;
    std::size_t alreadyImported = 0;
    std::size_t refused = 0;   // refused by QuickBooks, or not imported (cut values)
    bool unreachable = false;  // QuickBooks could not be reached; the run stopped
    bool stopped = false;      // the run ended early (cancelled, a failure)
    bool cancelled = false;
    std::string refusedFile;   // why the file was refused whole; nothing of it was booked
    std::string stoppedAt;     // the transaction under way when the run stopped
    std::size_t notTried = 0;  // records the stopped run left untried, that one included
    std::size_t unlisted = 0;  // result lines left off the page (past kMaxPageLines)
};

// After a run that stopped early: where, how much was left, and that running the same file
// again goes on there. Empty for a run that went through.
std::string stopReport(const RunSummary& run);

class BatchImport {
public:
    // Reports in `window`'s status bar and pane.
    BatchImport(imports::ImportSurface& window, ui::UiPort& ui,
                const platform::ProgramFolder& folder, qbgateway::Gateway& gateway,
                imports::ImportSettingsSource& settings);

    // ---- the Options menu's entries ----
    // ImpAuthNetBatch: the file dialog, then processAuthNetBatch.
    void impAuthNetBatch();
    // ImpAuthNetBulk: the back-up warning, the file dialog, then processAuthNetBulk.
    void impAuthNetBulk();

    // ---- the runs ----
    void processAuthNetBatch(const std::string& fileName);
    void processAuthNetBulk(const std::string& fileName);
    // One chunk of data lines of the bulk import; adds its exceptions to `exceptions`.
    void processAuthNetBatchFromString(const std::vector<std::string>& lines,
                                       const Fields& fieldNames, std::string_view delimiter,
                                       std::vector<std::string>& exceptions);

    // Quoted fields for the next runs regardless of the setting (the command line's --quoted);
    // nullopt: the setting "Import"/"QuotedFields" decides.
    void setQuotedFields(std::optional<bool> quoted) { m_quotedOverride = quoted; }
    // Stops a run after the record under way; the log stays true.
    void cancel() { m_cancelRequested = true; }
    bool running() const { return m_running; }

    // Called for every record, as it is done.
    void onRecord(std::function<void(const RecordOutcome&)> handler) {
        m_recordHandler = std::move(handler);
    }
    // Called as a run goes on: percent done (0-100), -1 when it ended.
    void onProgress(std::function<void(int)> handler) { m_progressHandler = std::move(handler); }

    // Called with the number of lines of every chunk the bulk import hands on.
    void onChunk(std::function<void(std::size_t)> handler) { m_chunkHandler = std::move(handler); }

    const RunSummary& lastRun() const { return m_summary; }

private:
    enum class Mode { Batch, Bulk };
    struct Sheets;

    // The header of the file `reader` reads (the delimiter it chooses goes to `delimiter`).
    Fields readHeader(CsvLineReader& reader, std::string& delimiter) const;
    // Starts a run on a file whose header `reader` has read as `names`.
    bool beginRun(CsvLineReader& reader, const Fields& names, const std::string& fileName);
    // Refuses a file whose header lacks a required column (the summary and the page say why).
    bool acceptHeader(const Fields& names, const std::string& fileName);
    void showStop(std::string page);
    // Adds a result line, or counts it once the page holds kMaxPageLines.
    void list(std::vector<std::string>& lines, std::string text);
    void endRun();
    bool recoverInterruptedReceipt();
    std::optional<bool> receiptInQuickBooks(const BatchJournal::Entry& entry);
    bool loadSheets(Sheets& sheets);
    // Walks the records of a converted document. False when the run is to stop.
    void guardedRecords(const xml::Document& document, const std::vector<std::size_t>& cut,
                        Mode mode, Sheets& sheets, std::vector<std::string>& lines);
    bool processRecords(const xml::Document& document, const std::vector<std::size_t>& cut,
                        Mode mode, Sheets& sheets, std::vector<std::string>& lines);
    void report(RecordOutcome outcome);
    void progress(int percent);
    bool quotedFields() const;
    CsvOptions csvOptions(std::vector<std::size_t>* cut) const;

    imports::ImportSurface& m_window;
    ui::UiPort& m_ui;
    const platform::ProgramFolder& m_folder;
    qbgateway::Gateway& m_gateway;
    imports::ImportSettingsSource& m_settings;
    BatchLog m_log;
    BatchJournal m_journal;
    std::optional<bool> m_quotedOverride;
    bool m_running = false;
    bool m_cancelRequested = false;
    // The journal names a receipt whose outcome this run could not settle.
    bool m_keepJournal = false;
    std::function<void(const RecordOutcome&)> m_recordHandler;
    std::function<void(int)> m_progressHandler;
    std::function<void(std::size_t)> m_chunkHandler;
    RunSummary m_summary;
    // The records of the whole-file run, and how many of them are done (for progress).
    std::size_t m_batchTotal = 0;
    std::size_t m_batchDone = 0;
    std::size_t m_listed = 0;  // result lines this run listed
};

}  // namespace dorvane::batch
