// SPDX-License-Identifier: GPL-3.0-or-later
// `dorvane handheld sync|import|status`: the import window's handheld sync and time import,
// headless, and a look at the device folder.
#include <filesystem>
#include <fstream>
#include <ostream>
#include <system_error>

#include "cli/cli.h"
#include "cli/commands.h"
#include "cli/terminalui.h"
#include "handheld/folderdevice.h"
#include "handheld/pocketpc.h"
#include "handheld/timetracksync.h"
#include "import/exchangefile.h"
#include "import/importwindow.h"
#include "shell/application.h"

namespace dorvane::cli {
namespace {

namespace fs = std::filesystem;

constexpr const char* kUsage =
    "Usage: dorvane handheld sync [--employee NAME] [--yes]\n"
    "       dorvane handheld import [FILE]\n"
    "       dorvane handheld status\n"
    "  sync hands the handheld in the device folder the worker NAME (an employee's name in\n"
    "  any case, or its ListID) with QuickBooks' customers, service items and payroll items,\n"
    "  after fetching the hours it recorded into dataFromPDA.xml in the program folder;\n"
    "  --yes then books them as QuickBooks time entries.\n"
    "  import books the hours of FILE (dataFromPDA.xml by default) as time entries; sending\n"
    "  the same file twice books its entries twice.\n"
    "  status shows the device folder and the handheld's file on it.\n"
    "  The device folder: dorvane settings set Handheld DeviceFolder DIR, or\n"
    "  DORVANE_DEVICE_DIR=DIR.\n"
    "  Exit status: 0 done, 1 a step failed, 2 QuickBooks or the device folder could not be\n"
    "  reached.\n";

// Prints the import window's status texts as they come, as its status bar shows them.
class StatusPrinter final : public ui::WindowObserver {
public:
    StatusPrinter(imports::ImportWindow& window, std::ostream& out) : m_window(window), m_out(out) {
        m_window.setObserver(this);
    }
    ~StatusPrinter() override { m_window.setObserver(nullptr); }
    StatusPrinter(const StatusPrinter&) = delete;
    StatusPrinter& operator=(const StatusPrinter&) = delete;
    void changed(std::string_view what) override {
        if (what == imports::kStatusBar && !m_window.statusText().empty()) {
            m_out << m_window.statusText() << '\n';
        }
    }

private:
    imports::ImportWindow& m_window;
    std::ostream& m_out;
};

std::size_t entriesIn(imports::ImportWindow& window) {
    return window.exchangeDocument().selectAll("/Dorvane_PDA/TimeTracks/TimeTrack").size();
}

// The command's own sync, behind the import window's SynchronizePDA entry and its Import
// button on a handheld file. Without the handheld it ends the command, not the program.
class CommandSync {
public:
    explicit CommandSync(CommandContext& ctx)
        : m_sync(ctx.ui, ctx.app.folder(), ctx.app.gateway(), ctx.app.importWindow(),
                 handheld::folderDeviceFactory(ctx.app.settings())) {
        imports::ImportWindowServices services;
        services.synchronizePDA = [this] { m_sync.synchronizePDA(); };
        services.importTimeTracking = [this] { m_sync.importTimeTracking(); };
        ctx.app.importWindow().setServices(std::move(services));
    }
    handheld::TimeTrackingSync* operator->() { return &m_sync; }

private:
    handheld::TimeTrackingSync m_sync;
};

int bookTimeEntries(CommandContext& ctx, CommandSync& sync) {
    using handheld::TimeImportOutcome;
    imports::ImportWindow& window = ctx.app.importWindow();
    window.importSelectedDocument();
    switch (sync->lastImport()) {
        case TimeImportOutcome::Added:
            return kExitOk;
        case TimeImportOutcome::Unreachable:
            return kExitGateway;
        case TimeImportOutcome::NotSent:
            return entriesIn(window) == 0 ? kExitOk : kExitFailed;
        default:
            return kExitFailed;
    }
}

// Runs the window's start-up; false (and the line why) when QuickBooks does not answer.
bool reachQuickBooks(CommandContext& ctx) {
    if (!startUp(ctx)) {
        return false;
    }
    ctx.app.importWindow().open();
    return true;
}

int sync(CommandContext& ctx, const Args& args) {
    handheld::SyncOptions options;
    bool book = false;
    for (std::size_t i = 1; i < args.size(); ++i) {
        const std::string& a = args[i];
        if (a == "--employee" && i + 1 < args.size()) {
            options.employee = args[++i];
        } else if (a.starts_with("--employee=")) {
            options.employee = a.substr(11);
        } else if (a == "--yes" || a == "-y") {
            book = true;
        } else {
            ctx.err << "dorvane: unexpected '" << a << "'\n" << kUsage;
            return kExitUsage;
        }
    }
    if (!reachQuickBooks(ctx)) {
        return kExitGateway;
    }
    CommandSync sync(ctx);
    imports::ImportWindow& window = ctx.app.importWindow();
    const StatusPrinter printer(window, ctx.out);
    switch (sync->synchronizePDA(options)) {
        case handheld::SyncOutcome::Synchronized:
            break;
        case handheld::SyncOutcome::NoEmployee:
            ctx.err << "Name the worker with --employee; QuickBooks' employees:\n";
            for (const std::string& entry : sync->employeeEntries()) {
                ctx.err << "  " << entry << '\n';
            }
            return kExitFailed;
        case handheld::SyncOutcome::NoAnswer:
            return kExitGateway;
        case handheld::SyncOutcome::DeviceUnreachable:
            ctx.err << "Choose the device folder with: dorvane settings set Handheld DeviceFolder "
                       "DIR (or DORVANE_DEVICE_DIR=DIR)\n";
            return kExitGateway;
        default:
            return kExitFailed;
    }
    ctx.out << "Time entries fetched: " << entriesIn(window) << " (in "
            << ctx.app.folder().filePath(handheld::kDataFromPdaFile) << ")\n";
    if (!book) {
        ctx.out << "Book them with: dorvane handheld import\n";
        return kExitOk;
    }
    return bookTimeEntries(ctx, sync);
}

int importFile(CommandContext& ctx, const Args& args) {
    if (args.size() > 2) {
        ctx.err << kUsage;
        return kExitUsage;
    }
    const std::string file =
        args.size() == 2 ? args[1] : ctx.app.folder().filePath(handheld::kDataFromPdaFile);
    if (const int rc = checkInputFile(file, ctx.err); rc != kExitOk) {
        return rc;
    }
    if (!reachQuickBooks(ctx)) {
        return kExitGateway;
    }
    CommandSync sync(ctx);
    imports::ImportWindow& window = ctx.app.importWindow();
    const StatusPrinter printer(window, ctx.out);
    window.openExchangeFile(file);
    if (imports::recogniseKind(window.documentKind()) != imports::DocumentKind::Pda ||
        !window.control(imports::kAddItemBtn).enabled) {
        ctx.out << "Not imported: " << file << " is no handheld file\n";
        return kExitFailed;
    }
    ctx.out << "Time entries: " << entriesIn(window) << '\n';
    return bookTimeEntries(ctx, sync);
}

int status(CommandContext& ctx) {
    ctx.app.settings().reload();
    const handheld::DeviceFolder folder = handheld::deviceFolder(ctx.app.settings());
    if (folder.path.empty()) {
        ctx.out << "Device folder: none chosen (dorvane settings set Handheld DeviceFolder DIR, "
                   "or DORVANE_DEVICE_DIR=DIR)\n";
        return kExitGateway;
    }
    ctx.out << "Device folder: " << folder.path.string() << " (from " << folder.source << ")\n";
    std::error_code ec;
    if (!fs::is_directory(folder.path, ec)) {
        ctx.out << "  not there: is the handheld connected and mounted?\n";
        return kExitGateway;
    }
    const handheld::FolderDevice device(folder.path);
    const auto local = device.localPath(handheld::kDeviceDataFile);
    ctx.out << "Handheld file: " << handheld::kDeviceDataFile;
    if (!local || !fs::is_regular_file(*local, ec)) {
        ctx.out << ": not there yet; the handheld application writes it\n";
        return kExitOk;
    }
    const auto size = fs::file_size(*local, ec);
    ctx.out << " = " << local->string() << ", " << size << " bytes\n";
    if (size > handheld::kMaxDeviceRead) {
        ctx.out << "  too large: a sync reads only its first " << handheld::kMaxDeviceRead
                << " bytes and stops\n";
    }
    std::string text(std::min<std::uintmax_t>(size, handheld::kMaxDeviceRead), '\0');
    std::ifstream(*local, std::ios::binary)
        .read(text.data(), static_cast<std::streamsize>(text.size()));
    auto parsed = imports::parseExchangeText(text);
    if (!parsed) {
        ctx.out << "  not a whole document: " << parsed.error().description << '\n';
        return kExitOk;
    }
    const xml::Document& doc = parsed->document;
    const std::string version = doc.valueOf("/Dorvane_PDA/TimeTracks/@version");
    ctx.out << "  employee: " << doc.valueOf("/Dorvane_PDA/Employee/Name") << '\n'
            << "  customers: " << doc.selectAll("/Dorvane_PDA/Customers/Customer").size()
            << ", projects: " << doc.selectAll("/Dorvane_PDA/Projects/Project").size()
            << ", payroll items: " << doc.selectAll("/Dorvane_PDA/PayrollItems/PayrollItem").size()
            << '\n'
            << "  time entries: " << doc.selectAll("/Dorvane_PDA/TimeTracks/TimeTrack").size()
            << (version.empty() ? std::string() : " (layout version " + version + ")") << '\n';
    return kExitOk;
}

}  // namespace

int handheldCommand(CommandContext& ctx, const Args& args) {
    const std::string sub = args.empty() ? std::string() : args.front();
    if (sub == "sync") {
        return sync(ctx, args);
    }
    if (sub == "import") {
        return importFile(ctx, args);
    }
    if (sub == "status" && args.size() == 1) {
        return status(ctx);
    }
    if (sub == "help" || sub == "--help") {
        ctx.out << kUsage;
        return kExitOk;
    }
    ctx.err << kUsage;
    return kExitUsage;
}

}  // namespace dorvane::cli
