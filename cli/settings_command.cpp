// SPDX-License-Identifier: GPL-3.0-or-later
// `dorvane settings list [SECTION]`, `settings get SECTION KEY`, `settings set SECTION KEY VALUE`.
#include <algorithm>
#include <cstring>
#include <optional>
#include <ostream>

#include "cli/cli.h"
#include "cli/commands.h"
#include "platform/settings.h"
#include "shell/application.h"

namespace dorvane::cli {
namespace {

constexpr const char* kUsage =
    "Usage: dorvane settings list [SECTION]\n"
    "       dorvane settings get SECTION KEY\n"
    "       dorvane settings set SECTION KEY VALUE\n"
    "  list shows every setting with its value, what it means and what it takes; set refuses\n"
    "  a setting it does not know and a value the setting does not take. Sections and keys\n"
    "  ignore case; a value never set reads as its default.\n"
    "  Sections:";

// After an unknown setting: the one meant when it is near enough (a refusal names it already),
// else where the known ones are.
void hint(std::string_view section, std::string_view key, bool refused, std::ostream& err) {
    if (const platform::KnownSetting* near = platform::nearestSetting(section, key)) {
        if (!refused) {
            err << "dorvane: Did you mean '" << near->section << ' ' << near->key << "'?\n";
        }
        return;
    }
    err << "dorvane: `dorvane settings list` shows every setting.\n";
}

// What list and get show of a value: a password or a hash only as set or unset.
std::string shown(const platform::KnownSetting& s, const std::string& value) {
    if (s.hidden()) {
        return value.empty() ? "(unset)" : "(set)";
    }
    return value;
}

void listSetting(const platform::SettingsStore& store, const platform::KnownSetting& s,
                 std::ostream& out) {
    const std::string value = store.value(s.section, s.key).value_or("");
    const std::string text = shown(s, value);
    out << s.section << ' ' << s.key << " = " << (text.empty() ? "\"\"" : text)
        << (store.contains(s.section, s.key) ? "" : " (default)") << "\n    " << s.meaning;
    switch (s.type) {
        case platform::SettingType::Text:
        case platform::SettingType::Secret:
            out << '\n';
            break;
        case platform::SettingType::Choice: {
            std::size_t width = 0;
            for (const platform::SettingChoice& c : s.choices) {
                width = std::max(width, std::string_view(c.value).size());
            }
            out << ":\n";
            for (const platform::SettingChoice& c : s.choices) {
                out << "      " << c.value << std::string(width + 2 - std::strlen(c.value), ' ')
                    << c.meaning << '\n';
            }
            break;
        }
        default:
            out << "; " << platform::allowedValues(s) << '\n';
    }
}

int list(CommandContext& ctx, const Args& args) {
    const auto sections = platform::settingSections();
    if (args.size() == 2 && std::none_of(sections.begin(), sections.end(), [&](auto name) {
            return platform::sameSettingName(name, args[1]);
        })) {
        ctx.err << "dorvane: no settings section '" << args[1] << "'; the sections are";
        for (std::string_view name : sections) {
            ctx.err << ' ' << name;
        }
        ctx.err << ".\n";
        return kExitUsage;
    }
    for (const platform::KnownSetting& s : platform::kKnownSettings) {
        if (args.size() == 1 || platform::sameSettingName(s.section, args[1])) {
            listSetting(ctx.app.settings(), s, ctx.out);
        }
    }
    return kExitOk;
}

int get(CommandContext& ctx, const std::string& section, const std::string& key) {
    const auto& store = ctx.app.settings();
    // A value never set reads as the default the program takes for it; a value another tool
    // wrote under a name the program does not know is still shown.
    std::optional<std::string> value = store.value(section, key);
    if (!value) {
        ctx.err << "dorvane: " << section << ' ' << key << " is not set\n";
        hint(section, key, false, ctx.err);
        return kExitFailed;
    }
    const platform::KnownSetting* known = platform::knownSetting(section, key);
    ctx.out << (known ? shown(*known, *value) : *value) << '\n';
    return kExitOk;
}

int set(CommandContext& ctx, const std::string& section, const std::string& key,
        const std::string& value) {
    if (const Status allowed = platform::checkSetting(section, key, value); !allowed) {
        ctx.err << "dorvane: " << allowed.error().description << '\n';
        if (!platform::knownSetting(section, key)) {
            hint(section, key, true, ctx.err);
        }
        return kExitUsage;
    }
    const platform::KnownSetting& known = *platform::knownSetting(section, key);
    auto& store = ctx.app.settings();
    // A new entry takes the names as the table spells them.
    Status saved = store.set(known.section, known.key, value);
    if (!saved) {
        ctx.err << "Could not save " << store.file().string() << ": " << saved.error().description
                << '\n';
        return kExitFailed;
    }
    return kExitOk;
}

void printUsage(std::ostream& out) {
    out << kUsage;
    for (std::string_view section : platform::settingSections()) {
        out << ' ' << section;
    }
    out << '\n';
}

}  // namespace

int settingsCommand(CommandContext& ctx, const Args& args) {
    if (args.size() == 1 && (args[0] == "--help" || args[0] == "-h" || args[0] == "help")) {
        printUsage(ctx.out);
        return kExitOk;
    }
    if (!args.empty() && args[0] == "list" && args.size() <= 2) {
        return list(ctx, args);
    }
    if (args.size() == 3 && args[0] == "get") {
        return get(ctx, args[1], args[2]);
    }
    if (args.size() == 4 && args[0] == "set") {
        return set(ctx, args[1], args[2], args[3]);
    }
    printUsage(ctx.err);
    return kExitUsage;
}

}  // namespace dorvane::cli
