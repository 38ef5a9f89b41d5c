// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — the handheld time-tracking sync and the time import.
//
// The sync (the import window's SynchronizePDA entry) asks QuickBooks for its employees,
// customers, service items and wage payroll items, lets the worker pick their name (Dialog4),
// writes dataout.xml for the handheld, fetches the handheld's file into dataFromPDA.xml and
// only then replaces the handheld's file with dataout.xml, and opens the fetched file in the
// import window. Progress goes to the import window's status bar.
//
// The time import (the window's Import button on a Dorvane_PDA document) turns the recorded
// entries into QuickBooks time-tracking entries through TimeTrackfromPDA.xslt. It keeps no
// log: the same entries sent twice are added twice.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "common/result.h"
#include "handheld/device.h"
#include "handheld/folderdevice.h"
#include "ui/uiport.h"
#include "xml/xml.h"

namespace dorvane::platform {
class ProgramFolder;
}

namespace dorvane::qbgateway {
class Gateway;
}  // namespace dorvane::qbgateway

namespace dorvane::imports {
class ImportSurface;
}

namespace dorvane::handheld {

inline constexpr const char* kDeviceDataFile = "\\Program Files\\TimeTrack\\data.xml";

// Why the empty handheld file could not be written (Error::code).
inline constexpr int kNoDeviceFolder = 1;       // none chosen
inline constexpr int kDeviceFolderMissing = 2;  // chosen, but not there (not mounted?)
inline constexpr int kHandheldFileThere = 3;    // a file is there, perhaps with hours not fetched
inline constexpr int kHandheldFileUnwritable = 4;

// Writes the empty handheld file a new device lacks, which the first sync then replaces, and
// answers its path. An existing file is never replaced.
Result<std::filesystem::path> writeEmptyHandheldFile(const DeviceFolder& folder);
inline constexpr const char* kDataOutFile = "dataout.xml";
inline constexpr const char* kDataInFile = "datain.xml";
inline constexpr const char* kDataRequestFile = "PDADataGetRq.xml";
inline constexpr const char* kTimeTrackSheet = "TimeTrackfromPDA.xslt";
// What dataout.xml starts with, before the document.
inline constexpr const char* kDataOutProlog = "<?xml version=\"1.0\" ?> \r\n";

inline constexpr const char* kTimeTrackingAddedPage =
    "<body><p align='center'><b><font color='#0000FF'>Time Tracking items sucessfully "
    "added.</font></b></p><p align='center'>Please review the items in Quickbooks (Employees / "
    "Time Enter Single Activity) </p><p align='center'>and, if necessary, adjust them.</p></body>";

// The file for the handheld: the worker, then the customers, service items and wage payroll
// items of `lists` (the answer to PDADataGetRq.xml) in QuickBooks' order, and an empty
// TimeTracks. A list QuickBooks has nothing of stays as an empty section.
xml::Document buildHandheldDocument(const xml::Document& lists, std::string_view name,
                                    std::string_view listId);

// Dialog4: the worker picks their name among QuickBooks' employees.
class EmployeeChoiceModel final : public ui::DialogModel {
public:
    static constexpr const char* kLabel = "Please select your name as employee\r\n";

    EmployeeChoiceModel(std::vector<std::string> entries, std::optional<std::size_t> preselected);

    std::string_view dialogName() const override { return "Dialog4"; }
    // Combo1's entries: "Name / ListID".
    const std::vector<std::string>& entries() const { return m_entries; }
    std::optional<std::size_t> selected() const { return m_selected; }
    void select(std::optional<std::size_t> index);
    // What OK hands back: the chosen entry's text, "" when none is chosen.
    std::string choice() const;

private:
    std::vector<std::string> m_entries;
    std::optional<std::size_t> m_selected;
};

enum class SyncOutcome {
    Synchronized,       // both copies done, the fetched file opened in the import window
    NoAnswer,           // QuickBooks gave no lists
    NoEmployee,         // no employee chosen
    NotWritten,         // dataout.xml could not be written
    DeviceUnreachable,  // the session with the handheld did not open
    FetchFailed,        // the handheld's file did not arrive; it was left as it was
    SendFailed,         // the fetch went through, the handheld's file was not replaced
};

enum class TimeImportOutcome {
    None,
    Added,        // every entry added
    Refused,      // QuickBooks refused an entry (those before it are in QuickBooks)
    Unreachable,  // no answer from QuickBooks
    NotSent,      // nothing to send, or the style sheet failed
};

struct SyncOptions {
    // Chooses the employee by name (any case) or ListID instead of asking with Dialog4.
    std::optional<std::string> employee;
};

using DeviceFactory = std::function<std::unique_ptr<DeviceApi>()>;

class TimeTrackingSync {
public:
    TimeTrackingSync(ui::UiPort& ui, const platform::ProgramFolder& folder,
                     qbgateway::Gateway& gateway, imports::ImportSurface& window,
                     DeviceFactory device);

    // What a failed connection to the handheld does after its message: the program ends.
    void setEndApplication(std::function<void()> endApplication) {
        m_endApplication = std::move(endApplication);
    }

    SyncOutcome synchronizePDA(const SyncOptions& options = {});
    TimeImportOutcome importTimeTracking();

    // The entries Dialog4 offered in the last sync ("Name / ListID").
    const std::vector<std::string>& employeeEntries() const { return m_employees; }
    TimeImportOutcome lastImport() const { return m_lastImport; }

private:
    std::optional<std::size_t> previousEmployee() const;
    std::string chooseEmployee(const SyncOptions& options);
    void status(std::string text);

    ui::UiPort& m_ui;
    const platform::ProgramFolder& m_folder;
    qbgateway::Gateway& m_gateway;
    imports::ImportSurface& m_window;
    DeviceFactory m_device;
    std::function<void()> m_endApplication;
    std::vector<std::string> m_employees;
    TimeImportOutcome m_lastImport = TimeImportOutcome::None;
};

}  // namespace dorvane::handheld
