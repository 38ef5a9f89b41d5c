// SPDX-License-Identifier: GPL-3.0-or-later
#include "batch/batchlog.h"

#include <filesystem>
#include <fstream>
#include <sys/stat.h>

#include "common/files.h"
#include "platform/programfolder.h"

namespace dorvane::batch {

BatchLog::BatchLog(const platform::ProgramFolder& folder)
    : m_folder(folder), m_path(folder.filePath(imports::kBatchLogFile)) {}

void BatchLog::refresh() {
    struct stat st {};
    if (::stat(m_path.c_str(), &st) != 0) {
        if (m_read != 0 || m_index.size() != 0) {
            m_index = {};
        }
        m_read = 0;
        m_inode = 0;
        return;
    }
    const auto size = static_cast<std::uintmax_t>(st.st_size);
    const auto inode = static_cast<std::uintmax_t>(st.st_ino);
    if (inode != m_inode || size < m_read) {
        m_index = {};
        m_read = 0;
        m_inode = inode;
    }
    if (size == m_read) {
        return;
    }
    std::ifstream in(m_path, std::ios::binary);
    in.seekg(static_cast<std::streamoff>(m_read));
    std::string added(size - m_read, '\0');
    in.read(added.data(), static_cast<std::streamsize>(added.size()));
    added.resize(static_cast<std::size_t>(std::max<std::streamsize>(in.gcount(), 0)));
    m_index.add(added);
    m_read += added.size();
}

Status BatchLog::append(std::string_view txnId) {
    Status written =
        m_folder.appendProgramFile(imports::importLogRecord(txnId), imports::kBatchLogFile);
    if (written) {
        refresh();
    }
    return written;
}

Status BatchLog::create() {
    return m_folder.appendProgramFile("", imports::kBatchLogFile);
}

BatchJournal::BatchJournal(const platform::ProgramFolder& folder) : m_folder(folder) {}

std::optional<BatchJournal::Entry> BatchJournal::pending() const {
    auto text = files::readAll(m_folder.filePath(kJournalFile));
    if (!text) {
        return std::nullopt;
    }
    std::string_view t(*text);
    while (t.ends_with('\n') || t.ends_with('\r')) {
        t.remove_suffix(1);
    }
    if (t.empty()) {
        return std::nullopt;
    }
    const auto start = t.find_last_of('\n');
    std::string_view line = start == std::string_view::npos ? t : t.substr(start + 1);
    const auto tab = line.find('\t');
    if (tab == std::string_view::npos) {
        return std::nullopt;
    }
    return Entry{std::string(line.substr(0, tab)), std::string(line.substr(tab + 1))};
}

Status BatchJournal::note(std::string_view date, std::string_view txnId) {
    std::string line(date);
    line += '\t';
    line += txnId;
    line += "\r\n";
    return m_folder.appendProgramFile(line, kJournalFile);
}

void BatchJournal::clear() {
    std::error_code ec;
    std::filesystem::remove(m_folder.filePath(kJournalFile), ec);
}

}  // namespace dorvane::batch
