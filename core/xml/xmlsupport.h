// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — private plumbing of the XML layer: owning handles over libxml2/libxslt types,
// the error collector and the guarded loaders. Only core/xml includes this file.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <libxml/parser.h>
#include <libxml/tree.h>
#include <libxml/xmlerror.h>
#include <libxml/xpath.h>
#include <libxslt/security.h>
#include <libxslt/transform.h>
#include <libxslt/xsltInternals.h>

namespace dorvane::xml::detail {

struct DocFree {
    void operator()(xmlDoc* doc) const { xmlFreeDoc(doc); }
};
struct ParserCtxtFree {
    void operator()(xmlParserCtxt* ctxt) const { xmlFreeParserCtxt(ctxt); }
};
struct XPathContextFree {
    void operator()(xmlXPathContext* ctxt) const { xmlXPathFreeContext(ctxt); }
};
struct XPathObjectFree {
    void operator()(xmlXPathObject* object) const { xmlXPathFreeObject(object); }
};
struct XmlCharFree {
    void operator()(xmlChar* text) const { xmlFree(text); }
};
struct StylesheetFree {
    void operator()(xsltStylesheet* sheet) const { xsltFreeStylesheet(sheet); }
};
struct TransformContextFree {
    void operator()(xsltTransformContext* ctxt) const { xsltFreeTransformContext(ctxt); }
};

using DocPtr = std::unique_ptr<xmlDoc, DocFree>;
using ParserCtxtPtr = std::unique_ptr<xmlParserCtxt, ParserCtxtFree>;
using XPathContextPtr = std::unique_ptr<xmlXPathContext, XPathContextFree>;
using XPathObjectPtr = std::unique_ptr<xmlXPathObject, XPathObjectFree>;
using XmlString = std::unique_ptr<xmlChar, XmlCharFree>;
using StylesheetPtr = std::unique_ptr<xsltStylesheet, StylesheetFree>;
using TransformContextPtr = std::unique_ptr<xsltTransformContext, TransformContextFree>;

inline const xmlChar* xs(const std::string& s) {
    return reinterpret_cast<const xmlChar*>(s.c_str());
}
inline const xmlChar* xs(const char* s) {
    return reinterpret_cast<const xmlChar*>(s);
}
inline std::string str(const xmlChar* s) {
    return s ? std::string(reinterpret_cast<const char*>(s)) : std::string();
}

// Gathers what libxml2 and libxslt report on this thread while it lives. Collectors nest:
// the innermost one receives the messages.
class ErrorCollector {
public:
    ErrorCollector();
    ~ErrorCollector();
    ErrorCollector(const ErrorCollector&) = delete;
    ErrorCollector& operator=(const ErrorCollector&) = delete;

    static ErrorCollector* current();

    // A complete message (libxml2's structured errors).
    void add(int level, int code, std::string_view message);
    // A piece of printf-style output (libxslt, libxml2's generic channel); complete lines
    // become messages.
    void addText(std::string_view text);

    bool empty() const;
    // The first fatal error, else the first error, else the first message; "" when
    // nothing came.
    std::string reason() const;
    int reasonCode() const;
    // Every message, one a line.
    std::string allText() const;

private:
    struct Entry {
        int level;
        int code;
        std::string message;
    };
    void flushPending();
    const Entry* firstError() const;

    std::vector<Entry> m_entries;
    std::string m_pending;
    ErrorCollector* m_previous;
};

// While it lives, the external entity loader lets `ctxt` open its own top-level resource
// (and nothing it refers to).
class TopLevelLoad {
public:
    explicit TopLevelLoad(xmlParserCtxt* ctxt);
    ~TopLevelLoad();
    TopLevelLoad(const TopLevelLoad&) = delete;
    TopLevelLoad& operator=(const TopLevelLoad&) = delete;

private:
    xmlParserCtxt* m_previous;
};

// While it lives, loading `uri` through libxslt (an xsl:import, or document() while a
// transform runs) parses `text`, recorded at `baseUrl`, instead of reading anything.
class InlineImport {
public:
    InlineImport(std::string uri, std::string_view text, std::string baseUrl);
    ~InlineImport();
    InlineImport(const InlineImport&) = delete;
    InlineImport& operator=(const InlineImport&) = delete;

    const std::string& uri() const { return m_uri; }
    std::string_view text() const { return m_text; }
    const std::string& baseUrl() const { return m_baseUrl; }
    static const InlineImport* current();

private:
    std::string m_uri;
    std::string_view m_text;
    std::string m_baseUrl;
    const InlineImport* m_previous;
};

// Routes the context's errors to the current collector.
void collectErrorsOf(xmlParserCtxt* ctxt);

// A parser context whose errors are collected; with `dict` it shares that dictionary (as
// documents loaded for a style sheet must).
ParserCtxtPtr newParserContext(xmlDictPtr dict);

// An output-buffer writer that appends to the std::string its context points at, and a
// close callback that does nothing.
int writeToString(void* context, const char* buffer, int len);
int closeNothing(void* context);

// The address libxml2 should record for a file: absolute, as a URI reference with unsafe
// characters escaped, so relative references resolve against it.
std::string fileUrl(const std::string& path);

// Parses text for libxslt: CDATA merged into text, never the network, never an external
// entity; a style sheet (`sheet`) gets its internal entities expanded. `dict` may be null.
DocPtr parseForXslt(std::string_view text, const std::string& url, xmlDict* dict, bool sheet);

// The security preferences every transform runs under.
xsltSecurityPrefs* securityPrefs();

}  // namespace dorvane::xml::detail
