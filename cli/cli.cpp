// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/cli.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <ostream>
#include <sys/stat.h>
#include <unistd.h>

#include "cli/commands.h"
#include "cli/terminalui.h"
#include "platform/programhome.h"
#include "qbsandbox/sandbox.h"
#include "qbsandbox/state.h"
#include "shell/application.h"
#include "webconnector/config.h"
#include "webconnector/service.h"

namespace dorvane::cli {
namespace {

constexpr const char* kUsage =
    "Usage: dorvane [--home DIR] [--yes] [COMMAND [ARGS]]\n"
    "\n"
    "Without a command Dorvane opens its window.\n"
    "\n"
    "Commands:\n"
    "  list TYPE [--timeframe NAME]\n"
    "                        list the documents of a type as the window does (Invoice,\n"
    "                        Estimate, CreditMemo, SalesReceipt, PurchaseOrder, Statement,\n"
    "                        Timesheet, TimesheetA); NAME is one of the window's timeframes\n"
    "                        (ThisWeekToDate by default, ..., ALL); both in any case\n"
    "  send TYPE [--timeframe NAME] [--preview]\n"
    "                        list as above, then mail the checked documents (or render them\n"
    "                        into preview.htm); exit status 1 when one did not go out\n"
    "  import FILE [--vendor NAME] [--account NAME] [--again]\n"
    "                        book a received exchange file (.dvx): an invoice as a bill, an\n"
    "                        estimate as a purchase order, a sales receipt as a check or\n"
    "                        card charge; exit status 1 when it was not booked\n"
    "  import --receipt FILE|- [--customer NAME] [--again]\n"
    "                        book an Authorize.Net receipt's text as a sales receipt\n"
    "  import-batch FILE [--bulk] [--quoted] [--yes]\n"
    "                        book the approved transactions of an Authorize.Net download as\n"
    "                        sales receipts, each once; one line per transaction, exit status\n"
    "                        1 when one was refused\n"
    "  webupdate KIND [--only LISTID ...]\n"
    "                        list the Service, Inventory or NonInventory items and publish\n"
    "                        them to the web site set in the settings (Web UpdateURL)\n"
    "  company               print the company's name and address\n"
    "  company set FIELD VALUE [FIELD VALUE ...]\n"
    "                        enter or correct the company's record where Dorvane keeps it\n"
    "                        (the window's company editor); FIELD is CompanyName, Addr1,\n"
    "                        Addr2, City, State, Zip, Country, Phone, Fax, Email or Website\n"
    "  settings list [SECTION] | settings get SECTION KEY | settings set SECTION KEY VALUE\n"
    "                        show every per-user setting (mail, import, handheld, web site,\n"
    "                        QuickBooks connection) with its value, meaning and allowed\n"
    "                        values; read one (a value never set reads as its default); write\n"
    "                        one (an unknown setting or a value it does not take is refused)\n"
    "  handheld sync [--employee NAME] [--yes] | handheld import [FILE] | handheld status\n"
    "                        hand the handheld in the device folder QuickBooks' lists and fetch\n"
    "                        the hours it recorded (--yes books them as time entries); book a\n"
    "                        fetched file; show the device folder (Handheld DeviceFolder)\n"
    "  webconnector user NAME | qwc [FILE] | status\n"
    "                        reach QuickBooks on a Windows PC through its Web Connector\n"
    "                        (QuickBooks Connection = webconnector): set the user it logs in\n"
    "                        as, write the .qwc file to add to it, show when it connected\n"
    "  request FILE          send the qbXML request in FILE to QuickBooks and print the answer\n"
    "  sandbox ...           the embedded QuickBooks: status | open FILE | close | stop |\n"
    "                        new FILE [--demo] [--customers N] [--invoices N] | load FILE.xml\n"
    "                        (dorvane sandbox help tells more)\n"
    "  help                  this text\n"
    "  version               the program's version\n"
    "\n"
    "Options:\n"
    "  --home DIR            the program folder (templates, style sheets, logs and traces);\n"
    "                        default $DORVANE_HOME, else ~/.local/share/dorvane\n"
    "  --yes, -y             answer Yes/OK to every question; an input box takes its\n"
    "                        suggested text\n"
    "\n"
    "Exit status: 0 done, 1 the job ran and something in it failed, 2 QuickBooks could not\n"
    "be reached, 64 the command line is wrong, 65 the input file is empty or unusable, 66 the\n"
    "input file cannot be read.\n";

struct Command {
    const char* name;
    int (*run)(CommandContext&, const Args&);
};

constexpr Command kCommands[] = {
    {"request", requestCommand},          {"list", listCommand},
    {"company", companyCommand},          {"send", sendCommand},
    {"settings", settingsCommand},        {"import", importCommand},
    {"import-batch", importBatchCommand}, {"webupdate", webupdateCommand},
    {"handheld", handheldCommand},        {"webconnector", webconnectorCommand},
};

// What preparing the program folder did (a changed style sheet kept, records moved), one line
// each, before the job's own output.
void reportHome(const platform::HomeReport& report, std::ostream& err) {
    for (const std::string& notice : report.notices) {
        err << "dorvane: " << notice << '\n';
    }
    if (!report.error.empty()) {
        err << "dorvane: " << report.error << '\n';
    }
}

// A command that waits for the Web Connector says so once per wait, on the error stream.
void announceWaits(webconnector::Service& service, std::ostream& err) {
    service.setWaitHook(
        [&service, &err, said = false](const webconnector::WaitProgress& p) mutable {
            if (p.elapsedSeconds == 0) {
                said = false;
            }
            if (!said && p.phase != webconnector::WaitProgress::Phase::Answer &&
                p.elapsedSeconds >= 1) {
                err << "dorvane: waiting up to " << p.limitSeconds << " s for the Web Connector at "
                    << service.settings().appUrl() << '\n';
                said = true;
            }
            return true;
        });
}

}  // namespace

namespace {

std::string unreachableAdvice(shell::Application& app) {
    std::string folder;
    switch (webconnector::chosenConnection(app.settings(), &folder)) {
        case webconnector::Connection::WebConnector: {
            const auto log =
                webconnector::summarizeLog(app.folder().filePath(webconnector::kLogFile));
            return "QuickBooks is reached through the Web Connector, which " +
                   (log.lastConnected ? "last connected " + *log.lastConnected
                                      : std::string("has never connected")) +
                   ". Start QuickBooks and the Web Connector on the office PC with the company "
                   "file open (dorvane webconnector status tells more).";
        }
        case webconnector::Connection::ResponseFolder:
            return "The answers of " + folder + " do not reach QuickBooks.";
        case webconnector::Connection::Sandbox:
            break;
    }
    const auto state = qbsandbox::readState(qbsandbox::stateFolder());
    const std::string last =
        state && !state->last.empty() ? "'" + state->last.string() + "'" : std::string("FILE");
    const bool stopped = state && !state->running;
    return std::string(stopped ? "The sandbox QuickBooks is not running: start it"
                               : "No company file is open in the sandbox QuickBooks: open one") +
           " with `dorvane sandbox open " + last + "`" +
           (last == "FILE" ? "" : " (the company file open last)") + ".";
}

}  // namespace

int reportUnreachable(CommandContext& ctx) {
    ctx.err << "dorvane: QuickBooks could not be reached. " << unreachableAdvice(ctx.app) << '\n';
    return kExitGateway;
}

bool startUp(CommandContext& ctx) {
    ctx.app.window().startUp();
    if (!ctx.app.gateway().currentCompanyFile().empty()) {
        return true;
    }
    reportUnreachable(ctx);
    return false;
}

int checkInputFile(const std::string& path, std::ostream& err) {
    if (path == "-") {
        return kExitOk;
    }
    auto cannot = [&](int error) {
        err << "Cannot read " << path << ": " << std::strerror(error) << '\n';
        return kExitNoInput;
    };
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (fd < 0) {
        return cannot(errno);
    }
    struct stat st {};
    if (::fstat(fd, &st) != 0) {
        const int error = errno;
        ::close(fd);
        return cannot(error);
    }
    if (S_ISDIR(st.st_mode)) {
        ::close(fd);
        return cannot(EISDIR);
    }
    // Only a regular file can be looked into without consuming it (a pipe is taken as it is).
    bool blank = S_ISREG(st.st_mode);
    while (blank) {
        char buffer[4096];
        const ssize_t n = ::read(fd, buffer, sizeof buffer);
        if (n < 0) {
            const int error = errno;
            ::close(fd);
            return cannot(error);
        }
        if (n == 0) {
            break;
        }
        for (ssize_t i = 0; i < n && blank; ++i) {
            blank = std::strchr(" \t\r\n", buffer[i]) != nullptr && buffer[i] != '\0';
        }
    }
    ::close(fd);
    if (blank) {
        err << "Cannot read " << path << ": the file is empty\n";
        return kExitData;
    }
    return kExitOk;
}

GlobalOptions parseGlobalOptions(const std::vector<std::string>& args) {
    GlobalOptions options;
    std::size_t i = 0;
    for (; i < args.size(); ++i) {
        const std::string& a = args[i];
        if (a == "--home" && i + 1 < args.size()) {
            options.home = args[++i];
        } else if (a.starts_with("--home=")) {
            options.home = a.substr(7);
        } else if (a == "--yes" || a == "-y") {
            options.yes = true;
        } else {
            break;
        }
    }
    options.rest.assign(args.begin() + static_cast<std::ptrdiff_t>(i), args.end());
    return options;
}

bool hasCommand(const std::vector<std::string>& args) {
    return !parseGlobalOptions(args).rest.empty();
}

int run(const std::vector<std::string>& args, std::ostream& out, std::ostream& err) {
    GlobalOptions options = parseGlobalOptions(args);
    if (options.rest.empty()) {
        err << kUsage;
        return kExitUsage;
    }
    const std::string command = options.rest.front();
    Args rest(options.rest.begin() + 1, options.rest.end());

    if (command == "help" || command == "--help" || command == "-h") {
        out << kUsage;
        return kExitOk;
    }
    if (command == "version" || command == "--version") {
        out << "Dorvane " << DORVANE_VERSION << '\n';
        return kExitOk;
    }
    if (command == "sandbox") {
        return sandboxCommand(rest, out, err);
    }
    for (const Command& c : kCommands) {
        if (command == c.name) {
            TerminalUi ui(err, options.yes, ::isatty(STDIN_FILENO) && ::isatty(STDERR_FILENO));
            reportHome(platform::setUpProgramHome(options.home), err);
            shell::Application app(ui, shell::StartOptions{options.home});
            ui.holdBackWhile([&app] { return app.gateway().unreachable(); });
            if (webconnector::Service* service = app.webConnector()) {
                announceWaits(*service, err);
            }
            CommandContext ctx{app, ui, out, err};
            return c.run(ctx, rest);
        }
    }
    err << "dorvane: unknown command '" << command << "'\n\n" << kUsage;
    return kExitUsage;
}

}  // namespace dorvane::cli
