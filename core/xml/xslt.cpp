// SPDX-License-Identifier: GPL-3.0-or-later
// Style sheets: compilation, whole-document transforms and the old DOM's transformNode.
//
// transformNode runs a small wrapper sheet that imports the real one. Its root template
// applies templates to the chosen node, which it gets from an extension function bound to
// the transform, so the node keeps its place in its own document (ancestors and "/" stay
// reachable) and the imported sheet's templates, keys, parameters and xsl:output all apply.
// The wrapper's root template steps aside (xsl:apply-imports) whenever the real sheet
// applies templates to the root itself later on.
#include <cstdint>
#include <optional>

#include <libxml/xmlIO.h>
#include <libxml/xpathInternals.h>
#include <libxslt/extensions.h>
#include <libxslt/imports.h>
#include <libxslt/security.h>
#include <libxslt/variables.h>
#include <libxslt/xsltutils.h>

#include "common/files.h"
#include "xml/xml.h"
#include "xml/xmlsupport.h"

namespace dorvane::xml {

using namespace detail;

namespace {

// Error codes of this module's XSLT failures.
constexpr std::int32_t kSheetInvalid = 1;
constexpr std::int32_t kTransformFailed = 2;

constexpr const char* kNodeNamespace = "urn:dorvane:xml:transform-node";
// The address the wrapper imports; our sheet loader answers it with the real sheet's text.
constexpr const char* kImportedSheetUri = "file:///dorvane-transform-node/imported-sheet.xsl";

std::string wrapperSheet() {
    std::string text;
    text += "<xsl:stylesheet version='1.0' xmlns:xsl='http://www.w3.org/1999/XSL/Transform'";
    text += " xmlns:dorvane-node='" + std::string(kNodeNamespace) + "'";
    text += " exclude-result-prefixes='dorvane-node'>";
    text += "<xsl:import href='" + std::string(kImportedSheetUri) + "'/>";
    text += "<xsl:template match='/'>";
    text += "<xsl:choose>";
    text += "<xsl:when test='dorvane-node:begin()'>";
    text += "<xsl:apply-templates select='dorvane-node:node()'/>";
    text += "</xsl:when>";
    text += "<xsl:otherwise><xsl:apply-imports/></xsl:otherwise>";
    text += "</xsl:choose>";
    text += "</xsl:template>";
    text += "</xsl:stylesheet>";
    return text;
}

struct NodeTarget {
    xmlNodePtr node = nullptr;
    bool begun = false;
};

NodeTarget* targetOf(xmlXPathParserContextPtr ctxt) {
    xsltTransformContextPtr tctxt = xsltXPathGetTransformContext(ctxt);
    return tctxt ? static_cast<NodeTarget*>(tctxt->_private) : nullptr;
}

// dorvane-node:begin() is true once: when the transform itself enters the root template.
// A variable of the real sheet that applies templates to the root (global variables are
// computed before the transform starts) gets the real sheet's root template instead.
void beginFunction(xmlXPathParserContextPtr ctxt, int nargs) {
    if (nargs != 0) {
        xmlXPathSetArityError(ctxt);
        return;
    }
    xsltTransformContextPtr tctxt = xsltXPathGetTransformContext(ctxt);
    NodeTarget* target = targetOf(ctxt);
    // Variables are built in result tree fragments; the transform writes to its result.
    const bool inVariable =
        !tctxt || tctxt->contextVariable || XSLT_IS_RES_TREE_FRAG(tctxt->output);
    const bool first = target && !target->begun && !inVariable;
    if (first) {
        target->begun = true;
    }
    valuePush(ctxt, xmlXPathNewBoolean(first ? 1 : 0));
}

// dorvane-node:node() is the node the transform was asked to start at.
void nodeFunction(xmlXPathParserContextPtr ctxt, int nargs) {
    if (nargs != 0) {
        xmlXPathSetArityError(ctxt);
        return;
    }
    NodeTarget* target = targetOf(ctxt);
    valuePush(ctxt, xmlXPathNewNodeSet(target ? target->node : nullptr));
}

Error failure(std::int32_t code, const ErrorCollector& errors, const char* fallback) {
    std::string text = errors.allText();
    return Error{code, text.empty() ? std::string(fallback) : text};
}

Result<StylesheetPtr> compile(std::string_view text, const std::string& url) {
    ErrorCollector errors;
    DocPtr doc = parseForXslt(text, url, nullptr, true);
    if (!doc) {
        std::string reason = errors.reason();
        return Error{kSheetInvalid, reason.empty() ? "The style sheet is not well-formed" : reason};
    }
    StylesheetPtr sheet(xsltParseStylesheetDoc(doc.get()));
    if (!sheet) {
        return failure(kSheetInvalid, errors, "The style sheet is not a valid XSLT style sheet");
    }
    doc.release();  // the sheet owns it now
    if (sheet->errors != 0) {
        return failure(kSheetInvalid, errors, "The style sheet is not a valid XSLT style sheet");
    }
    return sheet;
}

bool stripsSpace(xsltStylesheetPtr sheet) {
    for (xsltStylesheetPtr s = sheet; s; s = xsltNextImport(s)) {
        if (s->stripSpaces || s->stripAll != 0) {
            return true;
        }
    }
    return false;
}

// Where a node stands: the child (or attribute) index at each level below the document.
std::optional<std::vector<std::pair<bool, int>>> pathOf(xmlNodePtr n) {
    std::vector<std::pair<bool, int>> steps;
    while (n && n->type != XML_DOCUMENT_NODE && n->type != XML_HTML_DOCUMENT_NODE) {
        if (!n->parent) {
            return std::nullopt;
        }
        int index = 0;
        if (n->type == XML_ATTRIBUTE_NODE) {
            for (xmlAttrPtr a = n->parent->properties; a && reinterpret_cast<xmlNodePtr>(a) != n;
                 a = a->next) {
                ++index;
            }
            steps.emplace_back(true, index);
        } else {
            for (xmlNodePtr c = n->parent->children; c && c != n; c = c->next) {
                ++index;
            }
            steps.emplace_back(false, index);
        }
        n = n->parent;
    }
    if (!n) {
        return std::nullopt;
    }
    return std::vector<std::pair<bool, int>>(steps.rbegin(), steps.rend());
}

xmlNodePtr follow(xmlDocPtr doc, const std::vector<std::pair<bool, int>>& steps) {
    auto n = reinterpret_cast<xmlNodePtr>(doc);
    for (const auto& [attribute, index] : steps) {
        if (!n) {
            return nullptr;
        }
        xmlNodePtr c = attribute ? reinterpret_cast<xmlNodePtr>(n->properties) : n->children;
        for (int i = 0; c && i < index; ++i) {
            c = c->next;
        }
        n = c;
    }
    return n;
}

// The result as the sheet's xsl:output describes it, in the encoding it names: characters
// that encoding cannot hold become character references. Without an encoding, or with one
// this system does not know, the text is UTF-8.
std::string resultText(xmlDocPtr result, xsltStylesheetPtr sheet) {
    std::string out;
    const xmlChar* encoding = nullptr;
    XSLT_GET_IMPORT_PTR(encoding, sheet, encoding)
    xmlCharEncodingHandlerPtr encoder =
        encoding ? xmlFindCharEncodingHandler(reinterpret_cast<const char*>(encoding)) : nullptr;
    if (encoder && xmlStrcasecmp(xs(encoder->name), xs("UTF-8")) == 0) {
        encoder = nullptr;
    }
    xmlOutputBufferPtr buffer = xmlOutputBufferCreateIO(writeToString, closeNothing, &out, encoder);
    if (buffer) {
        xsltSaveResultTo(buffer, result, sheet);
        xmlOutputBufferClose(buffer);
    }
    return out;
}

Result<DocPtr> run(xsltStylesheetPtr sheet, xmlDocPtr doc, const Variables& params,
                   NodeTarget* target) {
    ErrorCollector errors;
    // libxslt numbers every element of the document for faster sorting, when it makes the
    // transform context and again when it applies the sheet, and leaves the numbers behind in
    // the tree. On a large list answer that costs more than the transform itself, on every
    // document of a send run, and numbers left behind go stale once nodes are moved
    // (ordering XPath results wrongly). It skips the first while its debugger is on (switched
    // on for the creation only) and the second when the root element reads as numbered
    // already: a mark of -1 on the root, the one number libxml2 never compares two
    // different elements by. Unnumbered nodes are ordered by their place in the tree.
    if (xmlNodePtr root = xmlDocGetRootElement(doc)) {
        if (reinterpret_cast<std::intptr_t>(root->content) >= 0) {
            root->content = reinterpret_cast<xmlChar*>(std::intptr_t{-1});
        }
    }
    const int debugger = xsltGetDebuggerStatus();
    xsltSetDebuggerStatus(XSLT_DEBUG_INIT);
    TransformContextPtr ctxt(xsltNewTransformContext(sheet, doc));
    xsltSetDebuggerStatus(debugger);
    if (ctxt) {
        ctxt->debugStatus = debugger;
    }
    if (!ctxt) {
        return Error{kTransformFailed, "Out of memory"};
    }
    xsltSetCtxtSecurityPrefs(securityPrefs(), ctxt.get());
    if (target) {
        ctxt->_private = target;
        xsltRegisterExtFunction(ctxt.get(), xs("begin"), xs(kNodeNamespace), beginFunction);
        xsltRegisterExtFunction(ctxt.get(), xs("node"), xs(kNodeNamespace), nodeFunction);
    }
    if (!params.empty()) {
        std::vector<const char*> list;
        for (const auto& [name, value] : params) {
            list.push_back(name.c_str());
            list.push_back(value.c_str());
        }
        list.push_back(nullptr);
        if (xsltQuoteUserParams(ctxt.get(), list.data()) != 0) {
            return failure(kTransformFailed, errors, "A style sheet parameter is not valid");
        }
    }
    DocPtr result(xsltApplyStylesheetUser(sheet, doc, nullptr, nullptr, nullptr, ctxt.get()));
    if (!result || ctxt->state == XSLT_STATE_ERROR || ctxt->state == XSLT_STATE_STOPPED) {
        return failure(kTransformFailed, errors, "The transformation failed");
    }
    return result;
}

}  // namespace

struct Stylesheet::Impl {
    std::string text;  // kept for the wrapper of transformNode
    std::string url;   // the sheet's address; "" when it has none
    StylesheetPtr sheet;
    StylesheetPtr wrapper;  // compiled on the first transformNode
};

namespace {

// The address the real sheet has inside the wrapper: its own, or a made-up one.
std::string importedUrl(const std::string& url) {
    return url.empty() ? std::string(kImportedSheetUri) : url;
}

}  // namespace

Stylesheet::Stylesheet() = default;
Stylesheet::~Stylesheet() = default;
Stylesheet::Stylesheet(Stylesheet&&) noexcept = default;
Stylesheet& Stylesheet::operator=(Stylesheet&&) noexcept = default;

Result<Stylesheet> Stylesheet::load(const std::filesystem::path& file) {
    auto text = files::readAll(file);
    if (!text) {
        return text.error();
    }
    return parse(*text, file);
}

Result<Stylesheet> Stylesheet::parse(std::string_view text, const std::filesystem::path& baseFile) {
    initialize();
    auto impl = std::make_unique<Impl>();
    impl->text = std::string(text);
    impl->url = fileUrl(baseFile.string());
    auto sheet = compile(impl->text, impl->url);
    if (!sheet) {
        return sheet.error();
    }
    impl->sheet = std::move(sheet).value();
    Stylesheet out;
    out.m_impl = std::move(impl);
    return out;
}

Result<std::string> Stylesheet::transformNode(Node node, const Variables& params) const {
    initialize();
    if (!m_impl || !m_impl->sheet) {
        return Error{kSheetInvalid, "No style sheet"};
    }
    auto n = static_cast<xmlNodePtr>(node.m_node);
    if (!n || !n->doc) {
        return Error{kTransformFailed, "No node to transform"};
    }
    const bool wholeDocument = n->type == XML_DOCUMENT_NODE || n->type == XML_HTML_DOCUMENT_NODE;
    xsltStylesheetPtr sheet = m_impl->sheet.get();
    if (!wholeDocument) {
        if (!m_impl->wrapper) {
            InlineImport real(kImportedSheetUri, m_impl->text, importedUrl(m_impl->url));
            auto wrapper = compile(wrapperSheet(), {});
            if (!wrapper) {
                return wrapper.error();
            }
            m_impl->wrapper = std::move(wrapper).value();
        }
        sheet = m_impl->wrapper.get();
    }

    // xsl:strip-space removes text nodes from the source; such a sheet works on a copy so
    // that the caller's document (and its node handles) stay as they are.
    xmlDocPtr source = n->doc;
    xmlNodePtr start = n;
    DocPtr copy;
    if (stripsSpace(m_impl->sheet.get())) {
        if (auto steps = pathOf(n)) {
            copy.reset(xmlCopyDoc(n->doc, 1));
            if (!copy) {
                return Error{kTransformFailed, "Out of memory"};
            }
            copy->_private = nullptr;
            source = copy.get();
            start = follow(copy.get(), *steps);
            if (!start) {
                return Error{kTransformFailed, "No node to transform"};
            }
        }
    }

    NodeTarget target{start, false};
    // document('') inside the imported sheet means the sheet itself, as it does when the
    // sheet runs on its own.
    const std::string ownUrl = importedUrl(m_impl->url);
    std::optional<InlineImport> self;
    if (!wholeDocument) {
        self.emplace(ownUrl, m_impl->text, ownUrl);
    }
    auto result = run(sheet, source, params, wholeDocument ? nullptr : &target);
    if (!result) {
        return result.error();
    }
    return resultText(result->get(), sheet);
}

Result<Document> Stylesheet::transformToDocument(const Document& doc,
                                                 const Variables& params) const {
    initialize();
    if (!m_impl || !m_impl->sheet) {
        return Error{kSheetInvalid, "No style sheet"};
    }
    auto source = static_cast<xmlDocPtr>(doc.m_doc);
    if (!source) {
        return Error{kTransformFailed, "No document to transform"};
    }
    DocPtr copy;
    if (stripsSpace(m_impl->sheet.get())) {
        copy.reset(xmlCopyDoc(source, 1));
        if (!copy) {
            return Error{kTransformFailed, "Out of memory"};
        }
        copy->_private = nullptr;
        source = copy.get();
    }
    auto result = run(m_impl->sheet.get(), source, params, nullptr);
    if (!result) {
        return result.error();
    }
    return Document(result->release());
}

}  // namespace dorvane::xml
