// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — whole-file reads and crash-safe whole-file writes.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "common/result.h"

namespace dorvane::files {

// Reads the whole file; the error carries errno and its text.
Result<std::string> readAll(const std::filesystem::path& path);

// Replaces the file with `data`: writes a temporary file in the same folder, flushes it to
// disk and renames it over the target, so a reader or a crash sees the old or the new
// content, never a mixture. With `mode` the new file gets these permission bits.
Status writeAtomically(const std::filesystem::path& path, std::string_view data,
                       std::optional<unsigned> mode = std::nullopt);

}  // namespace dorvane::files
