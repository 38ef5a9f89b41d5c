// SPDX-License-Identifier: GPL-3.0-or-later
#include "handheld/folderdevice.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <system_error>
#include <unistd.h>
#include <vector>

#include "common/text.h"
#include "platform/settings.h"

namespace dorvane::handheld {

namespace fs = std::filesystem;

namespace {

// The components of a full device path ("\A\b.xml" or "/A/b.xml"); nullopt when the path is
// relative or would step outside the root.
std::optional<std::vector<std::string>> components(std::string_view devicePath) {
    if (devicePath.empty() || (devicePath.front() != '\\' && devicePath.front() != '/')) {
        return std::nullopt;
    }
    std::vector<std::string> parts;
    std::string part;
    auto flush = [&]() -> bool {
        if (part == "." || part == "..") {
            return false;
        }
        if (!part.empty()) {
            parts.push_back(std::move(part));
        }
        part.clear();
        return true;
    };
    for (char c : devicePath) {
        if (c == '\\' || c == '/') {
            if (!flush()) {
                return std::nullopt;
            }
        } else if (c == '\0') {
            return std::nullopt;
        } else {
            part += c;
        }
    }
    if (!flush() || parts.empty()) {
        return std::nullopt;
    }
    return parts;
}

// The entry of `folder` named `name` in any case; an exact match wins.
fs::path matchEntry(const fs::path& folder, const std::string& name) {
    std::error_code ec;
    if (fs::exists(fs::symlink_status(folder / name, ec))) {
        return folder / name;
    }
    for (fs::directory_iterator it(folder, ec), end; !ec && it != end; it.increment(ec)) {
        if (text::equalsIgnoreCase(it->path().filename().string(), name)) {
            return it->path();
        }
    }
    return folder / name;
}

}  // namespace

DeviceFolder deviceFolder(const platform::SettingsStore& settings) {
    if (const char* dir = std::getenv(kDeviceDirVariable); dir && *dir) {
        return {dir, kDeviceDirVariable};
    }
    const std::string configured(
        text::trim(settings.value(kSettingsSection, kSettingsKey).value_or("")));
    if (!configured.empty()) {
        return {configured, "settings"};
    }
    return {};
}

std::function<std::unique_ptr<DeviceApi>()> folderDeviceFactory(platform::SettingsStore& settings) {
    return [&settings]() -> std::unique_ptr<DeviceApi> {
        settings.reload();
        return std::make_unique<FolderDevice>(deviceFolder(settings).path);
    };
}

FolderDevice::FolderDevice(fs::path root) : m_root(std::move(root)) {}

FolderDevice::~FolderDevice() {
    rapiUninit();
}

std::optional<fs::path> FolderDevice::localPath(std::string_view devicePath) const {
    const auto parts = components(devicePath);
    if (!parts || m_root.empty()) {
        return std::nullopt;
    }
    fs::path at = m_root;
    for (const std::string& part : *parts) {
        at = matchEntry(at, part);
    }
    return at;
}

std::optional<fs::path> FolderDevice::resolve(std::string_view devicePath, bool createFolders) {
    const auto parts = components(devicePath);
    if (!parts) {
        fail(kErrorBadPathname);
        return std::nullopt;
    }
    fs::path at = m_root;
    for (std::size_t i = 0; i < parts->size(); ++i) {
        at = matchEntry(at, (*parts)[i]);
        if (i + 1 == parts->size()) {
            break;
        }
        std::error_code ec;
        if (fs::is_directory(at, ec)) {
            continue;
        }
        if (!createFolders || fs::exists(fs::symlink_status(at, ec))) {
            fail(kErrorPathNotFound);
            return std::nullopt;
        }
        if (!fs::create_directory(at, ec) && ec) {
            failErrno(ec.value());
            return std::nullopt;
        }
    }
    return at;
}

bool FolderDevice::fail(std::uint32_t code) {
    m_lastError = code;
    return false;
}

bool FolderDevice::failErrno(int error) {
    switch (error) {
        case ENOENT:
            return fail(kErrorFileNotFound);
        case ENOTDIR:
            return fail(kErrorPathNotFound);
        case EACCES:
        case EPERM:
        case EISDIR:
        case EROFS:
            return fail(kErrorAccessDenied);
        case ENOSPC:
            return fail(kErrorDiskFull);
        case ENAMETOOLONG:
            return fail(kErrorBadPathname);
        default:
            return fail(kErrorGenFailure);
    }
}

std::int32_t FolderDevice::rapiInit() {
    std::error_code ec;
    if (m_root.empty() || !fs::is_directory(m_root, ec)) {
        fail(kErrorDeviceNotConnected);
        return static_cast<std::int32_t>(0x80004005u);  // E_FAIL
    }
    m_connected = true;
    return 0;
}

std::int32_t FolderDevice::rapiUninit() {
    m_handles.clear();
    m_connected = false;
    return 0;
}

DeviceHandle FolderDevice::createFile(std::string_view devicePath, OpenMode mode) {
    if (!m_connected) {
        fail(kErrorDeviceNotConnected);
        return kInvalidHandle;
    }
    const bool write = mode == OpenMode::Write;
    const auto path = resolve(devicePath, write);
    if (!path) {
        return kInvalidHandle;
    }
    std::error_code ec;
    if (fs::is_directory(*path, ec)) {
        fail(kErrorAccessDenied);
        return kInvalidHandle;
    }
    const int flags = write ? O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC : O_RDONLY | O_CLOEXEC;
    const int fd = ::open(path->c_str(), flags, 0644);
    if (fd < 0) {
        failErrno(errno);
        return kInvalidHandle;
    }
    const DeviceHandle handle = m_nextHandle++;
    m_handles[handle] = UniqueFd(fd);
    return handle;
}

bool FolderDevice::writeFile(DeviceHandle file, const std::uint8_t* data, std::uint32_t size,
                             std::uint32_t& written) {
    written = 0;
    const auto it = m_handles.find(file);
    if (it == m_handles.end() || !it->second) {
        return fail(kErrorInvalidHandle);
    }
    while (written < size) {
        const ssize_t n = ::write(it->second.get(), data + written, size - written);
        if (n < 0) {
            if (errno == EINTR) {
                continue;
            }
            return failErrno(errno);
        }
        written += static_cast<std::uint32_t>(n);
    }
    return true;
}

bool FolderDevice::readFile(DeviceHandle file, std::uint8_t* buffer, std::uint32_t size,
                            std::uint32_t& read) {
    read = 0;
    const auto it = m_handles.find(file);
    if (it == m_handles.end() || !it->second) {
        return fail(kErrorInvalidHandle);
    }
    while (read < size) {
        const ssize_t n = ::read(it->second.get(), buffer + read, size - read);
        if (n < 0) {
            if (errno == EINTR) {
                continue;
            }
            return failErrno(errno);
        }
        if (n == 0) {
            break;
        }
        read += static_cast<std::uint32_t>(n);
    }
    return true;
}

DeviceHandle FolderDevice::findFirstFile(std::string_view devicePath) {
    if (!m_connected) {
        fail(kErrorDeviceNotConnected);
        return kInvalidHandle;
    }
    const auto path = resolve(devicePath, false);
    if (!path) {
        return kInvalidHandle;
    }
    std::error_code ec;
    if (!fs::exists(*path, ec)) {
        fail(kErrorFileNotFound);
        return kInvalidHandle;
    }
    const DeviceHandle handle = m_nextHandle++;
    m_handles[handle] = UniqueFd();
    return handle;
}

// Either close call ends any handle: the transfer closes a file it read with the search's
// close call, and nothing of the folder may stay open after it.
bool FolderDevice::release(DeviceHandle handle) {
    const auto it = m_handles.find(handle);
    if (it == m_handles.end()) {
        return fail(kErrorInvalidHandle);
    }
    m_handles.erase(it);
    return true;
}

bool FolderDevice::findClose(DeviceHandle search) {
    return release(search);
}

bool FolderDevice::closeHandle(DeviceHandle file) {
    return release(file);
}

}  // namespace dorvane::handheld
