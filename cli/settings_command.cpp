// SPDX-License-Identifier: GPL-3.0-or-later
// `dorvane settings list [SECTION]`, `settings get SECTION KEY`, `settings set SECTION KEY VALUE`.
#include <algorithm>
#include <cstring>
#include <optional>
#include <ostream>

#include "cli/cli.h"
#include "cli/commands.h"
#include "cli/json.h"
#include "platform/settings.h"
#include "shell/application.h"

namespace dorvane::cli {
namespace {

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

// A setting for a script: as listSetting shows it, the value as it reads (a password only as
// set or unset), whether it is stored or the default, and what it takes.
Json settingJson(const platform::SettingsStore& store, const platform::KnownSetting& s) {
    Json entry{{"section", s.section},
               {"key", s.key},
               {"value", shown(s, store.value(s.section, s.key).value_or(""))},
               {"stored", store.contains(s.section, s.key)},
               {"default", shown(s, s.defaultValue)},
               {"meaning", s.meaning}};
    switch (s.type) {
        case platform::SettingType::Text:
        case platform::SettingType::Secret:
            break;
        case platform::SettingType::Choice:
            entry["choices"] = Json::object();
            for (const platform::SettingChoice& c : s.choices) {
                entry["choices"][c.value] = c.meaning;
            }
            break;
        default:
            entry["allowed"] = platform::allowedValues(s);
    }
    return entry;
}

// `list SECTION` names a known section; refused before anything is prepared.
int checkListSection(Invocation& args, std::ostream& err) {
    const auto sections = platform::settingSections();
    if (args.operands.empty() ||
        std::any_of(sections.begin(), sections.end(), [&](std::string_view name) {
            return platform::sameSettingName(name, args.operands[0]);
        })) {
        return kExitOk;
    }
    err << "dorvane: no settings section '" << args.operands[0] << "'; the sections are";
    for (std::string_view name : sections) {
        err << ' ' << name;
    }
    err << ".\n";
    return kExitUsage;
}

int list(CommandContext& ctx, const Invocation& args) {
    const bool json = args.has("--json");
    Json settings = Json::array();
    for (const platform::KnownSetting& s : platform::kKnownSettings) {
        if (!args.operands.empty() && !platform::sameSettingName(s.section, args.operands[0])) {
            continue;
        }
        if (json) {
            settings.push_back(settingJson(ctx.app.settings(), s));
        } else {
            listSetting(ctx.app.settings(), s, ctx.out);
        }
    }
    if (json) {
        printJson(Json{{"settings", settings}}, ctx.out);
    }
    return kExitOk;
}

int get(CommandContext& ctx, const Invocation& args) {
    const std::string& section = args.operands[0];
    const std::string& key = args.operands[1];
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

int set(CommandContext& ctx, const Invocation& args) {
    const std::string& section = args.operands[0];
    const std::string& key = args.operands[1];
    const std::string& value = args.operands[2];
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

constexpr Option kListOptions[] = {kJsonOption};

constexpr Command kSettingsSubcommands[] = {
    {.name = "list",
     .synopsis = "[SECTION] [--json]",
     .summary = "every setting (of SECTION) with its value, what it\nmeans and what it takes",
     .details = "  --json: per setting its section, key, value (a password as (set) or (unset)),\n"
                "  whether it is stored, its default, meaning and what it takes.\n",
     .options = kListOptions,
     .maxOperands = 1,
     .needs = Needs::Application,
     .check = checkListSection,
     .run = list},
    {.name = "get",
     .synopsis = "SECTION KEY",
     .summary = "a setting's value (a value never set reads as its\ndefault)",
     .minOperands = 2,
     .maxOperands = 2,
     .operandNames = "SECTION KEY",
     .needs = Needs::Application,
     .run = get},
    {.name = "set",
     .synopsis = "SECTION KEY VALUE",
     .summary =
         "change a setting; a setting it does not know or a value\nit does not take is refused",
     .minOperands = 3,
     .maxOperands = 3,
     .operandNames = "SECTION KEY VALUE",
     .needs = Needs::Application,
     .run = set},
};

}  // namespace

constexpr Command kSettingsCommand{
    .name = "settings",
    .summary =
        "read or write the per-user settings (mail server,\noptions, imports, handheld, web, "
        "QuickBooks)",
    .details =
        "  Sections and keys ignore case; a value never set reads as its default.\n"
        "  dorvane settings list shows every setting with what it means and takes.\n"
        "  Sections: SMTP, Settings, Documents, View, Import, Handheld, Web, QuickBooks,\n"
        "  WebConnector, Window, Reminders.\n",
    .subcommands = kSettingsSubcommands,
    .overview = "settings list|get|set ...",
};

}  // namespace dorvane::cli
