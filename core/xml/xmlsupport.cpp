// SPDX-License-Identifier: GPL-3.0-or-later
#include "xml/xmlsupport.h"

#include <climits>
#include <cstdarg>
#include <cstdio>
#include <filesystem>
#include <mutex>

#include <libexslt/exslt.h>
#include <libxml/uri.h>
#include <libxslt/documents.h>
#include <libxslt/security.h>
#include <libxslt/xslt.h>
#include <libxslt/xsltutils.h>

#include "xml/xml.h"

namespace dorvane::xml {
namespace detail {
namespace {

thread_local ErrorCollector* t_collector = nullptr;
thread_local xmlParserCtxt* t_topLevelCtxt = nullptr;
thread_local const InlineImport* t_inlineImport = nullptr;

xmlExternalEntityLoader g_defaultEntityLoader = nullptr;
xsltSecurityPrefs* g_securityPrefs = nullptr;

std::string_view trimEnd(std::string_view s) {
    while (!s.empty() && (s.back() == '\n' || s.back() == '\r' || s.back() == ' ')) {
        s.remove_suffix(1);
    }
    return s;
}

std::string format(const char* fmt, va_list args) {
    va_list copy;
    va_copy(copy, args);
    char small[512];
    int n = std::vsnprintf(small, sizeof small, fmt, copy);
    va_end(copy);
    if (n < 0) {
        return {};
    }
    if (static_cast<size_t>(n) < sizeof small) {
        return std::string(small, static_cast<size_t>(n));
    }
    std::string big(static_cast<size_t>(n) + 1, '\0');
    std::vsnprintf(big.data(), big.size(), fmt, args);
    big.resize(static_cast<size_t>(n));
    return big;
}

void structuredSink(void*, xmlErrorPtr error) {
    if (t_collector && error) {
        t_collector->add(error->level, error->code, error->message ? error->message : "");
    }
}

void textSink(void*, const char* fmt, ...) {
    if (!t_collector) {
        return;
    }
    va_list args;
    va_start(args, fmt);
    std::string text = format(fmt, args);
    va_end(args);
    t_collector->addText(text);
}

// Nothing is ever read through an entity or a document type declaration: only the
// top-level resource a loader of ours asked for gets through.
xmlParserInputPtr guardedEntityLoader(const char* url, const char* id, xmlParserCtxtPtr ctxt) {
    if (ctxt && ctxt == t_topLevelCtxt && ctxt->inputNr == 0 && g_defaultEntityLoader) {
        return g_defaultEntityLoader(url, id, ctxt);
    }
    if (t_collector) {
        t_collector->add(XML_ERR_WARNING, XML_IO_LOAD_ERROR,
                         std::string("refused to load external resource \"") +
                             (url  ? url
                              : id ? id
                                   : "") +
                             "\"");
    }
    return nullptr;
}

// libxslt reads every style sheet, import, include and document() through this loader.
xmlDocPtr sheetLoader(const xmlChar* uri, xmlDictPtr dict, int, void*, xsltLoadType type) {
    if (!uri) {
        return nullptr;
    }
    const std::string address = str(uri);
    if (const InlineImport* inl = t_inlineImport; inl && address == inl->uri()) {
        return parseForXslt(inl->text(), inl->baseUrl(), dict, type != XSLT_LOAD_DOCUMENT)
            .release();
    }
    ParserCtxtPtr ctxt = newParserContext(dict);
    if (!ctxt) {
        return nullptr;
    }
    // Data documents keep entity references as they are; style sheets get their internal
    // entities (&nbsp; and friends) expanded. External ones are refused by the loader.
    int options = XML_PARSE_NONET | XML_PARSE_NOCDATA;
    if (type != XSLT_LOAD_DOCUMENT) {
        options |= XML_PARSE_NOENT;
    }
    TopLevelLoad allow(ctxt.get());
    xmlDocPtr doc = xmlCtxtReadFile(ctxt.get(), address.c_str(), nullptr, options);
    if (doc && !ctxt->wellFormed) {
        xmlFreeDoc(doc);
        doc = nullptr;
    }
    return doc;
}

}  // namespace

ErrorCollector::ErrorCollector() : m_previous(t_collector) {
    t_collector = this;
}

ErrorCollector::~ErrorCollector() {
    t_collector = m_previous;
}

ErrorCollector* ErrorCollector::current() {
    return t_collector;
}

void ErrorCollector::add(int level, int code, std::string_view message) {
    flushPending();
    m_entries.push_back({level, code, std::string(trimEnd(message))});
}

void ErrorCollector::addText(std::string_view text) {
    m_pending.append(text);
    size_t start = 0;
    for (size_t nl = m_pending.find('\n'); nl != std::string::npos;
         nl = m_pending.find('\n', start)) {
        std::string_view line = trimEnd(std::string_view(m_pending).substr(start, nl - start));
        if (!line.empty()) {
            m_entries.push_back({XML_ERR_ERROR, 0, std::string(line)});
        }
        start = nl + 1;
    }
    m_pending.erase(0, start);
}

void ErrorCollector::flushPending() {
    std::string_view rest = trimEnd(m_pending);
    if (!rest.empty()) {
        m_entries.push_back({XML_ERR_ERROR, 0, std::string(rest)});
    }
    m_pending.clear();
}

bool ErrorCollector::empty() const {
    return m_entries.empty() && trimEnd(m_pending).empty();
}

const ErrorCollector::Entry* ErrorCollector::firstError() const {
    // A fatal error is what stopped the parser; an earlier plain error (an undeclared
    // namespace prefix, say) is only the reason when nothing fatal came.
    for (int level : {XML_ERR_FATAL, XML_ERR_ERROR}) {
        for (const auto& e : m_entries) {
            if (e.level >= level) {
                return &e;
            }
        }
    }
    return m_entries.empty() ? nullptr : &m_entries.front();
}

std::string ErrorCollector::reason() const {
    if (const Entry* e = firstError()) {
        return e->message;
    }
    return std::string(trimEnd(m_pending));
}

int ErrorCollector::reasonCode() const {
    const Entry* e = firstError();
    return e ? e->code : 0;
}

std::string ErrorCollector::allText() const {
    std::string out;
    for (const auto& e : m_entries) {
        if (!out.empty()) {
            out += '\n';
        }
        out += e.message;
    }
    std::string_view rest = trimEnd(m_pending);
    if (!rest.empty()) {
        if (!out.empty()) {
            out += '\n';
        }
        out += rest;
    }
    return out;
}

TopLevelLoad::TopLevelLoad(xmlParserCtxt* ctxt) : m_previous(t_topLevelCtxt) {
    t_topLevelCtxt = ctxt;
}

TopLevelLoad::~TopLevelLoad() {
    t_topLevelCtxt = m_previous;
}

InlineImport::InlineImport(std::string uri, std::string_view text, std::string baseUrl)
    : m_uri(std::move(uri)),
      m_text(text),
      m_baseUrl(std::move(baseUrl)),
      m_previous(t_inlineImport) {
    t_inlineImport = this;
}

InlineImport::~InlineImport() {
    t_inlineImport = m_previous;
}

const InlineImport* InlineImport::current() {
    return t_inlineImport;
}

void collectErrorsOf(xmlParserCtxt* ctxt) {
    // The parser hands its errors to the context's structured handler first; the data it
    // passes along is the context itself, which the sink does not need.
    if (ctxt && ctxt->sax) {
        ctxt->sax->initialized = XML_SAX2_MAGIC;
        ctxt->sax->serror = &structuredSink;
    }
}

std::string fileUrl(const std::string& path) {
    if (path.empty()) {
        return {};
    }
    std::error_code ec;
    std::filesystem::path abs = std::filesystem::absolute(path, ec);
    const std::string text = ec ? path : abs.lexically_normal().string();
    XmlString uri(xmlPathToURI(xs(text)));
    return uri ? str(uri.get()) : text;
}

DocPtr parseForXslt(std::string_view text, const std::string& url, xmlDict* dict, bool sheet) {
    if (text.size() > static_cast<size_t>(INT_MAX)) {
        if (t_collector) {
            t_collector->add(XML_ERR_FATAL, XML_ERR_NO_MEMORY, "the style sheet is too large");
        }
        return nullptr;
    }
    ParserCtxtPtr ctxt = newParserContext(dict);
    if (!ctxt) {
        return nullptr;
    }
    const char* data = text.data() ? text.data() : "";
    int options = XML_PARSE_NONET | XML_PARSE_NOCDATA;
    if (sheet) {
        options |= XML_PARSE_NOENT;
    }
    DocPtr doc(xmlCtxtReadMemory(ctxt.get(), data, static_cast<int>(text.size()),
                                 url.empty() ? nullptr : url.c_str(), nullptr, options));
    if (doc && !ctxt->wellFormed) {
        doc.reset();
    }
    return doc;
}

xsltSecurityPrefs* securityPrefs() {
    initialize();
    return g_securityPrefs;
}

}  // namespace detail

void initialize() {
    using namespace detail;
    static std::once_flag once;
    std::call_once(once, [] {
        xmlInitParser();
        xsltInit();
        exsltRegisterAll();
        g_defaultEntityLoader = xmlGetExternalEntityLoader();
        xmlSetExternalEntityLoader(&guardedEntityLoader);
        xsltSetLoaderFunc(&sheetLoader);
        xsltSetGenericErrorFunc(nullptr, &textSink);
        xsltSecurityPrefs* sec = xsltNewSecurityPrefs();
        xsltSetSecurityPrefs(sec, XSLT_SECPREF_WRITE_FILE, xsltSecurityForbid);
        xsltSetSecurityPrefs(sec, XSLT_SECPREF_CREATE_DIRECTORY, xsltSecurityForbid);
        xsltSetSecurityPrefs(sec, XSLT_SECPREF_READ_NETWORK, xsltSecurityForbid);
        xsltSetSecurityPrefs(sec, XSLT_SECPREF_WRITE_NETWORK, xsltSecurityForbid);
        xsltSetDefaultSecurityPrefs(sec);
        g_securityPrefs = sec;
    });
    // libxml2 keeps its error handlers per thread.
    thread_local bool threadReady = false;
    if (!threadReady) {
        threadReady = true;
        xmlSetStructuredErrorFunc(nullptr, &structuredSink);
        xmlSetGenericErrorFunc(nullptr, &textSink);
    }
}

namespace detail {

ParserCtxtPtr newParserContext(xmlDictPtr dict) {
    ParserCtxtPtr ctxt(xmlNewParserCtxt());
    if (!ctxt) {
        return ctxt;
    }
    if (dict) {
        if (ctxt->dict) {
            xmlDictFree(ctxt->dict);
        }
        ctxt->dict = dict;
        xmlDictReference(dict);
    }
    collectErrorsOf(ctxt.get());
    return ctxt;
}

int writeToString(void* context, const char* buffer, int len) {
    if (len > 0) {
        static_cast<std::string*>(context)->append(buffer, static_cast<size_t>(len));
    }
    return len;
}

int closeNothing(void*) {
    return 0;
}

}  // namespace detail

}  // namespace dorvane::xml
