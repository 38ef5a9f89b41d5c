// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — whole files between the desktop and a handheld (PocketPC).
//
// The transfer holds no state between calls; the caller opens and closes the session around
// each copy. Every copy goes through one buffer of 16,385 bytes made fresh for it: a desktop
// file of more than 16,385 bytes cannot be sent, and only the first 16,384 bytes of a device
// file are read. Failures are shown in message boxes with the platform's error code and
// answered with false; a session that cannot be opened ends the program (the hook the owner
// sets), since nothing can be done without the handheld.
//
// The file fetched from the handheld is untrusted: it is parsed as an exchange file is
// (no network, no DTD, no entity expansion, a document type with an internal subset
// refused), and a file that does not parse counts as a failed fetch, so that the caller
// never replaces a handheld's file whose entries did not arrive.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string>

#include "handheld/device.h"

namespace dorvane::platform {
class ProgramFolder;
}

namespace dorvane::ui {
class UiPort;
}

namespace dorvane::handheld {

inline constexpr std::size_t kTransferBufferSize = 16385;  // elements 0 to 16384
inline constexpr std::uint32_t kMaxDeviceRead = 16384;
using TransferBuffer = std::array<std::uint8_t, kTransferBufferSize>;

// Where the fetched file lands in the program folder, whatever desktop name was passed.
inline constexpr const char* kDataFromPdaFile = "dataFromPDA.xml";
// What an empty handheld file (a new handheld's) arrives as: a handheld file without entries.
inline constexpr const char* kEmptyHandheldDocument = "<Dorvane_PDA><TimeTracks/></Dorvane_PDA>";

// Fills `buffer` with the desktop file, byte n (from 1) into element n-1, and sets `length`
// to the file's size. False when the file cannot be read or does not fit the buffer.
bool readLocalFile(const std::string& desktopFile, std::uint32_t& length, TransferBuffer& buffer);

class PocketPC {
public:
    PocketPC(DeviceApi& device, ui::UiPort& ui, const platform::ProgramFolder& folder);

    // What a failed connection does after its message: ends the program. Unset, the caller
    // only sees false.
    void setEndApplication(std::function<void()> endApplication) {
        m_endApplication = std::move(endApplication);
    }

    bool connectDevice();
    void disconnectDevice();
    bool copyFileToDevice(const std::string& desktopFile, const std::string& deviceFile);
    // `desktopFile` names the copy in messages; the content lands in dataFromPDA.xml.
    bool copyFileFromDevice(const std::string& deviceFile, const std::string& desktopFile);

private:
    DeviceApi& m_device;
    ui::UiPort& m_ui;
    const platform::ProgramFolder& m_folder;
    std::function<void()> m_endApplication;
};

}  // namespace dorvane::handheld
