// SPDX-License-Identifier: GPL-3.0-or-later
// `dorvane request FILE`: one qbXML exchange, the answer on standard output.
#include <ostream>

#include "cli/cli.h"
#include "cli/commands.h"
#include "common/files.h"
#include "shell/application.h"

namespace dorvane::cli {

int requestCommand(CommandContext& ctx, const Args& args) {
    if (args.size() != 1) {
        ctx.err << "Usage: dorvane request FILE\n";
        return kExitUsage;
    }
    if (const int rc = checkInputFile(args[0], ctx.err); rc != kExitOk) {
        return rc;
    }
    auto request = files::readAll(args[0]);
    if (!request) {
        ctx.err << "Cannot read " << args[0] << ": " << request.error().description << '\n';
        return kExitNoInput;
    }
    std::string response = ctx.app.gateway().processRequest(*request);
    if (response.empty()) {
        return kExitGateway;
    }
    ctx.out << response;
    if (response.back() != '\n') {
        ctx.out << '\n';
    }
    return kExitOk;
}

}  // namespace dorvane::cli
