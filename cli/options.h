// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — the command line's one option parser, and the usage texts built from its tables.
//
// Written here rather than taken from a library: the program has a few dozen options, wants
// the GNU conventions (`--opt VALUE`, `--opt=VALUE`, `-y`, `--` ends the options, `-h` and
// `--help`) with its own exact messages and exit statuses, and the same table that parses a
// command prints its usage and its line in the general help. That is less code than adapting a
// library to it, and no extra package to install.
#pragma once

#include <cstddef>
#include <iosfwd>
#include <limits>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace dorvane::cli {

using Args = std::vector<std::string>;

struct Option {
    std::string_view name;   // "--timeframe"
    char shortName = 0;      // 'y' for -y; 0 for none
    std::string_view value;  // what it takes ("NAME"); empty for a switch
    std::string_view help;   // its line in the usage text
};

inline constexpr std::size_t kAnyNumber = std::numeric_limits<std::size_t>::max();

// One command line, parsed against its command's table.
struct Invocation {
    std::string path;  // "list", "handheld sync"
    std::string home;  // --home as given (empty: the default folder)
    bool yes = false;  // the global --yes
    Args operands;
    std::vector<std::pair<std::string_view, std::string>> given;  // option, value ("" a switch)
    std::optional<std::string> input;  // standard input, when a check read it for the run

    bool has(std::string_view option) const;
    // The value given last.
    std::optional<std::string> value(std::string_view option) const;
};

// Parses `args` against `options`, taking between `minOperands` and `maxOperands` operands
// (`operandNames` is what a missing one is called: "TYPE"). `help` is set by -h/--help, which
// wins over every fault. A fault is said on `err` with the option and the command it concerns
// and the line that leads to the usage; then the answer is nullopt.
struct ParseRules {
    std::span<const Option> options;
    std::size_t minOperands = 0;
    std::size_t maxOperands = 0;
    std::string_view operandNames;
};
std::optional<Invocation> parseArgs(const std::string& path, const Args& args,
                                    const ParseRules& rules, bool& help, std::ostream& err);

// True when `args` asks for help (-h or --help before a lone "--").
bool asksForHelp(const Args& args);

// "dorvane PATH: MESSAGE" and "Try 'dorvane PATH --help' for more information."; answers
// kExitUsage.
int usageError(std::string_view path, std::string_view message, std::ostream& err);

// The options' lines of a usage text ("  -y, --yes             answer ..."), -h/--help last.
void printOptions(std::span<const Option> options, std::ostream& out);
// An entry of a list of commands: the name at two blanks, the text beside it from column 24
// (below it when the name is longer), every further line of the text at column 24.
void printEntry(std::string_view name, std::string_view text, std::ostream& out);

}  // namespace dorvane::cli
