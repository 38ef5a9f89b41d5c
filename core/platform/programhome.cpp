// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/programhome.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <glib.h>
#include <map>
#include <sstream>
#include <system_error>

#include "common/files.h"

namespace dorvane::platform {
namespace fs = std::filesystem;

namespace {

// Shipped files that the program itself writes afterwards: seeded once, never replaced.
constexpr std::array kSeedOnly = {"companyinfo.xml"};

// What the earlier program folder held that must not be lost: the logs that stop double
// sends and double imports, and the company records.
constexpr std::array kLegacyRecords = {"EmailsSent.log", "BatchImport.log", "companyinfo.xml"};

constexpr const char* kSentLog = "EmailsSent.log";

// Files only the program writes: a release never brings them, whatever it carries.
constexpr std::array kProgramWritten = {"EmailsSent.log", "BatchImport.log", "Reminders.log",
                                        "QBXMLReq.txt",   "QBXMLResult.txt", "smtptrace.txt",
                                        "themail.txt",    "preview.htm",     kShippedManifest};

bool isSeedOnly(const std::string& relative) {
    return std::find(kSeedOnly.begin(), kSeedOnly.end(), relative) != kSeedOnly.end();
}

std::string sha256(std::string_view data) {
    gchar* hex = g_compute_checksum_for_data(
        G_CHECKSUM_SHA256, reinterpret_cast<const guchar*>(data.data()), data.size());
    std::string out(hex);
    g_free(hex);
    return out;
}

std::map<std::string, std::string> readManifest(const fs::path& file) {
    std::map<std::string, std::string> entries;
    auto text = files::readAll(file);
    if (!text) {
        return entries;
    }
    std::istringstream in(*text);
    std::string line;
    while (std::getline(in, line)) {
        const auto gap = line.find("  ");
        if (gap == 64 && line.size() > gap + 2) {
            entries[line.substr(gap + 2)] = line.substr(0, gap);
        }
    }
    return entries;
}

std::string manifestText(const std::map<std::string, std::string>& entries) {
    std::string text;
    for (const auto& [name, hash] : entries) {
        text += hash + "  " + name + "\n";
    }
    return text;
}

// The shipped files below `shipped`, as paths relative to it, in a stable order.
std::vector<std::string> shippedFiles(const fs::path& shipped) {
    std::vector<std::string> out;
    std::error_code ec;
    for (fs::recursive_directory_iterator it(shipped, ec), end; !ec && it != end;
         it.increment(ec)) {
        if (it->is_regular_file(ec)) {
            const std::string rel = fs::relative(it->path(), shipped, ec).generic_string();
            const bool written = std::find(kProgramWritten.begin(), kProgramWritten.end(), rel) !=
                                 kProgramWritten.end();
            if (!ec && !written && rel != "CMakeLists.txt" && !rel.ends_with(".new")) {
                out.push_back(rel);
            }
        }
    }
    std::sort(out.begin(), out.end());
    return out;
}

std::string describe(const std::error_code& ec, const fs::path& path) {
    return ec.message() + ": " + path.string();
}

void migrateLegacyFolder(const fs::path& legacy, const fs::path& home, HomeReport& report) {
    std::error_code ec;
    if (legacy.empty() || !fs::is_directory(legacy, ec) || fs::equivalent(legacy, home, ec)) {
        return;
    }
    for (const char* name : kLegacyRecords) {
        const fs::path from = legacy / name;
        const fs::path to = home / name;
        if (!fs::is_regular_file(from, ec)) {
            continue;
        }
        if (fs::exists(to, ec) && fs::file_size(to, ec) > 0) {
            continue;
        }
        auto content = files::readAll(from);
        if (!content) {
            report.error = "Could not move " + from.string() + ": " + content.error().description;
            continue;
        }
        Status written = files::writeAtomically(to, {*content}, 0600u);
        if (!written) {
            report.error = "Could not move " + from.string() + ": " + written.error().description;
            continue;
        }
        fs::remove(from, ec);
        report.notices.push_back("Moved " + from.string() + " to " + to.string() + ".");
    }
}

}  // namespace

fs::path locateShippedFiles() {
    std::error_code ec;
    if (const char* dir = std::getenv("DORVANE_SHARE_DIR"); dir && *dir) {
        return fs::absolute(dir, ec);
    }
    const fs::path exe = fs::read_symlink("/proc/self/exe", ec);
    if (!ec) {
        const fs::path installed = exe.parent_path().parent_path() / "share" / "dorvane";
        if (fs::is_directory(installed, ec)) {
            return installed;
        }
    }
#ifdef DORVANE_SOURCE_PROGRAM_DIR
    if (fs::is_directory(DORVANE_SOURCE_PROGRAM_DIR, ec)) {
        return DORVANE_SOURCE_PROGRAM_DIR;
    }
#endif
    return {};
}

fs::path locateProgramHome(const std::string& homeOption) {
    std::error_code ec;
    if (!homeOption.empty()) {
        return fs::absolute(homeOption, ec);
    }
    if (const char* home = std::getenv("DORVANE_HOME"); home && *home) {
        return fs::absolute(home, ec);
    }
    if (const char* data = std::getenv("XDG_DATA_HOME"); data && *data && data[0] == '/') {
        return fs::path(data) / "dorvane";
    }
    if (const char* user = std::getenv("HOME"); user && *user) {
        return fs::path(user) / ".local" / "share" / "dorvane";
    }
    return fs::absolute(".dorvane", ec);
}

HomeReport prepareProgramHome(const fs::path& home, const fs::path& shipped,
                              const fs::path& legacy) {
    HomeReport report;
    std::error_code ec;
    if (!fs::is_directory(home, ec)) {
        fs::create_directories(home, ec);
        if (ec) {
            report.error = "Could not create the program folder: " + describe(ec, home);
            return report;
        }
        fs::permissions(home, fs::perms::owner_all, ec);
    }
    migrateLegacyFolder(legacy, home, report);

    const fs::path manifestPath = home / kShippedManifest;
    auto manifest = readManifest(manifestPath);
    const auto before = manifest;
    if (!shipped.empty()) {
        for (const std::string& rel : shippedFiles(shipped)) {
            auto release = files::readAll(shipped / rel);
            if (!release) {
                continue;
            }
            const std::string releaseHash = sha256(*release);
            const fs::path target = home / rel;
            auto current = files::readAll(target);
            Status written;
            if (!fs::exists(target, ec)) {
                fs::create_directories(target.parent_path(), ec);
                written =
                    files::writeAtomically(target, {*release}, 0600u, files::Durability::Replaced);
                if (written) {
                    manifest[rel] = releaseHash;
                }
            } else if (!current || isSeedOnly(rel)) {
                continue;
            } else if (const std::string currentHash = sha256(*current);
                       currentHash == releaseHash) {
                manifest[rel] = releaseHash;
            } else if (manifest.count(rel) && manifest[rel] == currentHash) {
                // Untouched since it was seeded: it follows the release.
                written = files::writeAtomically(target, {*release}, std::nullopt,
                                                 files::Durability::Replaced);
                if (written) {
                    manifest[rel] = releaseHash;
                }
            } else if (manifest[rel] != releaseHash) {
                // Changed by the user: kept, the release's version goes beside it.
                const fs::path beside = target.string() + ".new";
                auto old = files::readAll(beside);
                if (!old || *old != *release) {
                    written = files::writeAtomically(beside, {*release}, 0600u,
                                                     files::Durability::Replaced);
                    if (written) {
                        report.notices.push_back("Kept your changed " + rel +
                                                 "; this version's file is " +
                                                 beside.filename().string() + " beside it.");
                    }
                }
                manifest[rel] = releaseHash;
            }
            if (!written) {
                report.error = "Could not write the program folder: " + written.error().description;
            }
        }
    }
    if (manifest != before) {
        Status saved = files::writeAtomically(manifestPath, {manifestText(manifest)}, 0600u,
                                              files::Durability::Replaced);
        if (!saved) {
            report.error = "Could not write the program folder: " + saved.error().description;
        }
    }

    const fs::path sentLog = home / kSentLog;
    if (!fs::exists(sentLog, ec) && !fs::is_symlink(sentLog, ec)) {
        Status created = files::writeAtomically(sentLog, {""}, 0600u);
        if (!created) {
            report.error = "Could not write the program folder: " + created.error().description;
        }
    }
    return report;
}

HomeInspection inspectProgramHome(const fs::path& home, const fs::path& shipped) {
    HomeInspection found;
    auto manifest = readManifest(home / kShippedManifest);
    std::error_code ec;
    for (const std::string& rel : shippedFiles(shipped)) {
        const fs::path target = home / rel;
        if (!fs::exists(target, ec)) {
            found.missing.push_back(rel);
            continue;
        }
        auto current = files::readAll(target);
        auto release = files::readAll(shipped / rel);
        if (!current || !release || isSeedOnly(rel)) {
            continue;
        }
        const std::string currentHash = sha256(*current);
        // A file the manifest knows as seeded is the user's only when it differs from it; a
        // file seeding never touched is the user's when it differs from the release.
        const auto seeded = manifest.find(rel);
        if (currentHash != (seeded != manifest.end() ? seeded->second : sha256(*release))) {
            found.changed.push_back(rel);
            if (fs::exists(target.string() + ".new", ec)) {
                found.newBeside.push_back(rel);
            }
        }
    }
    return found;
}

HomeReport setUpProgramHome(const std::string& homeOption) {
    fs::path legacy;
    const char* env = std::getenv("DORVANE_HOME");
    if (homeOption.empty() && !(env && *env)) {
        std::error_code ec;
        legacy = fs::read_symlink("/proc/self/exe", ec).parent_path();
    }
    return prepareProgramHome(locateProgramHome(homeOption), locateShippedFiles(), legacy);
}

}  // namespace dorvane::platform
