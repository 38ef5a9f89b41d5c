// SPDX-License-Identifier: GPL-3.0-or-later
#include "qbsandbox/engine.h"

#include <algorithm>
#include <cctype>
#include <optional>
#include <string_view>

#include "qbgateway/requestprocessor.h"

namespace dorvane::qbsandbox {

namespace {

constexpr const char* kParseError =
    "QuickBooks found an error when parsing the provided XML text stream.";
constexpr const char* kVersionError =
    "The version of QBXML that was requested is not supported or is unknown.";

Error parseFailure(std::string detail, std::string* trace) {
    if (trace) {
        *trace = std::move(detail);
    }
    return qbgateway::processorError(qbgateway::kErrParse, kParseError);
}

// A cursor over a message's prolog, for the two declarations that carry the qbXML version.
// It reads in one pass without recursion, so a prolog of any length is safe to read.
struct PrologScan {
    std::string_view s;
    std::size_t i = 0;

    bool literal(std::string_view word) {
        if (!s.substr(i).starts_with(word)) {
            return false;
        }
        i += word.size();
        return true;
    }
    // Skips white space; with `required`, at least one character of it.
    bool spaces(bool required) {
        const std::size_t from = i;
        while (i < s.size() && std::isspace(static_cast<unsigned char>(s[i]))) {
            ++i;
        }
        return !required || i > from;
    }
    // A value in quotes (either kind, none inside): its text.
    std::optional<std::string_view> quoted() {
        if (i >= s.size() || (s[i] != '"' && s[i] != '\'')) {
            return std::nullopt;
        }
        const std::size_t end = s.find_first_of("\"'", i + 1);
        if (end == std::string_view::npos) {
            return std::nullopt;
        }
        const std::string_view value = s.substr(i + 1, end - i - 1);
        i = end + 1;
        return value;
    }
};

std::string_view prologOf(std::string_view text) {
    return text.substr(0, std::min(text.find("<QBXML"), text.size()));
}

// The version a message announces, from `<?qbxml version="X"?>` or the qbXML DOCTYPE; "" when
// it announces none.
std::string announcedVersion(std::string_view text) {
    const std::string_view prolog = prologOf(text);
    for (std::size_t at = prolog.find("<?qbxml"); at != std::string_view::npos;
         at = prolog.find("<?qbxml", at + 1)) {
        PrologScan p{prolog, at + 7};
        if (p.spaces(true) && p.literal("version") && p.spaces(false) && p.literal("=") &&
            p.spaces(false)) {
            const auto version = p.quoted();
            if (version && p.spaces(false) && p.literal("?>")) {
                return std::string(*version);
            }
        }
    }
    for (std::size_t at = prolog.find("<!DOCTYPE"); at != std::string_view::npos;
         at = prolog.find("<!DOCTYPE", at + 1)) {
        PrologScan p{prolog, at + 9};
        if (p.spaces(true) && p.literal("QBXML") && p.spaces(true) && p.literal("PUBLIC") &&
            p.spaces(true) && p.i < prolog.size() && (prolog[p.i] == '"' || prolog[p.i] == '\'')) {
            ++p.i;
            if (p.literal("-//INTUIT//DTD QBXML QBD ")) {
                const std::size_t end = prolog.find_first_of("/\"'", p.i);
                const std::size_t from = p.i;
                p.i = std::min(end, prolog.size());
                if (p.literal("//EN") && p.i < prolog.size() &&
                    (prolog[p.i] == '"' || prolog[p.i] == '\'')) {
                    return std::string(prolog.substr(from, end - from));
                }
            }
        }
    }
    return {};
}

// The message without its qbXML DOCTYPE declarations (`<!DOCTYPE QBXML PUBLIC "…" ["…"]>`).
std::string withoutQbxmlDoctype(std::string_view text) {
    if (text.find("<QBXML") == std::string_view::npos) {
        return std::string(text);
    }
    const std::string_view prolog = prologOf(text);
    std::string out;
    std::size_t copied = 0;
    for (std::size_t at = prolog.find("<!DOCTYPE"); at != std::string_view::npos;
         at = prolog.find("<!DOCTYPE", at + 1)) {
        PrologScan p{prolog, at + 9};
        if (!(p.spaces(true) && p.literal("QBXML") && p.spaces(true) && p.literal("PUBLIC") &&
              p.spaces(true) && p.quoted())) {
            continue;
        }
        const std::size_t afterPublic = p.i;
        if (!(p.spaces(true) && p.quoted())) {
            p.i = afterPublic;
        }
        p.spaces(false);
        if (p.literal(">")) {
            out.append(text.substr(copied, at - copied));
            copied = p.i;
        }
    }
    out.append(text.substr(copied));
    return out;
}

void openRs(std::string& out, const std::string& name, const xml::Node& rq, const RsStatus& s,
            bool empty) {
    out += '<';
    out += name;
    if (rq.hasAttribute("requestID")) {
        out += " requestID=\"";
        appendEscaped(out, rq.attribute("requestID"));
        out += '"';
    }
    out += " statusCode=\"" + std::to_string(s.code) + "\" statusSeverity=\"" + s.severity +
           "\" statusMessage=\"";
    appendEscaped(out, s.message);
    out += empty ? "\" />\n" : "\">\n";
}

RsStatus hostQuery(RequestContext& ctx, std::string& body) {
    Fields f = {{"ProductName", "Dorvane Sandbox QuickBooks Pro"},
                {"MajorVersion", "24"},
                {"MinorVersion", "0"},
                {"Country", "US"}};
    for (const char* v : {"1.0", "1.1", "2.0", "2.1", "3.0", "4.0", "4.1", "5.0", "6.0", "7.0",
                          "8.0", "9.0", "10.0", "11.0", "12.0", "13.0"}) {
        f.emplace_back("SupportedQBXMLVersion", v);
    }
    f.emplace_back("IsAutomaticLogin", "false");
    f.emplace_back("QBFileMode", "SingleUser");
    writeRet(ctx, body, "HostRet", f, nullptr, {});
    return {};
}

}  // namespace

bool preferenceOn(CompanyFile& file, std::string_view key, bool fallback) {
    std::string v =
        file.setting(std::string("Preferences/") + std::string(key), fallback ? "true" : "false");
    return v == "true" || v == "1";
}

bool timeTrackingOn(CompanyFile& file) {
    return !file.setting("Preferences/TimeTrackingPreferences/FirstDayOfWeek").empty();
}

Result<std::string> answerMessage(CompanyFile& file, std::string_view request, std::string* trace) {
    std::string versionString = announcedVersion(request);
    xml::ParseOptions options;
    options.refuseInternalSubset = true;
    // QuickBooks takes the qbXML DOCTYPE with or without its system identifier; XML itself
    // wants one, so the declaration is dropped once it has announced the version.
    const std::string text = withoutQbxmlDoctype(request);
    auto doc = xml::Document::parse(text, options);
    if (!doc) {
        return parseFailure("the request is not well-formed XML: " + doc.error().description,
                            trace);
    }
    auto version = parseVersion(versionString);
    if (!version) {
        if (trace) {
            *trace = versionString.empty()
                         ? "the request announces no qbXML version"
                         : "qbXML version \"" + versionString + "\" is not supported";
        }
        return qbgateway::processorError(qbgateway::kErrVersion, kVersionError);
    }
    xml::Node root = doc->root();
    if (root.name() != "QBXML") {
        return parseFailure("the root element is \"" + root.name() + "\", not \"QBXML\"", trace);
    }
    xml::Node msgs = root.firstChildElement();
    if (!msgs || msgs.name() != "QBXMLMsgsRq" || msgs.nextSiblingElement()) {
        return parseFailure("QBXML must hold exactly one QBXMLMsgsRq element", trace);
    }
    std::string onError = msgs.attribute("onError");
    if (onError != "stopOnError" && onError != "continueOnError" && onError != "rollbackOnError") {
        return parseFailure(
            "QBXMLMsgsRq needs onError=\"stopOnError|continueOnError|rollbackOnError\"", trace);
    }
    // A structural fault anywhere fails the whole message before anything is done. Nothing of
    // the checks is kept: each request is checked again as its turn comes, so a message of a
    // million requests holds no more than its document.
    std::size_t count = 0;
    for (xml::Node rq = msgs.firstChildElement(); rq; rq = rq.nextSiblingElement(), ++count) {
        if (auto fault = validateRequest(rq, *version).fault) {
            return parseFailure(*fault, trace);
        }
    }

    RequestContext ctx{file, *version, today(), {}, false, {}};
    std::string out = "<?xml version=\"1.0\" ?>\n<QBXML>\n<QBXMLMsgsRs>\n";
    std::size_t i = 0;
    for (xml::Node rq = msgs.firstChildElement(); rq; rq = rq.nextSiblingElement(), ++i) {
        const Validation check = validateRequest(rq, *version);
        std::string name = rq.name();
        std::string rsName = name.substr(0, name.size() - 2) + "Rs";
        std::string body;
        RsStatus status;
        ctx.includeRet.clear();
        for (const auto& inc : rq.selectAll("IncludeRetElement")) {
            ctx.includeRet.insert(inc.text());
        }
        if (check.statusCode != 0) {
            status = RsStatus::error(check.statusCode, check.statusMessage);
        } else {
            try {
                CompanyFile::Transaction txn(file);
                if (name == "HostQueryRq") {
                    status = hostQuery(ctx, body);
                } else if (name == "TxnDelRq") {
                    status = handleTxnDel(ctx, rq, body);
                } else if (name.size() > 7 && name.compare(name.size() - 7, 7, "QueryRq") == 0) {
                    status = handleQuery(ctx, rq, name.substr(0, name.size() - 7), body);
                } else if (name.size() > 5 && name.compare(name.size() - 5, 5, "AddRq") == 0) {
                    status = handleAdd(ctx, rq, name.substr(0, name.size() - 5), body);
                } else {
                    status =
                        RsStatus::error(1030, "The request \"" + name +
                                                  "\" is not supported by this implementation.");
                }
                if (status.severity != "Error") {
                    txn.commit();
                } else {
                    body.clear();
                }
            } catch (const StatusFailure& f) {
                status = f.status;
                body.clear();
            }
            ctx.forgetNames();
        }
        openRs(out, rsName, rq, status, body.empty());
        if (!body.empty()) {
            out += body;
            ResponseWriter(out).close(rsName);
        }
        if (status.severity == "Error" && onError != "continueOnError") {
            break;
        }
        if (out.size() > kMaxAnswerBytes && i + 1 < count) {
            if (trace) {
                *trace = "the answer passed " + std::to_string(kMaxAnswerBytes >> 20) +
                         " MB after request " + std::to_string(i + 1) + " of " +
                         std::to_string(count) +
                         "; the rest were not processed. Send them in messages of their own.";
            }
            break;
        }
    }
    out += "</QBXMLMsgsRs>\n</QBXML>\n";
    return out;
}

}  // namespace dorvane::qbsandbox
