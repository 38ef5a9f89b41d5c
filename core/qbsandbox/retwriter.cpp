// SPDX-License-Identifier: GPL-3.0-or-later
// Writing Ret elements in schema order from stored fields.
#include <algorithm>

#include "qbsandbox/engine.h"

namespace dorvane::qbsandbox {

namespace {

bool isLineKind(std::string_view name) {
    auto ends = [&](std::string_view s) {
        return name.size() >= s.size() && name.compare(name.size() - s.size(), s.size(), s) == 0;
    };
    return ends("LineRet") || ends("LineGroupRet") || name == "AppliedToTxnRet";
}

struct Writer {
    RequestContext& ctx;
    std::string& out;
    const std::vector<LineRecord>* lines;
    WriteOptions options;

    bool hasPrefix(const Fields& fields, const std::string& prefix) {
        return std::any_of(fields.begin(), fields.end(), [&](const auto& kv) {
            return kv.first.compare(0, prefix.size(), prefix) == 0;
        });
    }

    void writeRef(const Fields& fields, const std::string& key, const std::string& name) {
        const std::string* id = findField(fields, key);
        const std::string* storedName = findField(fields, key + "@FullName");
        if (!id && !storedName) {
            return;
        }
        ResponseWriter w(out);
        w.open(name);
        if (id && !id->empty()) {
            w.leaf("ListID", *id);
        }
        const std::string* full = id ? ctx.fullNameOf(*id) : nullptr;
        if (!full) {
            full = storedName;
        }
        if (full) {
            w.leaf("FullName", *full);
        }
        w.close(name);
    }

    void writeAddress(const Fields& fields, const std::string& prefix, const std::string& name) {
        if (!hasPrefix(fields, prefix + "/")) {
            return;
        }
        ResponseWriter w(out);
        w.open(name);
        for (const auto& part : addressParts()) {
            if (ctx.version < part.since) {
                continue;
            }
            if (const std::string* v = findField(fields, prefix + "/" + part.name)) {
                w.leaf(part.name, *v);
            }
        }
        w.close(name);
    }

    void writeLine(const LineRecord& line) {
        Fields fields;
        fields.reserve(line.fields.size() + 1);
        fields.emplace_back("TxnLineID", line.lineId);
        fields.insert(fields.end(), line.fields.begin(), line.fields.end());
        ResponseWriter(out).open(line.kind);
        writeChildren(line.kind, fields, "", line.seq, false);
        ResponseWriter(out).close(line.kind);
    }

    // Lines whose kind is in `kinds`, below the group line `parentSeq` (-1 = top level).
    void writeLines(const std::vector<std::string>& kinds, int parentSeq) {
        if (!lines) {
            return;
        }
        for (const auto& line : *lines) {
            if (line.parentSeq == parentSeq &&
                std::find(kinds.begin(), kinds.end(), line.kind) != kinds.end()) {
                writeLine(line);
            }
        }
    }

    void writeChildren(const std::string& aggregate, const Fields& fields,
                       const std::string& prefix, int lineSeq, bool topLevel) {
        const AggregateRule* rule = findAggregate(aggregate);
        if (!rule) {
            return;
        }
        const auto& entries = rule->children;
        for (std::size_t i = 0; i < entries.size(); ++i) {
            const ElementRule& e = entries[i];
            if (!e.availableIn(ctx.version)) {
                continue;
            }
            if (topLevel && !ctx.includeRet.empty() && !ctx.includeRet.count(e.name)) {
                continue;
            }
            std::string key = prefix + e.name;
            if (e.type == ValueType::Aggregate && isLineKind(e.name)) {
                if (!options.lineItems && lineSeq < 0) {
                    continue;
                }
                std::vector<std::string> kinds{e.name};
                if (e.group == '~') {
                    while (i + 1 < entries.size() && entries[i + 1].group == '~') {
                        kinds.push_back(entries[++i].name);
                    }
                }
                writeLines(kinds, lineSeq);
                continue;
            }
            switch (e.type) {
                case ValueType::Aggregate:
                    if (e.repeats) {
                        if (e.name == "LinkedTxn" && !options.linkedTxns) {
                            break;
                        }
                        for (int n = 1;; ++n) {
                            std::string p = key + "#" + std::to_string(n) + "/";
                            if (!hasPrefix(fields, p)) {
                                break;
                            }
                            ResponseWriter(out).open(e.name);
                            writeChildren(e.name, fields, p, lineSeq, false);
                            ResponseWriter(out).close(e.name);
                        }
                    } else if (hasPrefix(fields, key + "/")) {
                        ResponseWriter(out).open(e.name);
                        writeChildren(e.name, fields, key + "/", lineSeq, false);
                        ResponseWriter(out).close(e.name);
                    }
                    break;
                case ValueType::Ref:
                    writeRef(fields, key, e.name);
                    break;
                case ValueType::Address:
                    writeAddress(fields, key, e.name);
                    break;
                default:
                    if (e.repeats) {
                        for (const auto& [k, v] : fields) {
                            if (k == key) {
                                ResponseWriter(out).leaf(e.name, v);
                            }
                        }
                    } else if (const std::string* v = findField(fields, key)) {
                        ResponseWriter(out).leaf(e.name, *v);
                    }
            }
        }
    }
};

}  // namespace

const std::string* RequestContext::fullNameOf(const std::string& listId) {
    if (!fullNamesLoaded) {
        fullNames.clear();
        fullNamesLoaded = true;
    }
    auto it = fullNames.find(listId);
    if (it == fullNames.end()) {
        auto s = file.prepare("SELECT full_name FROM lists WHERE list_id = ?");
        s.bind(1, listId);
        it = fullNames.emplace(listId, s.step() ? s.text(0) : std::string(1, '\0')).first;
    }
    return it->second == std::string(1, '\0') ? nullptr : &it->second;
}

void writeRet(RequestContext& ctx, std::string& out, const std::string& retName,
              const Fields& fields, const std::vector<LineRecord>* lines, WriteOptions options) {
    Writer w{ctx, out, lines, options};
    ResponseWriter(out).open(retName);
    w.writeChildren(retName, fields, "", -1, true);
    ResponseWriter(out).close(retName);
}

}  // namespace dorvane::qbsandbox
