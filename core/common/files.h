// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — whole-file reads and crash-safe whole-file writes.
#pragma once

#include <filesystem>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

#include "common/result.h"

namespace dorvane::files {

// Reads the whole file; the error carries errno and its text.
Result<std::string> readAll(const std::filesystem::path& path);

// How far a replaced file is secured before the call returns.
enum class Durability {
    // On the disk: survives a power cut. Costs a flush of the file and its folder.
    Flushed,
    // Renamed into place only: survives the program being killed, not a power cut.
    Replaced,
    // Written over in place, not atomically: only for scratch files that the program writes,
    // reads back at once and deletes (a crash may leave one half-written).
    Scratch,
};

// Replaces the file with the pieces written one after the other: writes a temporary file in
// the same folder and renames it over the target, so a reader or a crash sees the old or the
// new content, never a mixture. With `mode` the new file gets these permission bits.
Status writeAtomically(const std::filesystem::path& path,
                       std::initializer_list<std::string_view> pieces,
                       std::optional<unsigned> mode = std::nullopt,
                       Durability durability = Durability::Flushed);
inline Status writeAtomically(const std::filesystem::path& path, std::string_view data,
                              std::optional<unsigned> mode = std::nullopt) {
    return writeAtomically(path, {data}, mode);
}

// Adds `data` at the end of the file, creating it, with a single write.
Status append(const std::filesystem::path& path, std::string_view data);

}  // namespace dorvane::files
