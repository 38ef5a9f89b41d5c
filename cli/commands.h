// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — the CLI's commands. Each takes its own arguments (after the command word).
#pragma once

#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

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

using Args = std::vector<std::string>;

int requestCommand(CommandContext& ctx, const Args& args);
int listCommand(CommandContext& ctx, const Args& args);
int companyCommand(CommandContext& ctx, const Args& args);
int sendCommand(CommandContext& ctx, const Args& args);
int settingsCommand(CommandContext& ctx, const Args& args);
int importCommand(CommandContext& ctx, const Args& args);
int importBatchCommand(CommandContext& ctx, const Args& args);
int webupdateCommand(CommandContext& ctx, const Args& args);
int handheldCommand(CommandContext& ctx, const Args& args);
int webconnectorCommand(CommandContext& ctx, const Args& args);
int checkCommand(CommandContext& ctx, const Args& args);

// The window's start-up: the company, the default records. When QuickBooks cannot be reached
// it says so once, with what to do, and answers false (the job then exits kExitGateway).
bool startUp(CommandContext& ctx);
// Says once that QuickBooks cannot be reached, and what to do for the connection in use;
// answers kExitGateway.
int reportUnreachable(CommandContext& ctx);

// The document type a command-line word names (any case), e.g. "invoice" → "Invoice".
std::optional<std::string> documentTypeNamed(std::string_view name);
// Takes TYPE and --timeframe from `args`, runs the window's start-up and the type's list
// loader. Arguments it does not know go to `rest` (or are refused when it is null).
int loadListFromArgs(CommandContext& ctx, const Args& args, const char* usage,
                     std::vector<std::string>* rest);
void printList(const ui::ListModel& list, std::ostream& out);
// Checks a command's input file before anything else reads it: "-" (standard input) and a
// readable, non-empty file pass (kExitOk). Otherwise says "Cannot read FILE: reason" on `err`
// and answers kExitNoInput, or says that FILE is empty and answers kExitData.
int checkInputFile(const std::string& path, std::ostream& err);
// `dorvane sandbox status|open|close|stop|new|load|fail ...`: runs without an Application.
int sandboxCommand(const Args& args, std::ostream& out, std::ostream& err);

}  // namespace dorvane::cli
