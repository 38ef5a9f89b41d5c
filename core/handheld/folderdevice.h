// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — a folder that plays a handheld's file system.
//
// A phone or handheld mounted over MTP or USB, a folder a sync tool keeps in step with the
// device, or any plain folder: the handheld's Windows CE paths map onto it, every component
// matched without regard to case ("\Program Files\TimeTrack\data.xml" finds
// "program files/timetrack/Data.xml"), missing folders created when a file is written. Paths
// never leave the folder ("." and ".." components are refused). The session opens only when
// the folder exists; without one the connection fails as it does without a handheld.
#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "common/fd.h"
#include "handheld/device.h"

namespace dorvane::platform {
class SettingsStore;
}

namespace dorvane::handheld {

// Where the device folder is set: the environment wins over the settings.
inline constexpr const char* kDeviceDirVariable = "DORVANE_DEVICE_DIR";
inline constexpr const char* kSettingsSection = "Handheld";
inline constexpr const char* kSettingsKey = "DeviceFolder";

struct DeviceFolder {
    std::filesystem::path path;  // empty when none is set
    std::string source;          // "DORVANE_DEVICE_DIR", "settings" or "" (none set)
};

// The folder chosen by $DORVANE_DEVICE_DIR, else by the setting Handheld/DeviceFolder.
DeviceFolder deviceFolder(const platform::SettingsStore& settings);

class FolderDevice;
// A fresh device over the folder chosen at the moment of each call (the settings are read
// again first, so a folder set from the command line meanwhile counts).
std::function<std::unique_ptr<DeviceApi>()> folderDeviceFactory(platform::SettingsStore& settings);

class FolderDevice final : public DeviceApi {
public:
    explicit FolderDevice(std::filesystem::path root);
    ~FolderDevice() override;
    FolderDevice(const FolderDevice&) = delete;
    FolderDevice& operator=(const FolderDevice&) = delete;

    const std::filesystem::path& root() const { return m_root; }

    // The local file a device path names now (existing components matched in any case, the
    // others as written); nullopt for a path that is not a full device path or would leave
    // the folder.
    std::optional<std::filesystem::path> localPath(std::string_view devicePath) const;

    std::int32_t rapiInit() override;
    std::int32_t rapiUninit() override;
    std::uint32_t lastError() const override { return m_lastError; }
    DeviceHandle createFile(std::string_view devicePath, OpenMode mode) override;
    bool writeFile(DeviceHandle file, const std::uint8_t* data, std::uint32_t size,
                   std::uint32_t& written) override;
    bool readFile(DeviceHandle file, std::uint8_t* buffer, std::uint32_t size,
                  std::uint32_t& read) override;
    DeviceHandle findFirstFile(std::string_view devicePath) override;
    bool findClose(DeviceHandle search) override;
    bool closeHandle(DeviceHandle file) override;

private:
    // Resolves a device path; with `createFolders` the missing folders on the way are made.
    std::optional<std::filesystem::path> resolve(std::string_view devicePath, bool createFolders);
    bool fail(std::uint32_t code);
    bool failErrno(int error);
    bool release(DeviceHandle handle);

    std::filesystem::path m_root;
    bool m_connected = false;
    std::uint32_t m_lastError = 0;
    // Open handles: a file descriptor, or none for a search handle.
    std::map<DeviceHandle, UniqueFd> m_handles;
    DeviceHandle m_nextHandle = 1;
};

}  // namespace dorvane::handheld
