// SPDX-License-Identifier: GPL-3.0-or-later
// `dorvane webconnector user NAME | qwc [FILE] | status`: setting up QuickBooks through the
// Web Connector.
#include <iostream>
#include <ostream>
#include <string>
#include <termios.h>
#include <unistd.h>

#include "cli/cli.h"
#include "cli/commands.h"
#include "cli/json.h"
#include "shell/application.h"
#include "webconnector/config.h"

namespace dorvane::cli {
namespace {

// One line from standard input without its line end; on a terminal, without echo.
std::optional<std::string> readSecret(std::ostream& err, const char* prompt) {
    const bool terminal = ::isatty(STDIN_FILENO);
    termios saved{};
    if (terminal) {
        err << prompt << std::flush;
        ::tcgetattr(STDIN_FILENO, &saved);
        termios quiet = saved;
        quiet.c_lflag &= static_cast<tcflag_t>(~ECHO);
        ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &quiet);
    }
    std::string line;
    const bool got = static_cast<bool>(std::getline(std::cin, line));
    if (terminal) {
        ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &saved);
        err << '\n';
    }
    if (!got) {
        return std::nullopt;
    }
    if (!line.empty() && line.back() == '\r') {
        line.pop_back();
    }
    return line;
}

int user(CommandContext& ctx, const Invocation& args) {
    const std::string& name = args.operands[0];
    auto password = readSecret(ctx.err, "Password for the Web Connector: ");
    if (!password || password->empty()) {
        ctx.err << "dorvane: no password given; nothing changed\n";
        return kExitFailed;
    }
    if (::isatty(STDIN_FILENO)) {
        auto again = readSecret(ctx.err, "The same password again: ");
        if (!again || *again != *password) {
            ctx.err << "dorvane: the two passwords differ; nothing changed\n";
            return kExitFailed;
        }
    }
    const Status saved = webconnector::setUser(ctx.app.settings(), name, *password);
    password->assign(password->size(), '\0');
    if (!saved) {
        ctx.err << "dorvane: " << saved.error().description << '\n';
        return kExitFailed;
    }
    ctx.out << "The Web Connector logs in as '" << name
            << "'. Type the same password into the Web Connector when it asks.\n";
    return kExitOk;
}

int qwc(CommandContext& ctx, const Invocation& args) {
    const std::string file = args.operands.empty() ? "Dorvane.qwc" : args.operands[0];
    platform::SettingsStore& store = ctx.app.settings();
    const Status written = webconnector::writeQwc(store, file);
    if (!written) {
        ctx.err << "dorvane: " << written.error().description << '\n';
        return kExitFailed;
    }
    const auto s = webconnector::ServiceSettings::load(store);
    ctx.out << "Wrote " << file << " for " << s.appUrl() << ".\n"
            << "Add it to the Web Connector on the PC where QuickBooks runs (Add an "
               "application).\n";
    if (!s.secure()) {
        ctx.out << "No certificate is set, so Dorvane listens on this computer only: the Web "
                   "Connector reaches it\nthrough a tunnel to localhost:"
                << s.port << " (see the README), or set WebConnector Certificate and Key.\n";
    }
    return kExitOk;
}

// The status for a script: the same fields, null where the text says none or never.
void printStatusJson(const webconnector::ServiceSettings& s, bool chosen,
                     const webconnector::LogSummary& log, std::ostream& out) {
    const auto orNull = [](const std::optional<std::string>& v) { return v ? Json(*v) : Json(); };
    const bool user = !s.userName.empty() && !s.passwordHash.empty();
    printJson(
        Json{{"connection", chosen ? "webconnector" : "sandbox"},
             {"serviceAddress", s.appUrl()},
             {"listensOn", s.listenText()},
             {"user", user ? Json(s.userName) : Json()},
             {"serving", log.servingSince.has_value()},
             {"servingPid", log.servingSince ? Json(log.servingPid) : Json()},
             {"servingSince", log.servingSince ? Json(log.servingSince->substr(0, 19)) : Json()},
             {"lastConnected", orNull(log.lastConnected)},
             {"webConnector", orNull(log.clientVersion)},
             {"companyFile", orNull(log.companyFile)},
             {"lastRefused", orNull(log.lastRefused)},
             {"lastProblem", orNull(log.lastError)}},
        out);
}

int status(CommandContext& ctx, const Invocation& args) {
    platform::SettingsStore& store = ctx.app.settings();
    const auto s = webconnector::ServiceSettings::load(store);
    const bool chosen =
        webconnector::chosenConnection(store) == webconnector::Connection::WebConnector;
    if (args.has("--json")) {
        printStatusJson(
            s, chosen,
            webconnector::summarizeLog(ctx.app.folder().filePath(webconnector::kLogFile)), ctx.out);
        return kExitOk;
    }
    std::ostream& out = ctx.out;
    out << "Connection:      "
        << (chosen ? "webconnector" : "sandbox (QuickBooks Connection is not webconnector)") << '\n'
        << "Service address: " << s.appUrl() << '\n'
        << "Listens on:      " << s.listenText() << '\n'
        << "User:            "
        << (s.userName.empty() || s.passwordHash.empty()
                ? std::string("none set (dorvane webconnector user NAME)")
                : s.userName)
        << '\n';
    const auto log = webconnector::summarizeLog(ctx.app.folder().filePath(webconnector::kLogFile));
    out << "Serving now:     "
        << (log.servingSince ? "yes, process " + std::to_string(log.servingPid) + " since " +
                                   log.servingSince->substr(0, 19)
                             : std::string("no"))
        << '\n'
        << "Last connected:  " << log.lastConnected.value_or("never") << '\n';
    if (log.clientVersion) {
        out << "Web Connector:   " << *log.clientVersion << '\n';
    }
    if (log.companyFile) {
        out << "Company file:    " << *log.companyFile << '\n';
    }
    if (log.lastRefused) {
        out << "Last refused:    " << *log.lastRefused << '\n';
    }
    if (log.lastError) {
        out << "Last problem:    " << *log.lastError << '\n';
    }
    return kExitOk;
}

constexpr Option kStatusOptions[] = {kJsonOption};

constexpr Command kWebconnectorSubcommands[] = {
    {.name = "user",
     .synopsis = "NAME",
     .summary = "the user the Web Connector logs in as",
     .details =
         "  Asks for the password (on a terminal, twice, without echo) or reads it from the\n"
         "  first line of standard input; only a salted hash of it is kept.\n",
     .minOperands = 1,
     .maxOperands = 1,
     .operandNames = "NAME",
     .needs = Needs::Application,
     .run = user},
    {.name = "qwc",
     .synopsis = "[FILE]",
     .summary = "write the .qwc file to add to the Web Connector (default\nDorvane.qwc)",
     .maxOperands = 1,
     .needs = Needs::Application,
     .run = qwc},
    {.name = "status",
     .synopsis = "[--json]",
     .summary = "the connection's settings, and when a Web Connector last\nconnected",
     .options = kStatusOptions,
     .needs = Needs::Application,
     .run = status},
};

}  // namespace

constexpr Command kWebconnectorCommand{
    .name = "webconnector",
    .summary =
        "reach QuickBooks on a Windows PC through its Web Connector\n"
        "(QuickBooks Connection = webconnector): set the user it logs in\n"
        "as, write the .qwc file to add to it, show when it connected",
    .subcommands = kWebconnectorSubcommands,
    .overview = "webconnector user NAME | qwc [FILE] | status",
};

}  // namespace dorvane::cli
