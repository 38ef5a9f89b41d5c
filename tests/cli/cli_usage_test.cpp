// SPDX-License-Identifier: GPL-3.0-or-later
// The command line itself: help and usage of every command, the faults it refuses before
// anything is prepared, and the shell completion that follows its tables.
#include <gtest/gtest.h>
#include <regex>
#include <set>
#include <sstream>

#include "support/clirun.h"
#include "support/testsupport.h"

namespace dorvane::test {
namespace {

namespace fs = std::filesystem;

// The lines of `text` after the line `heading`, up to the next line not indented.
std::vector<std::string> section(const std::string& text, const std::string& heading) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    bool inside = false;
    for (std::string line; std::getline(in, line);) {
        if (inside && !line.starts_with(" ")) {
            break;
        }
        if (inside) {
            lines.push_back(line);
        }
        inside = inside || line == heading;
    }
    return lines;
}

// The names a list of commands or options starts its entries with ("  name ...").
std::vector<std::string> entryNames(const std::vector<std::string>& lines) {
    static const std::regex entry(R"(^  (?:-[a-z], )?(-{0,2}[a-z][a-z-]*))");
    std::vector<std::string> names;
    for (const std::string& line : lines) {
        if (std::smatch m;
            std::regex_search(line, m, entry) && (names.empty() || names.back() != m[1])) {
            names.push_back(m[1]);
        }
    }
    return names;
}

// A wrong command line is refused with what is wrong and where help is, before the program
// folder, the settings or QuickBooks are touched.
TEST_F(Cli, AWrongCommandLineIsRefusedBeforeAnythingIsPrepared) {
    const fs::path fresh = home / "fresh";
    writeFile(home / "x.csv", "a");
    struct Case {
        std::string args;
        int status;
        std::string said;  // the start of the standard error
    };
    const Case cases[] = {
        {"--bogus", 64, "dorvane: unknown option '--bogus'\nTry 'dorvane --help'"},
        {"--home", 64, "dorvane: option '--home' needs a value (DIR)"},
        {"frobnicate", 64, "dorvane: unknown command 'frobnicate'\nTry 'dorvane --help'"},
        {"version extra", 64,
         "dorvane version: extra argument 'extra'\nTry 'dorvane version --help'"},
        {"help bogus", 64, "dorvane help: unknown command 'bogus'"},
        {"help handheld bogus", 64, "dorvane help: 'handheld' has no command 'bogus'"},
        {"list", 64,
         "dorvane list: missing TYPE\nTry 'dorvane list --help' for more information.\n"},
        {"list Invoice --bogus", 64,
         "dorvane list: unknown option '--bogus'\nTry 'dorvane list --help'"},
        {"list Invoice -q", 64, "dorvane list: unknown option '-q'"},
        {"list Invoice --timeframe", 64, "dorvane list: option '--timeframe' needs a value (NAME)"},
        {"list Invoice Estimate", 64, "dorvane list: extra argument 'Estimate'"},
        {"list Receipts", 64, "dorvane list: unknown document type 'Receipts'"},
        {"list Invoice --timeframe=Tomorrow", 64, "dorvane list: unknown timeframe 'Tomorrow'"},
        {"send Invoice --preview=yes", 64, "dorvane send: option '--preview' takes no value"},
        {"send timesheeta", 64, "dorvane send: TimesheetA documents cannot be mailed"},
        {"request", 64, "dorvane request: missing FILE"},
        {"request -- --help", 66, "Cannot read --help: No such file or directory"},
        {"import", 64, "dorvane import: missing FILE (or --receipt FILE)"},
        {"import --receipt x --vendor V", 64, "dorvane import: --receipt takes no exchange file"},
        {"import x --customer C", 64, "dorvane import: --customer goes with --receipt"},
        {"import-batch x.csv y.csv", 64, "dorvane import-batch: extra argument 'y.csv'"},
        {"webupdate gadgets", 64, "dorvane webupdate: unknown item kind 'gadgets'"},
        {"webupdate Service A1", 64, "dorvane webupdate: extra argument 'A1'"},
        {"company extra", 64, "dorvane company: unknown command 'extra'"},
        {"company set Colour red", 64, "dorvane company set: unknown field 'Colour'"},
        {"company set Phone", 64, "dorvane company set: no VALUE for FIELD 'Phone'"},
        {"handheld", 64, "Usage: dorvane handheld sync"},
        {"handheld bogus", 64, "dorvane handheld: unknown command 'bogus'"},
        {"handheld sync --employee", 64, "dorvane handheld sync: option '--employee' needs a"},
        {"handheld status now", 64, "dorvane handheld status: extra argument 'now'"},
        {"webconnector user", 64, "dorvane webconnector user: missing NAME"},
        {"sandbox open", 64, "dorvane sandbox open: missing FILE"},
        {"sandbox new x.dvq --customers", 64, "dorvane sandbox new: option '--customers' needs"},
        {"sandbox fail Nope 1 0x1", 64, "dorvane sandbox fail: unknown OPERATION 'Nope'"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.args);
        EXPECT_EQ(dorvane("--home '" + fresh.string() + "' " + c.args), c.status) << out << err;
        EXPECT_EQ(err.rfind(c.said, 0), 0u) << err;
        EXPECT_EQ(out, "");
        EXPECT_FALSE(fs::exists(fresh)) << "the program folder was prepared";
    }
    EXPECT_FALSE(fs::exists(home / "cfg")) << "the settings were touched";
    EXPECT_FALSE(fs::exists(home / "sandbox")) << "the sandbox was touched";
}

// Every command and subcommand prints its own usage, asked in any of the usual ways, on the
// standard output; the general help lists every command.
TEST_F(Cli, EveryCommandShowsItsUsage) {
    const fs::path fresh = home / "fresh";
    auto help = [&](const std::string& args) {
        EXPECT_EQ(dorvane("--home '" + fresh.string() + "' " + args), 0) << args << ": " << err;
        EXPECT_EQ(err, "") << args;
        return out;
    };
    const std::string general = help("--help");
    EXPECT_EQ(help("help"), general);
    EXPECT_EQ(help("-h"), general);
    const std::vector<std::string> commands = entryNames(section(general, "Commands:"));
    ASSERT_EQ(commands.size(), 17u) << general;
    std::size_t subcommands = 0;
    for (const std::string& command : commands) {
        SCOPED_TRACE(command);
        const std::string usage = help(command + " --help");
        EXPECT_EQ(usage.rfind("Usage: dorvane " + command, 0), 0u) << usage;
        EXPECT_EQ(help("help " + command), usage);
        EXPECT_EQ(help(command + " -h"), usage);
        for (const std::string& sub : entryNames(section(usage, "Commands:"))) {
            ++subcommands;
            const std::string own = help(command + " " + sub + " --help");
            EXPECT_EQ(own.rfind("Usage: dorvane " + command + " " + sub, 0), 0u) << own;
            EXPECT_EQ(help("help " + command + " " + sub), own);
            EXPECT_EQ(help(command + " help " + sub), own);
        }
    }
    EXPECT_EQ(subcommands,
              3u + 1u + 4u + 3u + 8u);  // settings company handheld webconnector sandbox
    EXPECT_EQ(help("version").rfind("Dorvane ", 0), 0u);
    EXPECT_EQ(help("--version"), help("version"));
    EXPECT_FALSE(fs::exists(fresh));
}

// The completion knows every command, subcommand and option the help shows, and completes
// them and the values that have names.
TEST_F(Cli, BashCompletesWhatTheCommandTablesHold) {
    const fs::path script = programSource().parent_path() / "packaging" / "dorvane.bash-completion";
    const std::string completion = readFile(script);
    std::set<std::string> words;
    auto collect = [&](const std::string& args) {
        EXPECT_EQ(dorvane(args), 0) << args;
        for (const char* heading : {"Commands:", "Options:"}) {
            for (const std::string& name : entryNames(section(out, heading))) {
                words.insert(name);
            }
        }
        return entryNames(section(out, "Commands:"));
    };
    for (const std::string& command : collect("help")) {
        for (const std::string& sub : collect("help " + command)) {
            collect("help " + command + " " + sub);
        }
    }
    for (const std::string& word : words) {
        EXPECT_TRUE(std::regex_search(completion, std::regex("[ \"]" + word + "[ \"\n]")))
            << word << " is not completed";
    }

    struct Case {
        const char* line;
        const char* offered;
    };
    const Case cases[] = {
        {"dorvane li", "list"},
        {"dorvane --home /tmp sa", "sandbox"},
        {"dorvane send cr", ""},
        {"dorvane send Cr", "CreditMemo"},
        {"dorvane list Invoice --timeframe LastF", "LastFiscalQuarter LastFiscalYear"},
        {"dorvane handheld s", "sync status"},
        {"dorvane help sandbox f", "fail"},
        {"dorvane sandbox new x.dvq --", "--demo --customers --invoices --force --help"},
        {"dorvane settings get S", "SMTP Settings"},
    };
    for (const Case& c : cases) {
        const std::string line = c.line;
        ASSERT_EQ(runCommand("bash -c 'source " + script.string() + "; COMP_WORDS=(" + line +
                                 "); COMP_CWORD=$((${#COMP_WORDS[@]}-1)); "
                                 "_dorvane; echo \"${COMPREPLY[*]}\"'",
                             &out, &err),
                  0)
            << err;
        EXPECT_EQ(out, std::string(c.offered) + "\n") << line;
    }
}

}  // namespace
}  // namespace dorvane::test
