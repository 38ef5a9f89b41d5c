// SPDX-License-Identifier: GPL-3.0-or-later
// `dorvane handheld sync|import|status`: the import window's handheld sync and time import,
// headless, and a look at the device folder.
#include <filesystem>
#include <fstream>
#include <ostream>
#include <sstream>
#include <system_error>

#include "cli/cli.h"
#include "cli/commands.h"
#include "cli/json.h"
#include "cli/terminalui.h"
#include "handheld/folderdevice.h"
#include "handheld/pocketpc.h"
#include "handheld/timetracksync.h"
#include "import/exchangefile.h"
#include "import/importwindow.h"
#include "platform/programhome.h"
#include "shell/application.h"

namespace dorvane::cli {
namespace {

namespace fs = std::filesystem;

constexpr const char* kChooseFolder =
    "dorvane settings set Handheld DeviceFolder DIR (or DORVANE_DEVICE_DIR=DIR)";

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

// The handheld's file in the device folder, when it is there.
std::optional<fs::path> handheldFile(CommandContext& ctx) {
    const handheld::DeviceFolder folder = handheld::deviceFolder(ctx.app.settings());
    if (folder.path.empty()) {
        return std::nullopt;
    }
    const auto local = handheld::FolderDevice(folder.path).localPath(handheld::kDeviceDataFile);
    std::error_code ec;
    return local && fs::exists(*local, ec) ? local : std::nullopt;
}

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

int sync(CommandContext& ctx, const Invocation& args) {
    handheld::SyncOptions options;
    options.employee = args.value("--employee");
    const bool book = args.has("--yes");
    ctx.app.importWindow().open();
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
            return kExitUsage;
        case handheld::SyncOutcome::NoAnswer:
            return kExitGateway;
        case handheld::SyncOutcome::DeviceUnreachable:
            ctx.err << "Choose the device folder with: " << kChooseFolder << '\n';
            return kExitGateway;
        case handheld::SyncOutcome::FetchFailed:
            if (!handheldFile(ctx)) {
                ctx.err << "A new handheld has no " << handheld::kDeviceDataFile
                        << " yet: `dorvane handheld init` writes an empty one for the first "
                           "sync.\n";
            }
            return kExitFailed;
        default:
            return kExitFailed;
    }
    ctx.out << "Time entries fetched: " << entriesIn(window) << " (in "
            << ctx.app.folder().filePath(handheld::kDataFromPdaFile) << ")\n";
    if (entriesIn(window) == 0) {
        return kExitOk;
    }
    if (!book) {
        ctx.out << "Book them with: dorvane handheld import\n";
        return kExitOk;
    }
    return bookTimeEntries(ctx, sync);
}

// `handheld import` without FILE books what the last sync fetched.
std::string fileToImport(const Invocation& args) {
    return !args.operands.empty()
               ? args.operands[0]
               : (platform::locateProgramHome(args.home) / handheld::kDataFromPdaFile).string();
}

int checkImportFile(Invocation& args, std::ostream& err) {
    return checkInputFile(fileToImport(args), err);
}

int importFile(CommandContext& ctx, const Invocation& args) {
    const std::string file = args.operands.empty()
                                 ? ctx.app.folder().filePath(handheld::kDataFromPdaFile)
                                 : args.operands[0];
    ctx.app.importWindow().open();
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

int status(CommandContext& ctx, const Invocation& args) {
    // The facts go into `doc` as they are found, and the text into `text`; --json prints the
    // one, otherwise the other.
    Json doc;
    std::ostringstream text;
    const auto done = [&](int code) {
        if (args.has("--json")) {
            printJson(doc, ctx.out);
        } else {
            ctx.out << text.str();
        }
        return code;
    };
    ctx.app.settings().reload();
    const handheld::DeviceFolder folder = handheld::deviceFolder(ctx.app.settings());
    doc["deviceFolder"] = folder.path.empty() ? Json() : Json(folder.path.string());
    if (folder.path.empty()) {
        text << "Device folder: none chosen (" << kChooseFolder << ")\n";
        return done(kExitGateway);
    }
    doc["source"] = folder.source;
    text << "Device folder: " << folder.path.string() << " (from " << folder.source << ")\n";
    std::error_code ec;
    const bool present = fs::is_directory(folder.path, ec);
    doc["present"] = present;
    if (!present) {
        text << "  not there: is the handheld connected and mounted?\n";
        return done(kExitGateway);
    }
    const handheld::FolderDevice device(folder.path);
    const auto local = device.localPath(handheld::kDeviceDataFile);
    text << "Handheld file: " << handheld::kDeviceDataFile;
    if (!local || !fs::is_regular_file(*local, ec)) {
        doc["handheldFile"] = nullptr;
        text << ": not there yet; the handheld application writes it (or dorvane handheld "
                "init, an empty one)\n";
        return done(kExitOk);
    }
    const auto size = fs::file_size(*local, ec);
    doc["handheldFile"] = local->string();
    doc["bytes"] = size;
    text << " = " << local->string() << ", " << size << " bytes\n";
    if (size == 0) {
        text << "  empty: the next sync hands it the lists\n";
        return done(kExitOk);
    }
    if (size > handheld::kMaxDeviceRead) {
        doc["tooLarge"] = true;
        text << "  too large: a sync reads only its first " << handheld::kMaxDeviceRead
             << " bytes and stops\n";
    }
    std::string content(std::min<std::uintmax_t>(size, handheld::kMaxDeviceRead), '\0');
    std::ifstream(*local, std::ios::binary)
        .read(content.data(), static_cast<std::streamsize>(content.size()));
    auto parsed = imports::parseExchangeText(content);
    if (!parsed) {
        doc["problem"] = parsed.error().description;
        text << "  not a whole document: " << parsed.error().description << '\n';
        return done(kExitOk);
    }
    const xml::Document& file = parsed->document;
    const std::string version = file.valueOf("/Dorvane_PDA/TimeTracks/@version");
    const auto count = [&](const char* path) { return file.selectAll(path).size(); };
    doc["employee"] = file.valueOf("/Dorvane_PDA/Employee/Name");
    doc["customers"] = count("/Dorvane_PDA/Customers/Customer");
    doc["projects"] = count("/Dorvane_PDA/Projects/Project");
    doc["payrollItems"] = count("/Dorvane_PDA/PayrollItems/PayrollItem");
    doc["timeEntries"] = count("/Dorvane_PDA/TimeTracks/TimeTrack");
    doc["layoutVersion"] = version.empty() ? Json() : Json(version);
    text << "  employee: " << doc["employee"].get<std::string>() << '\n'
         << "  customers: " << doc["customers"] << ", projects: " << doc["projects"]
         << ", payroll items: " << doc["payrollItems"] << '\n'
         << "  time entries: " << doc["timeEntries"]
         << (version.empty() ? std::string() : " (layout version " + version + ")") << '\n';
    return done(kExitOk);
}

// `handheld init`: the empty file a new handheld lacks, which the first sync replaces.
int init(CommandContext& ctx, const Invocation&) {
    ctx.app.settings().reload();
    const auto written =
        handheld::writeEmptyHandheldFile(handheld::deviceFolder(ctx.app.settings()));
    if (!written) {
        const Error& e = written.error();
        ctx.err << "dorvane handheld init: " << e.description;
        switch (e.code) {
            case handheld::kNoDeviceFolder:
            case handheld::kDeviceFolderMissing:
                ctx.err << "; choose it with: " << kChooseFolder << '\n';
                return kExitGateway;
            case handheld::kHandheldFileThere:
                ctx.err << ": `dorvane handheld sync` fetches them\n";
                return kExitFailed;
            default:
                ctx.err << '\n';
                return kExitFailed;
        }
    }
    ctx.out << "Wrote an empty " << written->string()
            << "; `dorvane handheld sync --employee NAME` hands it QuickBooks' lists.\n";
    return kExitOk;
}

constexpr Option kStatusOptions[] = {kJsonOption};

constexpr Option kSyncOptions[] = {
    {"--employee", 0, "NAME", "the worker: an employee's name (any case) or ListID"},
    {"--yes", 'y', "", "book the fetched hours as time entries"},
};

constexpr Command kHandheldSubcommands[] = {
    {.name = "sync",
     .synopsis = "--employee NAME [--yes]",
     .summary = "fetch the hours the handheld recorded and hand it\nQuickBooks' lists",
     .details =
         "  Hands the handheld in the device folder the worker NAME with QuickBooks'\n"
         "  customers, service items and payroll items, after fetching the hours it recorded\n"
         "  into dataFromPDA.xml in the program folder; --yes then books them as QuickBooks\n"
         "  time entries. Without --employee it lists QuickBooks' employees.\n",
     .options = kSyncOptions,
     .needs = Needs::QuickBooks,
     .run = sync},
    {.name = "import",
     .synopsis = "[FILE]",
     .summary = "book the hours of a fetched file as time entries",
     .details = "  Books the hours of FILE (dataFromPDA.xml by default) as time entries; sending\n"
                "  the same file twice books its entries twice.\n",
     .maxOperands = 1,
     .needs = Needs::QuickBooks,
     .check = checkImportFile,
     .run = importFile},
    {.name = "status",
     .synopsis = "[--json]",
     .summary = "show the device folder and the handheld's file on it",
     .options = kStatusOptions,
     .needs = Needs::Application,
     .run = status},
    {.name = "init",
     .summary = "write the empty handheld file a new handheld lacks",
     .details = "  Writes an empty \\Program Files\\TimeTrack\\data.xml into the device folder,\n"
                "  which the first sync then fills; a file already there is left as it is.\n",
     .needs = Needs::Application,
     .run = init},
};

}  // namespace

constexpr Command kHandheldCommand{
    .name = "handheld",
    .summary =
        "hand the handheld in the device folder QuickBooks' lists and fetch\n"
        "the hours it recorded (--yes books them as time entries); book a\n"
        "fetched file; show the device folder (Handheld DeviceFolder)",
    .details =
        "  The device folder: dorvane settings set Handheld DeviceFolder DIR, or\n"
        "  DORVANE_DEVICE_DIR=DIR.\n"
        "  Exit status: 0 done, 1 a step failed, 2 QuickBooks or the device folder could not\n"
        "  be reached, 64 no worker named.\n",
    .subcommands = kHandheldSubcommands,
    .overview = "handheld sync|import|status|init ...",
};

}  // namespace dorvane::cli
