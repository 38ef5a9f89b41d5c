// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — the batch import's memory on disk: "BatchImport.log" (the transactions QuickBooks
// has) and the journal beside it (the transaction whose receipt is on its way).
//
// The log gets one record per accepted receipt, in one write, the moment QuickBooks accepted
// it; the file is true to what QuickBooks received at every moment. It is followed rather than
// re-read: each look takes in only what was added since (by this run or by a receipt pasted
// meanwhile), and the whole file again only when it was replaced or shortened.
//
// The journal notes a transaction before its receipt goes out. A run that was killed between
// QuickBooks' answer and the log's record leaves the note behind; the next run asks QuickBooks
// for that receipt before it does anything else.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "common/result.h"
#include "import/importlog.h"

namespace dorvane::platform {
class ProgramFolder;
}

namespace dorvane::batch {

inline constexpr const char* kJournalFile = "BatchImport.journal";

class BatchLog {
public:
    explicit BatchLog(const platform::ProgramFolder& folder);

    // Takes in what the file gained since the last look.
    void refresh();
    bool holds(std::string_view txnId) const { return m_index.holds(txnId); }
    bool holdsExactly(std::string_view txnId) const { return m_index.holdsExactly(txnId); }
    // Appends the record of one transaction in one write.
    Status append(std::string_view txnId);
    // Creates the file when it does not exist yet.
    Status create();

private:
    const platform::ProgramFolder& m_folder;
    std::string m_path;
    imports::ImportLogIndex m_index;
    std::uintmax_t m_read = 0;
    std::uintmax_t m_inode = 0;
};

class BatchJournal {
public:
    struct Entry {
        std::string date;  // the receipt's date, YYYY-MM-DD
        std::string txnId;
    };

    explicit BatchJournal(const platform::ProgramFolder& folder);

    // The last transaction noted; nullopt when the journal is empty.
    std::optional<Entry> pending() const;
    // Notes a transaction whose receipt goes out next, in one write.
    Status note(std::string_view date, std::string_view txnId);
    // Empties the journal: everything noted has its outcome.
    void clear();

private:
    const platform::ProgramFolder& m_folder;
};

}  // namespace dorvane::batch
