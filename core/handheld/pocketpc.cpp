// SPDX-License-Identifier: GPL-3.0-or-later
#include "handheld/pocketpc.h"

#include <filesystem>
#include <fstream>
#include <memory>
#include <system_error>

#include "import/exchangefile.h"
#include "platform/programfolder.h"
#include "ui/uiport.h"

namespace dorvane::handheld {

bool readLocalFile(const std::string& desktopFile, std::uint32_t& length, TransferBuffer& buffer) {
    std::error_code ec;
    const auto size = std::filesystem::file_size(desktopFile, ec);
    if (ec) {
        return false;
    }
    length = static_cast<std::uint32_t>(std::min<std::uintmax_t>(size, UINT32_MAX));
    std::ifstream in(desktopFile, std::ios::binary);
    if (!in || size > buffer.size()) {
        return false;  // the byte at index 16385 has no place
    }
    in.read(reinterpret_cast<char*>(buffer.data()), static_cast<std::streamsize>(size));
    return static_cast<std::uintmax_t>(in.gcount()) == size;
}

PocketPC::PocketPC(DeviceApi& device, ui::UiPort& ui, const platform::ProgramFolder& folder)
    : m_device(device), m_ui(ui), m_folder(folder) {}

bool PocketPC::connectDevice() {
    if (m_device.rapiInit() == 0) {
        return true;
    }
    const std::uint32_t code = m_device.lastError();
    m_ui.messageBox("Failed to initialise RAPI with device with error " + std::to_string(code));
    m_device.rapiUninit();
    if (m_endApplication) {
        m_endApplication();
    }
    return false;
}

void PocketPC::disconnectDevice() {
    m_device.rapiUninit();
}

bool PocketPC::copyFileToDevice(const std::string& desktopFile, const std::string& deviceFile) {
    const DeviceHandle file = m_device.createFile(deviceFile, OpenMode::Write);
    if (file == kInvalidHandle) {
        m_ui.messageBox("CeCreateFile Error " + std::to_string(m_device.lastError()) +
                        " occurred.");
        return false;
    }
    auto buffer = std::make_unique<TransferBuffer>();
    buffer->fill(0);
    std::uint32_t length = 0;
    if (readLocalFile(desktopFile, length, *buffer)) {
        std::uint32_t written = 0;
        if (!m_device.writeFile(file, buffer->data(), length, written)) {
            m_ui.messageBox("Error " + std::to_string(m_device.lastError()) +
                            " Occurred When Copying File " + desktopFile + " To The Device as " +
                            deviceFile);
            m_device.closeHandle(file);
            return false;
        }
    } else {
        // Nothing is written and the copy still counts as done; say at least why the
        // handheld's file is now empty.
        m_ui.messageBox("Cannot send " + desktopFile + ": " +
                            (length > kTransferBufferSize
                                 ? std::to_string(length) + " bytes do not fit the transfer of " +
                                       std::to_string(kTransferBufferSize) + " bytes."
                                 : std::string("the file cannot be read.")),
                        ui::kProgramTitle, ui::Icon::Exclamation);
    }
    m_device.closeHandle(file);
    return true;
}

bool PocketPC::copyFileFromDevice(const std::string& deviceFile, const std::string& desktopFile) {
    const DeviceHandle search = m_device.findFirstFile(deviceFile);
    if (search == kInvalidHandle) {
        m_ui.messageBox("File " + deviceFile + " Not Found. Operation Aborted.");
        return false;
    }
    m_device.findClose(search);

    const DeviceHandle file = m_device.createFile(deviceFile, OpenMode::Read);
    if (file == kInvalidHandle) {
        m_ui.messageBox("Failed to open file " + deviceFile);
        return false;
    }
    auto buffer = std::make_unique<TransferBuffer>();
    buffer->fill(0);
    std::uint32_t count = 0;
    const bool read = m_device.readFile(file, buffer->data(), kMaxDeviceRead, count);
    m_ui.yield();
    if (!read) {
        m_ui.messageBox("Error " + std::to_string(m_device.lastError()) +
                        " Occurred When Copying File " + deviceFile + " From The Device as " +
                        desktopFile);
        m_device.findClose(file);
        return false;
    }

    // One character per byte, up to and including the element at `count`: the text ends with
    // the buffer's zero after the data, and ends there as a text does.
    std::string text;
    if (count > 0) {
        text.assign(reinterpret_cast<const char*>(buffer->data()), count + 1);
    }
    const std::string_view document = std::string_view(text).substr(0, text.find('\0'));

    if (document.empty() && count == 0) {
        // An empty file holds no entries to lose: it goes through as a handheld file without
        // entries (which the import window opens), and a copy that cannot be written loses
        // none either.
        [[maybe_unused]] const Status written =
            m_folder.writeProgramFile(kEmptyHandheldDocument, kDataFromPdaFile);
        m_device.findClose(file);
        return true;
    }
    auto parsed = imports::parseExchangeText(document);
    if (!parsed) {
        std::string message = imports::cannotProcessMessage(parsed.error());
        if (count == kMaxDeviceRead) {
            message += "\r\nOnly the first " + std::to_string(kMaxDeviceRead) + " bytes of " +
                       deviceFile + " can be read.";
        }
        m_ui.messageBox(message, ui::kProgramTitle, ui::Icon::Exclamation);
        m_device.findClose(file);
        return false;
    }
    if (Status written = m_folder.writeProgramFile(parsed->document.toString(), kDataFromPdaFile);
        !written) {
        m_ui.messageBox(
            std::string(kDataFromPdaFile) + " could not be written: " + written.error().description,
            ui::kProgramTitle, ui::Icon::Critical);
        m_device.findClose(file);
        return false;
    }
    m_device.findClose(file);
    return true;
}

}  // namespace dorvane::handheld
