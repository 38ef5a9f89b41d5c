// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/programfolder.h"

#include <cerrno>
#include <cstring>
#include <fstream>

#include "common/files.h"

namespace dorvane::platform {

ProgramFolder::ProgramFolder(std::filesystem::path folder) : m_folder(folder.string()) {
    while (m_folder.size() > 1 && m_folder.back() == '/') {
        m_folder.pop_back();
    }
}

std::string ProgramFolder::filePath(std::string_view name) const {
    std::string relative(name);
    for (char& c : relative) {
        if (c == '\\') {
            c = '/';
        }
    }
    std::size_t start = relative.find_first_not_of('/');
    relative.erase(0, start == std::string::npos ? relative.size() : start);
    return m_folder + "/" + relative;
}

Result<std::string> ProgramFolder::readProgramFile(std::string_view name) const {
    const std::string path = filePath(name);
    errno = 0;
    std::ifstream in(path, std::ios::binary);
    std::string joined;
    if (in) {
        std::string content((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
        if (!in.bad()) {
            joined.reserve(content.size());
            for (char c : content) {
                if (c != '\r' && c != '\n') {
                    joined += c;
                }
            }
            return joined;
        }
    }
    int err = errno ? errno : EIO;
    return Error{err, "Could not open file " + path + " (" + std::to_string(err) + ")"};
}

Status ProgramFolder::writeProgramFile(std::string_view text, std::string_view name,
                                       files::Durability durability) const {
    return files::writeAtomically(filePath(name), {text, "\r\n"}, std::nullopt, durability);
}

Status ProgramFolder::appendProgramFile(std::string_view text, std::string_view name) const {
    return files::append(filePath(name), text);
}

}  // namespace dorvane::platform
