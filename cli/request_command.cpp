// SPDX-License-Identifier: GPL-3.0-or-later
// `dorvane request FILE`: one qbXML exchange, the answer on standard output.
#include <ostream>

#include "cli/cli.h"
#include "cli/commands.h"
#include "common/files.h"
#include "shell/application.h"

namespace dorvane::cli {
namespace {

int request(CommandContext& ctx, const Invocation& args) {
    const std::string& file = args.operands[0];
    auto request = files::readAll(file);
    if (!request) {
        ctx.err << "Cannot read " << file << ": " << request.error().description << '\n';
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

}  // namespace

constexpr Command kRequestCommand{
    .name = "request",
    .synopsis = "FILE",
    .summary = "send the qbXML request in FILE to QuickBooks and print\nthe answer",
    .details =
        "  Sends the qbXML request in FILE to QuickBooks as it is and prints the answer. The\n"
        "  request and the answer are traced to QBXMLReq.txt and QBXMLResult.txt in the\n"
        "  program folder.\n",
    .minOperands = 1,
    .maxOperands = 1,
    .operandNames = "FILE",
    .needs = Needs::Application,
    .check = checkFirstOperand,
    .run = request,
};

}  // namespace dorvane::cli
