// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/options.h"

#include <algorithm>
#include <ostream>

#include "cli/cli.h"

namespace dorvane::cli {
namespace {

constexpr Option kHelp{"--help", 'h', "", "this text"};
constexpr std::size_t kTextColumn = 24;

const Option* longOption(std::span<const Option> options, std::string_view name) {
    const auto it = std::find_if(options.begin(), options.end(),
                                 [&](const Option& o) { return o.name == name; });
    return it == options.end() ? nullptr : &*it;
}

const Option* shortOption(std::span<const Option> options, char letter) {
    const auto it = std::find_if(options.begin(), options.end(),
                                 [&](const Option& o) { return o.shortName == letter; });
    return it == options.end() ? nullptr : &*it;
}

std::string quoted(std::string_view text) {
    return "'" + std::string(text) + "'";
}

}  // namespace

bool Invocation::has(std::string_view option) const {
    return std::any_of(given.begin(), given.end(),
                       [&](const auto& g) { return g.first == option; });
}

std::optional<std::string> Invocation::value(std::string_view option) const {
    std::optional<std::string> last;
    for (const auto& [name, value] : given) {
        if (name == option) {
            last = value;
        }
    }
    return last;
}

bool asksForHelp(const Args& args) {
    for (const std::string& a : args) {
        if (a == "--") {
            return false;
        }
        if (a == "-h" || a == "--help") {
            return true;
        }
    }
    return false;
}

int usageError(std::string_view path, std::string_view message, std::ostream& err) {
    err << "dorvane" << (path.empty() ? "" : " ") << path << ": " << message << "\nTry 'dorvane"
        << (path.empty() ? "" : " ") << path << " --help' for more information.\n";
    return kExitUsage;
}

std::optional<Invocation> parseArgs(const std::string& path, const Args& args,
                                    const ParseRules& rules, bool& help, std::ostream& err) {
    Invocation parsed;
    parsed.path = path;
    help = false;
    std::string fault;  // the first one; -h/--help anywhere still wins
    auto faultOnce = [&](std::string message) {
        if (fault.empty()) {
            fault = std::move(message);
        }
    };
    bool optionsEnd = false;
    for (std::size_t i = 0; i < args.size(); ++i) {
        const std::string& a = args[i];
        if (optionsEnd || a == "-" || !a.starts_with('-')) {
            parsed.operands.push_back(a);
            continue;
        }
        if (a == "--") {
            optionsEnd = true;
            continue;
        }
        if (a.starts_with("--")) {
            const std::size_t equals = a.find('=');
            const std::string_view name = std::string_view(a).substr(0, equals);
            if (name == kHelp.name) {
                help = true;
                continue;
            }
            const Option* option = longOption(rules.options, name);
            if (!option) {
                faultOnce("unknown option " + quoted(a));
            } else if (option->value.empty() && equals != std::string::npos) {
                faultOnce("option " + quoted(name) + " takes no value");
            } else if (option->value.empty()) {
                parsed.given.emplace_back(option->name, std::string());
            } else if (equals != std::string::npos) {
                parsed.given.emplace_back(option->name, a.substr(equals + 1));
            } else if (i + 1 < args.size()) {
                parsed.given.emplace_back(option->name, args[++i]);
            } else {
                faultOnce("option " + quoted(name) + " needs a value (" +
                          std::string(option->value) + ")");
            }
            continue;
        }
        // One or more short options: -y, -yh, and a value joined or following: -xVALUE, -x VALUE.
        for (std::size_t c = 1; c < a.size(); ++c) {
            if (a[c] == kHelp.shortName) {
                help = true;
                continue;
            }
            const Option* option = shortOption(rules.options, a[c]);
            if (!option) {
                faultOnce("unknown option " + quoted(std::string("-") + a[c]));
                break;
            }
            if (option->value.empty()) {
                parsed.given.emplace_back(option->name, std::string());
            } else if (c + 1 < a.size()) {
                parsed.given.emplace_back(option->name, a.substr(c + 1));
                break;
            } else if (i + 1 < args.size()) {
                parsed.given.emplace_back(option->name, args[++i]);
            } else {
                faultOnce("option " + quoted(std::string("-") + a[c]) + " needs a value (" +
                          std::string(option->value) + ")");
            }
        }
    }
    if (help) {
        return parsed;
    }
    if (fault.empty() && parsed.operands.size() > rules.maxOperands) {
        fault = "extra argument " + quoted(parsed.operands[rules.maxOperands]);
    }
    if (fault.empty() && parsed.operands.size() < rules.minOperands) {
        fault = "missing " + std::string(rules.operandNames);
    }
    if (!fault.empty()) {
        usageError(path, fault, err);
        return std::nullopt;
    }
    return parsed;
}

void printEntry(std::string_view name, std::string_view text, std::ostream& out) {
    out << "  " << name;
    if (text.empty()) {
        out << '\n';
        return;
    }
    const std::string indent(kTextColumn, ' ');
    if (name.size() + 2 < kTextColumn) {
        out << std::string(kTextColumn - 2 - name.size(), ' ');
    } else {
        out << '\n' << indent;
    }
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find('\n', at), text.size());
        out << (at == 0 ? "" : indent) << text.substr(at, end - at) << '\n';
        at = end + 1;
    }
}

void printOptions(std::span<const Option> options, std::ostream& out) {
    auto entry = [&out](const Option& o) {
        std::string name = o.shortName ? std::string("-") + o.shortName + ", " : std::string();
        name += o.name;
        if (!o.value.empty()) {
            name += " " + std::string(o.value);
        }
        printEntry(name, o.help, out);
    };
    out << "Options:\n";
    for (const Option& o : options) {
        entry(o);
    }
    entry(kHelp);
}

}  // namespace dorvane::cli
