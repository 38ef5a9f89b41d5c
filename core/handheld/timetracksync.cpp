// SPDX-License-Identifier: GPL-3.0-or-later
#include "handheld/timetracksync.h"

#include <filesystem>
#include <system_error>

#include "common/text.h"
#include "handheld/folderdevice.h"
#include "handheld/pocketpc.h"
#include "import/exchangefile.h"
#include "import/importsurface.h"
#include "platform/programfolder.h"
#include "qbgateway/gateway.h"
#include "qbgateway/response.h"
#include "ui/uiport.h"
#include "xml/xml.h"

namespace dorvane::handheld {

namespace {

constexpr std::string_view kEntrySeparator = " / ";

// The lists of the handheld's file, from the answer to PDADataGetRq.xml.
struct ListSection {
    const char* section;
    const char* entry;
    const char* path;
    const char* nameChild;
};
constexpr ListSection kSections[] = {
    {"Customers", "Customer", "/QBXML/QBXMLMsgsRs/CustomerQueryRs/CustomerRet", "FullName"},
    {"Projects", "Project", "/QBXML/QBXMLMsgsRs/ItemServiceQueryRs/ItemServiceRet", "FullName"},
    {"PayrollItems", "PayrollItem", "/QBXML/QBXMLMsgsRs/PayrollItemWageQueryRs/PayrollItemWageRet",
     "Name"},
};

}  // namespace

xml::Document buildHandheldDocument(const xml::Document& lists, std::string_view name,
                                    std::string_view listId) {
    xml::Document doc = xml::Document::withRoot("Dorvane_PDA");
    xml::Node root = doc.root();
    xml::Node employee = root.appendElement("Employee");
    employee.appendElement("Name", name);
    employee.appendElement("ListID", listId);
    for (const ListSection& s : kSections) {
        xml::Node section = root.appendElement(s.section);
        for (const xml::Node& ret : lists.selectAll(s.path)) {
            section.appendElement(s.entry).appendElement("Name", ret.valueOf(s.nameChild));
        }
    }
    root.appendElement("TimeTracks");
    return doc;
}

EmployeeChoiceModel::EmployeeChoiceModel(std::vector<std::string> entries,
                                         std::optional<std::size_t> preselected)
    : m_entries(std::move(entries)) {
    select(preselected);
}

void EmployeeChoiceModel::select(std::optional<std::size_t> index) {
    m_selected = index && *index < m_entries.size() ? index : std::nullopt;
}

std::string EmployeeChoiceModel::choice() const {
    return m_selected ? m_entries[*m_selected] : std::string();
}

TimeTrackingSync::TimeTrackingSync(ui::UiPort& ui, const platform::ProgramFolder& folder,
                                   qbgateway::Gateway& gateway, imports::ImportSurface& window,
                                   DeviceFactory device)
    : m_ui(ui),
      m_folder(folder),
      m_gateway(gateway),
      m_window(window),
      m_device(std::move(device)) {}

void TimeTrackingSync::status(std::string text) {
    m_window.setImportStatusText(std::move(text));
}

// The employee of the last sync, as dataout.xml still names them.
std::optional<std::size_t> TimeTrackingSync::previousEmployee() const {
    std::error_code ec;
    const std::filesystem::path last = m_folder.filePath(kDataOutFile);
    if (!std::filesystem::is_regular_file(last, ec)) {
        return std::nullopt;
    }
    auto doc = xml::Document::load(last, {.refuseInternalSubset = true});
    const std::string listId = doc ? doc->valueOf("/Dorvane_PDA/Employee/ListID") : std::string();
    if (listId.empty()) {
        return std::nullopt;
    }
    const std::string suffix = std::string(kEntrySeparator) + listId;
    for (std::size_t i = 0; i < m_employees.size(); ++i) {
        if (m_employees[i].ends_with(suffix)) {
            return i;
        }
    }
    return std::nullopt;
}

std::string TimeTrackingSync::chooseEmployee(const SyncOptions& options) {
    if (options.employee) {
        for (const std::string& entry : m_employees) {
            const std::size_t at = entry.rfind(kEntrySeparator);
            const std::string_view name = std::string_view(entry).substr(0, at);
            const std::string_view listId =
                std::string_view(entry).substr(at + kEntrySeparator.size());
            if (text::equalsIgnoreCase(name, *options.employee) || listId == *options.employee) {
                return entry;
            }
        }
        return {};
    }
    EmployeeChoiceModel dialog(m_employees, previousEmployee());
    if (!m_ui.runDialog(dialog)) {
        return {};
    }
    return dialog.choice();
}

SyncOutcome TimeTrackingSync::synchronizePDA(const SyncOptions& options) {
    m_employees.clear();
    std::optional<xml::Document> lists;
    {
        const ui::BusyScope busy(m_ui);
        const std::string response = m_gateway.processRequest(
            ui::textOrShown(m_folder.readProgramFile(kDataRequestFile), m_ui));
        if (auto doc = xml::Document::parse(response); doc) {
            lists = std::move(doc).value();
        }
    }
    if (!lists) {
        status(imports::kErrorStatus);
        return SyncOutcome::NoAnswer;
    }
    for (const xml::Node& e : lists->selectAll("/QBXML/QBXMLMsgsRs/EmployeeQueryRs/EmployeeRet")) {
        m_employees.push_back(e.valueOf("Name") + std::string(kEntrySeparator) +
                              e.valueOf("ListID"));
    }

    const std::string chosen = chooseEmployee(options);
    if (chosen.empty()) {
        m_ui.messageBox("Please select your name ! ");
        status("Employee name not selected");
        return SyncOutcome::NoEmployee;
    }
    const std::size_t at = chosen.rfind(kEntrySeparator);
    const std::string name = chosen.substr(0, at);
    const std::string listId =
        at == std::string::npos ? std::string() : chosen.substr(at + kEntrySeparator.size());

    const ui::BusyScope busy(m_ui);
    const xml::Document out = buildHandheldDocument(*lists, name, listId);
    if (Status written =
            m_folder.writeProgramFile(kDataOutProlog + out.toString(false), kDataOutFile);
        !written) {
        m_ui.messageBox(
            std::string(kDataOutFile) + " could not be written: " + written.error().description,
            ui::kProgramTitle, ui::Icon::Critical);
        status(imports::kErrorStatus);
        return SyncOutcome::NotWritten;
    }
    status("Transfer data created");

    const std::unique_ptr<DeviceApi> device = m_device();
    PocketPC pocket(*device, m_ui, m_folder);
    pocket.setEndApplication(m_endApplication);
    if (!pocket.connectDevice()) {
        status("Could not initialize the transfer");
        return SyncOutcome::DeviceUnreachable;
    }
    std::error_code ec;
    std::filesystem::remove(m_folder.filePath(kDataInFile), ec);

    // The handheld's file comes first; it is replaced only once its entries are here.
    status("Uploading file ...");
    const std::string fetched = m_folder.filePath(kDataFromPdaFile);
    if (!pocket.copyFileFromDevice(kDeviceDataFile, fetched)) {
        pocket.disconnectDevice();
        status("Could not transfer file from mobile device");
        return SyncOutcome::FetchFailed;
    }
    status("Upload succeeded");
    pocket.disconnectDevice();
    if (!pocket.connectDevice()) {
        status("Could not initialize the transfer");
        return SyncOutcome::DeviceUnreachable;
    }

    status("Downloading file ...");
    if (!pocket.copyFileToDevice(m_folder.filePath(kDataOutFile), kDeviceDataFile)) {
        pocket.disconnectDevice();
        status("Could not transfer file to mobile device");
        return SyncOutcome::SendFailed;
    }
    status("Download succeeded");
    pocket.disconnectDevice();
    m_window.openExchangeFile(fetched);
    return SyncOutcome::Synchronized;
}

TimeImportOutcome TimeTrackingSync::importTimeTracking() {
    m_lastImport = TimeImportOutcome::NotSent;
    const xml::Node root =
        imports::selectConversionRoot(m_window.exchangeDocument(), imports::DocumentKind::Pda);
    if (!root) {
        return m_lastImport;
    }
    const ui::BusyScope busy(m_ui);
    auto sheet = xml::Stylesheet::load(m_folder.filePath(kTimeTrackSheet));
    if (!sheet) {
        m_ui.messageBox(sheet.error().description);
        return m_lastImport;
    }
    auto converted = sheet->transformNode(root);
    if (!converted) {
        status(imports::kErrorStatus);
        m_ui.messageBox("The time entries could not be converted: " + converted.error().description,
                        ui::kProgramTitle, ui::Icon::Exclamation);
        return m_lastImport;
    }
    auto request = xml::Document::parse(*converted);
    const std::size_t entries =
        request ? request->selectAll("//TimeTrackingAddRq").size() : std::size_t{0};
    if (entries == 0) {
        status("No time entries to import");
        return m_lastImport;
    }

    const std::string response = m_gateway.processRequest(imports::withRequestProlog(*converted));
    if (response.empty()) {
        status(imports::kErrorStatus);
        return m_lastImport = TimeImportOutcome::Unreachable;
    }
    if (!qbgateway::isResponseOK(response, m_ui)) {
        status(imports::kErrorStatus);
        return m_lastImport = TimeImportOutcome::Refused;
    }
    // The answer's check looks at the first entry only; QuickBooks stops at the first entry it
    // refuses and keeps those before it, which the person must know before sending again.
    auto answer = xml::Document::parse(response);
    std::size_t added = 0;
    std::string refusal;
    if (answer) {
        for (const xml::Node& rs : answer->selectAll("//TimeTrackingAddRs")) {
            if (rs.attribute("statusSeverity") == "Error") {
                refusal = rs.attribute("statusMessage");
                break;
            }
            ++added;
        }
    }
    if (added < entries) {
        m_ui.messageBox(std::to_string(added) + " of " + std::to_string(entries) +
                            " time entries were added; QuickBooks refused entry " +
                            std::to_string(added + 1) +
                            (refusal.empty() ? std::string(".") : ": " + refusal) +
                            "\r\nThe entries after it were not sent.",
                        ui::kProgramTitle, ui::Icon::Exclamation);
        status(imports::kErrorStatus);
        return m_lastImport = TimeImportOutcome::Refused;
    }
    status("Time Tracking items added");
    m_window.setBrowserBody(kTimeTrackingAddedPage);
    m_window.resetImportWindow();
    return m_lastImport = TimeImportOutcome::Added;
}

Result<std::filesystem::path> writeEmptyHandheldFile(const DeviceFolder& folder) {
    std::error_code ec;
    if (folder.path.empty()) {
        return Error{kNoDeviceFolder, "no device folder chosen"};
    }
    if (!std::filesystem::is_directory(folder.path, ec)) {
        return Error{kDeviceFolderMissing, "the device folder " + folder.path.string() +
                                               " is not there (is the handheld mounted?)"};
    }
    FolderDevice device(folder.path);
    const auto local = device.localPath(kDeviceDataFile);
    if (local && std::filesystem::exists(*local, ec)) {
        return Error{kHandheldFileThere,
                     local->string() + " is there already and may hold hours not fetched yet"};
    }
    device.rapiInit();
    const DeviceHandle file = device.createFile(kDeviceDataFile, OpenMode::Write);
    if (file == kInvalidHandle) {
        return Error{kHandheldFileUnwritable, std::string("cannot write ") + kDeviceDataFile +
                                                  " in " + folder.path.string() + " (error " +
                                                  std::to_string(device.lastError()) + ")"};
    }
    device.closeHandle(file);
    device.rapiUninit();
    return *device.localPath(kDeviceDataFile);
}

}  // namespace dorvane::handheld
