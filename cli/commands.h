// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — the CLI's commands. Each command's file holds its row: its options, its operands,
// its usage text and what it runs; cli.cpp lists the rows.
#pragma once

#include <iosfwd>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "cli/options.h"

namespace dorvane::shell {
class Application;
}

namespace dorvane::ui {
class ListModel;
}

namespace dorvane::cli {

class TerminalUi;

struct CommandContext {
    shell::Application& app;
    TerminalUi& ui;
    std::ostream& out;
    std::ostream& err;
};

// What the dispatcher prepares before a command runs.
enum class Needs {
    Nothing,      // runs alone (no program folder, no settings, no QuickBooks)
    Application,  // the program folder and the settings
    StartUp,      // and the window's start-up, whose outcome the command judges itself
    QuickBooks,   // and the window's start-up, with a company file open in QuickBooks
};

// A command or a subcommand: its row in the command table.
struct Command {
    std::string_view name{};
    std::string_view synopsis{};  // what follows "dorvane NAME" in its usage line
    std::string_view summary{};   // its entry in a list of commands (lines of up to 56 columns)
    std::string_view details{};   // the usage text below the usage lines
    std::span<const Option> options{};
    std::size_t minOperands = 0;
    std::size_t maxOperands = 0;
    std::string_view operandNames{};  // what a missing operand is called
    Needs needs = Needs::Nothing;
    // Checks the command line further (names, input files) before anything is prepared;
    // answers kExitOk or the exit status, having said why.
    int (*check)(Invocation&, std::ostream& err) = nullptr;
    int (*run)(CommandContext&, const Invocation&) = nullptr;  // needs ≠ Nothing
    int (*runAlone)(const Invocation&, std::ostream&, std::ostream&) = nullptr;  // Nothing
    std::span<const Command> subcommands{};
    // Said on standard output when QuickBooks could not be reached at start-up.
    std::string_view notDone{};
    // Its entry in the general help, when not "NAME SYNOPSIS".
    std::string_view overview{};
};

extern const Command kRequestCommand;
extern const Command kListCommand;
extern const Command kSendCommand;
extern const Command kPdfCommand;
extern const Command kRemindCommand;
extern const Command kCompanyCommand;
extern const Command kImportCommand;
extern const Command kImportBatchCommand;
extern const Command kWebupdateCommand;
extern const Command kHandheldCommand;
extern const Command kWebconnectorCommand;
extern const Command kSandboxCommand;
extern const Command kCheckCommand;
extern const Command kHistoryCommand;

extern const Command kSettingsCommand;

// Says once that QuickBooks cannot be reached, and what to do for the connection in use;
// answers kExitGateway.
int reportUnreachable(CommandContext& ctx);

// `list` and `send`: the window's timeframe.
inline constexpr Option kTimeframeOption{
    "--timeframe", 0, "NAME",
    "ThisWeekToDate (default), ThisMonthToDate,\nThisFiscalQuarterToDate, ThisFiscalYearToDate, "
    "LastWeek,\nLastMonth, LastFiscalQuarter, LastFiscalYear or ALL (any\ncase)"};

// The document type a command-line word names (any case), e.g. "invoice" → "Invoice".
std::optional<std::string> documentTypeNamed(std::string_view name);
// Checks TYPE and --timeframe of `list` and `send` (kExitOk, or kExitUsage having said why).
int checkListArgs(Invocation& args, std::ostream& err);
// Selects the timeframe and TYPE in the window, which loads the list; answers kExitOk, or
// kExitGateway when no list came.
int loadList(CommandContext& ctx, const Invocation& args);
void printList(const ui::ListModel& list, std::ostream& out);
// Checks a command's input file before anything else reads it: "-" (standard input) and a
// readable, non-empty file pass (kExitOk). Otherwise says "Cannot read FILE: reason" on `err`
// and answers kExitNoInput, or says that FILE is empty and answers kExitData.
int checkInputFile(const std::string& path, std::ostream& err);
// The check of a command whose first operand is its input file.
int checkFirstOperand(Invocation& args, std::ostream& err);

}  // namespace dorvane::cli
