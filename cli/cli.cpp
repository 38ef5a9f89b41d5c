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
#include "common/fd.h"
#include "platform/programhome.h"
#include "qbsandbox/sandbox.h"
#include "qbsandbox/state.h"
#include "shell/application.h"
#include "webconnector/config.h"
#include "webconnector/service.h"

namespace dorvane::cli {
namespace {

int helpCommand(const Invocation& args, std::ostream& out, std::ostream& err);
int versionCommand(const Invocation& args, std::ostream& out, std::ostream& err);
constexpr Command kHelpCommand{
    .name = "help",
    .synopsis = "[COMMAND [SUBCOMMAND]]",
    .summary = "this text, or the usage of a command",
    .maxOperands = 2,
    .runAlone = helpCommand,
};

constexpr Command kVersionCommand{
    .name = "version",
    .summary = "the program's version",
    .runAlone = versionCommand,
};

// The commands, in the order the general help lists them.
constexpr const Command* kCommands[] = {
    &kListCommand,    &kSendCommand,     &kPdfCommand,         &kRemindCommand,
    &kHistoryCommand, &kImportCommand,   &kImportBatchCommand, &kWebupdateCommand,
    &kCompanyCommand, &kSettingsCommand, &kHandheldCommand,    &kWebconnectorCommand,
    &kRequestCommand, &kSandboxCommand,  &kCheckCommand,       &kHelpCommand,
    &kVersionCommand,
};

constexpr Option kGlobalOptions[] = {
    {"--home", 0, "DIR",
     "the program folder (templates, style sheets, logs and traces);\n"
     "default $DORVANE_HOME, else ~/.local/share/dorvane"},
    {"--yes", 'y', "", "answer Yes/OK to every question; an input box takes its\nsuggested text"},
};

void printGeneralHelp(std::ostream& to) {
    to << "Usage: dorvane [--home DIR] [--yes] [COMMAND [ARGS]]\n"
          "\n"
          "Without a command Dorvane opens its window.\n"
          "\n"
          "Commands:\n";
    for (const Command* c : kCommands) {
        const std::string entry =
            c->overview.empty()
                ? std::string(c->name) + (c->synopsis.empty() ? "" : " ") + std::string(c->synopsis)
                : std::string(c->overview);
        printEntry(entry, c->summary, to);
    }
    to << "'dorvane COMMAND --help' or 'dorvane help COMMAND' shows a command's usage.\n\n";
    printOptions(kGlobalOptions, to);
    to << "\n"
          "Exit status: 0 done, 1 the job ran and something in it failed, 2 QuickBooks could not\n"
          "be reached, 64 the command line is wrong, 65 the input file is empty or unusable, 66 "
          "the\n"
          "input file cannot be read.\n";
}

const Command* find(std::span<const Command* const> commands, std::string_view name) {
    for (const Command* c : commands) {
        if (c->name == name) {
            return c;
        }
    }
    return nullptr;
}

const Command* findSub(const Command& command, std::string_view name) {
    for (const Command& c : command.subcommands) {
        if (c.name == name) {
            return &c;
        }
    }
    return nullptr;
}

bool runsItself(const Command& command) {
    return command.run || command.runAlone;
}

void printUsage(const Command& command, const std::string& path, std::ostream& to) {
    const char* lead = "Usage: ";
    if (runsItself(command) || command.subcommands.empty()) {
        to << lead << "dorvane " << path << (command.synopsis.empty() ? "" : " ")
           << command.synopsis << '\n';
        lead = "       ";
    }
    for (const Command& sub : command.subcommands) {
        to << lead << "dorvane " << path << ' ' << sub.name << (sub.synopsis.empty() ? "" : " ")
           << sub.synopsis << '\n';
        lead = "       ";
    }
    to << command.details;
    if (!command.subcommands.empty()) {
        to << "\nCommands:\n";
        for (const Command& sub : command.subcommands) {
            printEntry(sub.name, sub.summary, to);
        }
        to << "'dorvane " << path << " COMMAND --help' shows a command's usage.\n";
    }
    if (command.subcommands.empty() || runsItself(command)) {
        to << '\n';
        printOptions(command.options, to);
    }
}

int helpCommand(const Invocation& args, std::ostream& out, std::ostream& err) {
    if (args.operands.empty()) {
        printGeneralHelp(out);
        return kExitOk;
    }
    const Command* command = find(kCommands, args.operands[0]);
    if (!command) {
        return usageError("help", "unknown command '" + args.operands[0] + "'", err);
    }
    std::string path(command->name);
    if (args.operands.size() == 2) {
        const Command* sub = findSub(*command, args.operands[1]);
        if (!sub) {
            return usageError("help", "'" + path + "' has no command '" + args.operands[1] + "'",
                              err);
        }
        path += " " + std::string(sub->name);
        command = sub;
    }
    printUsage(*command, path, out);
    return kExitOk;
}

int versionCommand(const Invocation&, std::ostream& out, std::ostream&) {
    out << "Dorvane " << DORVANE_VERSION << '\n';
    return kExitOk;
}

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

int checkInputFile(const std::string& path, std::ostream& err) {
    if (path == "-") {
        return kExitOk;
    }
    auto cannot = [&](int error) {
        err << "Cannot read " << path << ": " << std::strerror(error) << '\n';
        return kExitNoInput;
    };
    const UniqueFd fd(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!fd) {
        return cannot(errno);
    }
    struct stat st {};
    if (::fstat(fd.get(), &st) != 0) {
        return cannot(errno);
    }
    if (S_ISDIR(st.st_mode)) {
        return cannot(EISDIR);
    }
    // Only a regular file can be looked into without consuming it (a pipe is taken as it is).
    bool blank = S_ISREG(st.st_mode);
    while (blank) {
        char buffer[4096];
        const ssize_t n = ::read(fd.get(), buffer, sizeof buffer);
        if (n < 0) {
            return cannot(errno);
        }
        if (n == 0) {
            break;
        }
        for (ssize_t i = 0; i < n && blank; ++i) {
            blank = std::strchr(" \t\r\n", buffer[i]) != nullptr && buffer[i] != '\0';
        }
    }
    if (blank) {
        err << "Cannot read " << path << ": the file is empty\n";
        return kExitData;
    }
    return kExitOk;
}

int checkFirstOperand(Invocation& args, std::ostream& err) {
    return checkInputFile(args.operands.at(0), err);
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

namespace {

// The window's start-up: the company, the default records. When QuickBooks cannot be reached
// it says so once, with what to do, and answers false (the job then exits kExitGateway).
bool startUp(CommandContext& ctx) {
    ctx.app.window().startUp();
    if (!ctx.app.gateway().currentCompanyFile().empty()) {
        return true;
    }
    reportUnreachable(ctx);
    return false;
}

// Parses and checks the command line of `command`, and only then prepares what it needs and
// runs it.
int runLeaf(const Command& command, const std::string& path, const Args& args,
            const GlobalOptions& global, std::ostream& out, std::ostream& err) {
    bool help = false;
    std::optional<Invocation> parsed =
        parseArgs(path, args,
                  {command.options, command.minOperands, command.maxOperands, command.operandNames},
                  help, err);
    if (help) {
        printUsage(command, path, out);
        return kExitOk;
    }
    if (!parsed) {
        return kExitUsage;
    }
    parsed->home = global.home;
    parsed->yes = global.yes;
    if (command.check) {
        if (const int rc = command.check(*parsed, err); rc != kExitOk) {
            return rc;
        }
    }
    if (command.needs == Needs::Nothing) {
        return command.runAlone(*parsed, out, err);
    }
    TerminalUi ui(err, global.yes, ::isatty(STDIN_FILENO) && ::isatty(STDERR_FILENO));
    reportHome(platform::setUpProgramHome(global.home), err);
    shell::Application app(ui, shell::StartOptions{global.home});
    ui.holdBackWhile([&app] { return app.gateway().unreachable(); });
    if (webconnector::Service* service = app.webConnector()) {
        announceWaits(*service, err);
    }
    CommandContext ctx{app, ui, out, err};
    if (command.needs == Needs::StartUp) {
        app.window().startUp();
    } else if (command.needs == Needs::QuickBooks && !startUp(ctx)) {
        if (!command.notDone.empty()) {
            out << command.notDone << '\n';
        }
        return kExitGateway;
    }
    return command.run(ctx, *parsed);
}

// A command's word is taken; the rest picks its subcommand (if it has any) and runs it.
int dispatch(const Command& command, const std::string& path, const Args& args,
             const GlobalOptions& global, std::ostream& out, std::ostream& err) {
    if (command.subcommands.empty()) {
        return runLeaf(command, path, args, global, out, err);
    }
    const std::string first = args.empty() ? std::string() : args.front();
    if (first == "help") {
        // `dorvane handheld help [sync]` is `dorvane help handheld [sync]`.
        Invocation words;
        words.operands = {std::string(command.name)};
        words.operands.insert(words.operands.end(), args.begin() + 1, args.end());
        if (words.operands.size() > 2) {
            return usageError(path, "extra argument '" + words.operands[2] + "'", err);
        }
        return helpCommand(words, out, err);
    }
    if (const Command* sub = findSub(command, first)) {
        const Args rest(args.begin() + 1, args.end());
        return dispatch(*sub, path + " " + std::string(sub->name), rest, global, out, err);
    }
    if (runsItself(command) && (args.empty() || first.starts_with('-'))) {
        return runLeaf(command, path, args, global, out, err);
    }
    if (first == "-h" || first == "--help") {
        printUsage(command, path, out);
        return kExitOk;
    }
    if (args.empty()) {
        printUsage(command, path, err);
        return kExitUsage;
    }
    return usageError(path,
                      first.starts_with('-') ? "unknown option '" + first + "'"
                                             : "unknown command '" + first + "'",
                      err);
}

}  // namespace

bool hasCommand(const std::vector<std::string>& args) {
    return !parseGlobalOptions(args).rest.empty();
}

int run(const std::vector<std::string>& args, std::ostream& out, std::ostream& err) {
    const GlobalOptions options = parseGlobalOptions(args);
    if (options.rest.empty()) {
        printGeneralHelp(err);
        return kExitUsage;
    }
    const std::string& word = options.rest.front();
    const Args rest(options.rest.begin() + 1, options.rest.end());
    if (word == "--help" || word == "-h") {
        return runLeaf(kHelpCommand, "help", rest, options, out, err);
    }
    if (word == "--version") {
        return runLeaf(kVersionCommand, "version", rest, options, out, err);
    }
    if (word == "--home") {
        return usageError("", "option '--home' needs a value (DIR)", err);
    }
    if (word.starts_with('-')) {
        return usageError("", "unknown option '" + word + "'", err);
    }
    const Command* command = find(kCommands, word);
    if (!command) {
        err << "dorvane: unknown command '" << word << "'\n"
            << "Try 'dorvane --help' for more information.\n";
        return kExitUsage;
    }
    return dispatch(*command, word, rest, options, out, err);
}

}  // namespace dorvane::cli
