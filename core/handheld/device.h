// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — the calls a handheld's file system answers, with the meaning of the Windows CE
// Remote API's calls of the same purpose.
//
// The transfer logic (PocketPC) talks to a handheld only through this interface. A Windows
// build implements it over the desktop library's calls (CeRapiInit, CeCreateFile, …); on
// Linux a folder plays the handheld's file system (FolderDevice). Paths are full Windows CE
// paths such as "\Program Files\TimeTrack\data.xml". Codes are Win32 error codes, as the
// platform's last-error call answers them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace dorvane::handheld {

using DeviceHandle = std::intptr_t;
inline constexpr DeviceHandle kInvalidHandle = -1;

// The Win32 codes the folder device answers with.
inline constexpr std::uint32_t kErrorFileNotFound = 2;
inline constexpr std::uint32_t kErrorPathNotFound = 3;
inline constexpr std::uint32_t kErrorAccessDenied = 5;
inline constexpr std::uint32_t kErrorInvalidHandle = 6;
inline constexpr std::uint32_t kErrorGenFailure = 31;
inline constexpr std::uint32_t kErrorDiskFull = 112;
inline constexpr std::uint32_t kErrorBadPathname = 161;
inline constexpr std::uint32_t kErrorDeviceNotConnected = 1167;

// How a device file is opened: for writing with generic-write access, share-read and the
// create-always disposition (an existing file is replaced), or for reading with generic-read
// access, share-read and the open-existing disposition. Normal attributes, no template.
enum class OpenMode { Write, Read };

class DeviceApi {
public:
    virtual ~DeviceApi() = default;

    // CeRapiInit: 0 when the session opened; anything else is failure.
    virtual std::int32_t rapiInit() = 0;
    // CeRapiUninit.
    virtual std::int32_t rapiUninit() = 0;
    // CeGetLastError: the code of the last failed call.
    virtual std::uint32_t lastError() const = 0;
    // CeCreateFile; kInvalidHandle on failure.
    virtual DeviceHandle createFile(std::string_view devicePath, OpenMode mode) = 0;
    // CeWriteFile: writes `size` bytes in one call.
    virtual bool writeFile(DeviceHandle file, const std::uint8_t* data, std::uint32_t size,
                           std::uint32_t& written) = 0;
    // CeReadFile: reads up to `size` bytes in one call.
    virtual bool readFile(DeviceHandle file, std::uint8_t* buffer, std::uint32_t size,
                          std::uint32_t& read) = 0;
    // CeFindFirstFile: a search handle when the file exists, kInvalidHandle otherwise.
    virtual DeviceHandle findFirstFile(std::string_view devicePath) = 0;
    // CeFindClose.
    virtual bool findClose(DeviceHandle search) = 0;
    // CeCloseHandle.
    virtual bool closeHandle(DeviceHandle file) = 0;
};

}  // namespace dorvane::handheld
