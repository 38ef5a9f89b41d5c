// SPDX-License-Identifier: GPL-3.0-or-later
#include "xml/xml.h"

#include <charconv>
#include <climits>
#include <cstdint>
#include <utility>

#include <libxml/entities.h>
#include <libxml/xmlsave.h>
#include <libxml/xpathInternals.h>

#include "common/files.h"
#include "xml/xmlsupport.h"

namespace dorvane::xml {

using namespace detail;

namespace {

// What a Document keeps beside its libxml2 document (in doc->_private): the object that owns
// it, and a hidden element under which nodes created but not yet placed in the tree wait,
// so that they are freed with the document.
struct DocData {
    static constexpr std::uint32_t kMagic = 0x44564e58;  // "DVNX"
    std::uint32_t magic = kMagic;
    Document* owner = nullptr;
    xmlNodePtr detached = nullptr;
};

// Nesting deeper than this inside entity replacement texts is not followed by text().
constexpr int kMaxEntityDepth = 40;

xmlNodePtr asNode(void* p) {
    return static_cast<xmlNodePtr>(p);
}
xmlDocPtr asDoc(void* p) {
    return static_cast<xmlDocPtr>(p);
}

DocData* dataOf(xmlDocPtr doc) {
    if (!doc || !doc->_private) {
        return nullptr;
    }
    auto* data = static_cast<DocData*>(doc->_private);
    return data->magic == DocData::kMagic ? data : nullptr;
}

bool isDocumentNode(const xmlNode* n) {
    return n && (n->type == XML_DOCUMENT_NODE || n->type == XML_HTML_DOCUMENT_NODE);
}

bool isDetachedHolder(const xmlNode* n) {
    if (!n || n->type != XML_ELEMENT_NODE) {
        return false;
    }
    DocData* data = dataOf(n->doc);
    return data && data->detached == n;
}

// Links `child` (unlinked) as the last child of `parent`. Unlike xmlAddChild it never merges
// adjacent text nodes, so the node handed in is the node that stands there afterwards.
void linkLast(xmlNodePtr parent, xmlNodePtr child) {
    child->parent = parent;
    child->next = nullptr;
    child->prev = parent->last;
    if (parent->last) {
        parent->last->next = child;
    } else {
        parent->children = child;
    }
    parent->last = child;
}

void linkBefore(xmlNodePtr ref, xmlNodePtr child) {
    child->parent = ref->parent;
    child->next = ref;
    child->prev = ref->prev;
    if (ref->prev) {
        ref->prev->next = child;
    } else if (ref->parent) {
        ref->parent->children = child;
    }
    ref->prev = child;
}

// Keeps an unlinked node of `doc` until it is placed in the tree or the document dies.
void keepDetached(xmlDocPtr doc, xmlNodePtr node) {
    DocData* data = dataOf(doc);
    if (!data) {
        xmlFreeNode(node);
        return;
    }
    if (!data->detached) {
        data->detached = xmlNewDocNode(doc, nullptr, xs("dorvane-detached"), nullptr);
        if (!data->detached) {
            xmlFreeNode(node);
            return;
        }
    }
    if (node->type == XML_ATTRIBUTE_NODE) {
        auto* attr = reinterpret_cast<xmlAttrPtr>(node);
        attr->parent = data->detached;
        attr->prev = nullptr;
        attr->next = data->detached->properties;
        if (attr->next) {
            attr->next->prev = attr;
        }
        data->detached->properties = attr;
        return;
    }
    linkLast(data->detached, node);
}

void attachData(xmlDocPtr doc, Document* owner) {
    if (!doc) {
        return;
    }
    auto* data = new DocData;
    data->owner = owner;
    doc->_private = data;
}

void freeDocument(xmlDocPtr doc) {
    if (!doc) {
        return;
    }
    if (DocData* data = dataOf(doc)) {
        if (data->detached) {
            xmlFreeNode(data->detached);
        }
        delete data;
        doc->_private = nullptr;
    }
    xmlFreeDoc(doc);
}

std::string qualifiedName(const xmlNode* n) {
    std::string name = str(n->name);
    if (n->ns && n->ns->prefix) {
        return str(n->ns->prefix) + ":" + name;
    }
    return name;
}

bool nameIs(const xmlNode* n, std::string_view name) {
    if (n->ns && n->ns->prefix) {
        return qualifiedName(n) == name;
    }
    return n->name && name == reinterpret_cast<const char*>(n->name);
}

void appendChildrenText(const xmlNode* parent, std::string& out, int entityDepth);

void appendEntityText(const xmlNode* ref, std::string& out, int entityDepth) {
    xmlEntityPtr ent = xmlGetDocEntity(ref->doc, ref->name);
    if (!ent) {
        return;
    }
    switch (ent->etype) {
        case XML_INTERNAL_PREDEFINED_ENTITY:
            out += str(ent->content);
            break;
        case XML_INTERNAL_GENERAL_ENTITY:
            // Only what the parser already checked and built from the declaration; an
            // external entity is never read, so its text never appears.
            if (entityDepth < kMaxEntityDepth) {
                appendChildrenText(reinterpret_cast<const xmlNode*>(ent), out, entityDepth + 1);
            }
            break;
        default:
            break;
    }
}

void appendChildrenText(const xmlNode* parent, std::string& out, int entityDepth) {
    for (const xmlNode* c = parent->children; c; c = c->next) {
        switch (c->type) {
            case XML_TEXT_NODE:
            case XML_CDATA_SECTION_NODE:
                if (c->content) {
                    out += reinterpret_cast<const char*>(c->content);
                }
                break;
            case XML_ELEMENT_NODE:
                appendChildrenText(c, out, entityDepth);
                break;
            case XML_ENTITY_REF_NODE:
                appendEntityText(c, out, entityDepth);
                break;
            default:
                break;
        }
    }
}

std::string textOf(const xmlNode* n) {
    if (!n) {
        return {};
    }
    std::string out;
    switch (n->type) {
        case XML_TEXT_NODE:
        case XML_CDATA_SECTION_NODE:
        case XML_COMMENT_NODE:
        case XML_PI_NODE:
            out = str(n->content);
            break;
        case XML_ENTITY_REF_NODE:
            appendEntityText(n, out, 0);
            break;
        case XML_ELEMENT_NODE:
        case XML_ATTRIBUTE_NODE:
        case XML_DOCUMENT_NODE:
        case XML_HTML_DOCUMENT_NODE:
        case XML_DOCUMENT_FRAG_NODE:
            appendChildrenText(n, out, 0);
            break;
        default:
            break;
    }
    return out;
}

// Replaces the children of an element or attribute with one text node holding `text`
// literally (no entity or markup interpretation, unlike xmlNodeSetContent).
void replaceChildrenWithText(xmlNodePtr n, std::string_view text) {
    xmlNodePtr old = n->children;
    n->children = nullptr;
    n->last = nullptr;
    if (old) {
        xmlFreeNodeList(old);
    }
    if (text.empty()) {
        return;
    }
    if (text.size() > static_cast<size_t>(INT_MAX)) {
        return;
    }
    xmlNodePtr t = xmlNewDocTextLen(n->doc, reinterpret_cast<const xmlChar*>(text.data()),
                                    static_cast<int>(text.size()));
    if (t) {
        linkLast(n, t);
    }
}

xmlAttrPtr findAttribute(const xmlNode* n, std::string_view name) {
    if (!n || n->type != XML_ELEMENT_NODE) {
        return nullptr;
    }
    for (xmlAttrPtr a = n->properties; a; a = a->next) {
        if (nameIs(reinterpret_cast<const xmlNode*>(a), name)) {
            return a;
        }
    }
    return nullptr;
}

bool isAncestorOrSelf(const xmlNode* candidate, const xmlNode* n) {
    for (; n; n = n->parent) {
        if (n == candidate) {
            return true;
        }
    }
    return false;
}

std::string dumpDocument(xmlDocPtr doc, bool declaration, const char* encoding = "UTF-8") {
    std::string out;
    if (!doc) {
        return out;
    }
    xmlSaveCtxtPtr save = xmlSaveToIO(writeToString, closeNothing, &out, encoding,
                                      declaration ? 0 : XML_SAVE_NO_DECL);
    if (save) {
        xmlSaveDoc(save, doc);
        xmlSaveClose(save);
    }
    return out;
}

std::string dumpNode(xmlNodePtr n) {
    if (isDocumentNode(n)) {
        return dumpDocument(reinterpret_cast<xmlDocPtr>(n), false);
    }
    std::string out;
    xmlOutputBufferPtr buffer = xmlOutputBufferCreateIO(writeToString, closeNothing, &out, nullptr);
    if (!buffer) {
        return out;
    }
    xmlNodeDumpOutput(buffer, n->doc, n, 0, 0, "UTF-8");
    xmlOutputBufferClose(buffer);
    if (n->type == XML_ATTRIBUTE_NODE && !out.empty() && out.front() == ' ') {
        out.erase(0, 1);
    }
    return out;
}

void ignoreXPathError(void*, xmlErrorPtr) {}

XPathObjectPtr evaluate(xmlNodePtr context, std::string_view xpath, const Variables& vars) {
    initialize();
    if (!context || !context->doc) {
        return nullptr;
    }
    XPathContextPtr ctx(xmlXPathNewContext(context->doc));
    if (!ctx) {
        return nullptr;
    }
    ctx->node = context;
    ctx->error = &ignoreXPathError;
    // Prefixes declared in the document where the expression starts can be used in it.
    if (context->type == XML_ELEMENT_NODE) {
        if (xmlNsPtr* list = xmlGetNsList(context->doc, context)) {
            for (xmlNsPtr* ns = list; *ns; ++ns) {
                if ((*ns)->prefix && (*ns)->href) {
                    xmlXPathRegisterNs(ctx.get(), (*ns)->prefix, (*ns)->href);
                }
            }
            xmlFree(list);
        }
    }
    for (const auto& [name, value] : vars) {
        xmlXPathObjectPtr v = xmlXPathNewString(xs(value));
        if (v && xmlXPathRegisterVariable(ctx.get(), xs(name), v) != 0) {
            xmlXPathFreeObject(v);
        }
    }
    const std::string expr(xpath);
    XPathObjectPtr result(xmlXPathEval(xs(expr), ctx.get()));
    if (result && result->type == XPATH_NODESET && result->nodesetval &&
        result->nodesetval->nodeNr > 1) {
        xmlXPathNodeSetSort(result->nodesetval);
    }
    return result;
}

// The nodes of a result that a Node may stand for: namespace nodes (which XPath makes up and
// frees with the result) and our hidden holder are left out.
bool usable(const xmlNode* n) {
    return n && n->type != XML_NAMESPACE_DECL && !isDetachedHolder(n);
}

std::vector<xmlNodePtr> selectNodes(xmlNodePtr context, std::string_view xpath,
                                    const Variables& vars, bool firstOnly) {
    std::vector<xmlNodePtr> out;
    XPathObjectPtr result = evaluate(context, xpath, vars);
    if (!result || result->type != XPATH_NODESET || !result->nodesetval) {
        return out;
    }
    for (int i = 0; i < result->nodesetval->nodeNr; ++i) {
        xmlNodePtr n = result->nodesetval->nodeTab[i];
        if (usable(n)) {
            out.push_back(n);
            if (firstOnly) {
                break;
            }
        }
    }
    return out;
}

std::string valueOfExpression(xmlNodePtr context, std::string_view xpath, const Variables& vars) {
    XPathObjectPtr result = evaluate(context, xpath, vars);
    if (!result) {
        return {};
    }
    switch (result->type) {
        case XPATH_NODESET:
            if (result->nodesetval) {
                for (int i = 0; i < result->nodesetval->nodeNr; ++i) {
                    xmlNodePtr n = result->nodesetval->nodeTab[i];
                    if (usable(n)) {
                        return textOf(n);
                    }
                }
            }
            return {};
        case XPATH_STRING:
            return str(result->stringval);
        default: {
            XmlString s(xmlXPathCastToString(result.get()));
            return str(s.get());
        }
    }
}

bool canHoldChildren(const xmlNode* n) {
    return n && (n->type == XML_ELEMENT_NODE || isDocumentNode(n));
}

bool canBeChild(const xmlNode* n) {
    switch (n->type) {
        case XML_ELEMENT_NODE:
        case XML_TEXT_NODE:
        case XML_CDATA_SECTION_NODE:
        case XML_ENTITY_REF_NODE:
        case XML_PI_NODE:
        case XML_COMMENT_NODE:
            return true;
        default:
            return false;
    }
}

// Moves (same document) or copies (other document) `child` to stand before `ref`, or last
// when `ref` is null. Answers the node now in place, or null when the move is impossible.
xmlNodePtr place(xmlNodePtr parent, xmlNodePtr child, xmlNodePtr ref) {
    if (!canHoldChildren(parent) || !child || !canBeChild(child)) {
        return nullptr;
    }
    if (ref && ref->parent != parent) {
        return nullptr;
    }
    xmlDocPtr doc = parent->doc;
    if (isDocumentNode(parent) && child->type == XML_ELEMENT_NODE) {
        xmlNodePtr root = xmlDocGetRootElement(doc);
        if (root && root != child) {
            return nullptr;  // a document has one root element
        }
    }
    if (child->doc == doc) {
        if (isAncestorOrSelf(child, parent)) {
            return nullptr;
        }
        if (child == ref) {
            return child;
        }
        xmlUnlinkNode(child);
    } else {
        child = xmlDocCopyNode(child, doc, 1);
        if (!child) {
            return nullptr;
        }
    }
    if (ref) {
        linkBefore(ref, child);
    } else {
        linkLast(parent, child);
    }
    if (child->type == XML_ELEMENT_NODE) {
        // Namespace declarations the node used from its old ancestors come along.
        xmlReconciliateNs(doc, child);
    }
    return child;
}

xmlNodePtr newElement(xmlDocPtr doc, std::string_view name, std::string_view text) {
    const std::string n(name);
    xmlNodePtr e = xmlNewDocNode(doc, nullptr, xs(n), nullptr);
    if (e && !text.empty()) {
        replaceChildrenWithText(e, text);
    }
    return e;
}

struct ParseState {
    bool refused = false;
};

void refuse(void* ctx) {
    auto* ctxt = static_cast<xmlParserCtxtPtr>(ctx);
    auto* state = static_cast<ParseState*>(ctxt->_private);
    if (state && !state->refused) {
        state->refused = true;
        ctxt->wellFormed = 0;
        xmlStopParser(ctxt);
    }
}

void refuseEntityDecl(void* ctx, const xmlChar*, int, const xmlChar*, const xmlChar*, xmlChar*) {
    refuse(ctx);
}
void refuseElementDecl(void* ctx, const xmlChar*, int, xmlElementContentPtr) {
    refuse(ctx);
}
void refuseAttributeDecl(void* ctx, const xmlChar*, const xmlChar*, int, int, const xmlChar*,
                         xmlEnumerationPtr tree) {
    // The handler owns the enumeration.
    if (tree) {
        xmlFreeEnumeration(tree);
    }
    refuse(ctx);
}
void refuseNotationDecl(void* ctx, const xmlChar*, const xmlChar*, const xmlChar*) {
    refuse(ctx);
}
void refuseUnparsedEntityDecl(void* ctx, const xmlChar*, const xmlChar*, const xmlChar*,
                              const xmlChar*) {
    refuse(ctx);
}

constexpr const char* kInternalSubsetRefused =
    "The document type declaration carries an internal subset with declarations (entities, "
    "elements, attributes or notations), which is not accepted for this document";

bool hasDeclarations(xmlDocPtr doc) {
    if (!doc->intSubset) {
        return false;
    }
    for (xmlNodePtr c = doc->intSubset->children; c; c = c->next) {
        if (c->type == XML_ELEMENT_DECL || c->type == XML_ATTRIBUTE_DECL ||
            c->type == XML_ENTITY_DECL) {
            return true;
        }
    }
    return doc->intSubset->notations != nullptr;
}

Result<Document> parseText(std::string_view text, const ParseOptions& options,
                           const std::string& url, Document (*wrap)(xmlDocPtr)) {
    initialize();
    if (text.size() > static_cast<size_t>(INT_MAX)) {
        return Error{XML_ERR_NO_MEMORY, "The document is too large"};
    }
    ParserCtxtPtr ctxt(xmlNewParserCtxt());
    if (!ctxt) {
        return Error{XML_ERR_NO_MEMORY, "Out of memory"};
    }
    ErrorCollector errors;
    collectErrorsOf(ctxt.get());
    ParseState state;
    ctxt->_private = &state;
    if (options.refuseInternalSubset) {
        ctxt->sax->entityDecl = refuseEntityDecl;
        ctxt->sax->elementDecl = refuseElementDecl;
        ctxt->sax->attributeDecl = refuseAttributeDecl;
        ctxt->sax->notationDecl = refuseNotationDecl;
        ctxt->sax->unparsedEntityDecl = refuseUnparsedEntityDecl;
    }
    int flags = XML_PARSE_NONET;
    if (!options.keepBlanks) {
        flags |= XML_PARSE_NOBLANKS;
    }
    const char* data = text.data() ? text.data() : "";
    DocPtr doc(xmlCtxtReadMemory(ctxt.get(), data, static_cast<int>(text.size()),
                                 url.empty() ? nullptr : url.c_str(), nullptr, flags));
    if (state.refused) {
        return Error{XML_ERR_USER_STOP, kInternalSubsetRefused};
    }
    if (!doc || !ctxt->wellFormed || !ctxt->nsWellFormed) {
        std::string reason = errors.reason();
        int code = errors.reasonCode();
        if (reason.empty()) {
            reason = "The document is not well-formed";
        }
        return Error{code ? code : XML_ERR_DOCUMENT_END, reason};
    }
    if (options.refuseInternalSubset && hasDeclarations(doc.get())) {
        return Error{XML_ERR_USER_STOP, kInternalSubsetRefused};
    }
    return wrap(doc.release());
}

}  // namespace

// ---- Node ------------------------------------------------------------------------------

bool Node::isElement() const {
    return m_node && asNode(m_node)->type == XML_ELEMENT_NODE;
}

std::string Node::name() const {
    return isElement() ? qualifiedName(asNode(m_node)) : "";
}

std::string Node::text() const {
    return textOf(asNode(m_node));
}

void Node::setText(std::string_view text) {
    xmlNodePtr n = asNode(m_node);
    if (!n) {
        return;
    }
    switch (n->type) {
        case XML_ELEMENT_NODE:
        case XML_ATTRIBUTE_NODE:
            replaceChildrenWithText(n, text);
            break;
        case XML_TEXT_NODE:
        case XML_CDATA_SECTION_NODE:
        case XML_COMMENT_NODE:
        case XML_PI_NODE:
            // For these node kinds libxml2 stores the content as given.
            if (text.size() <= static_cast<size_t>(INT_MAX)) {
                xmlNodeSetContentLen(n, reinterpret_cast<const xmlChar*>(text.data()),
                                     static_cast<int>(text.size()));
            }
            break;
        default:
            break;
    }
}

bool Node::hasAttribute(std::string_view name) const {
    return findAttribute(asNode(m_node), name) != nullptr;
}

std::string Node::attribute(std::string_view name) const {
    xmlAttrPtr a = findAttribute(asNode(m_node), name);
    return a ? textOf(reinterpret_cast<xmlNodePtr>(a)) : std::string();
}

void Node::setAttribute(std::string_view name, std::string_view value) {
    xmlNodePtr n = asNode(m_node);
    if (!n || n->type != XML_ELEMENT_NODE || name.empty()) {
        return;
    }
    if (xmlAttrPtr a = findAttribute(n, name)) {
        replaceChildrenWithText(reinterpret_cast<xmlNodePtr>(a), value);
        return;
    }
    const std::string nameText(name);
    const std::string valueText(value);
    // xmlSetProp stores the value literally and binds a prefix declared in scope.
    xmlSetProp(n, xs(nameText), xs(valueText));
}

std::vector<std::pair<std::string, std::string>> Node::attributes() const {
    std::vector<std::pair<std::string, std::string>> out;
    xmlNodePtr n = asNode(m_node);
    if (!n || n->type != XML_ELEMENT_NODE) {
        return out;
    }
    for (xmlAttrPtr a = n->properties; a; a = a->next) {
        auto* an = reinterpret_cast<xmlNodePtr>(a);
        out.emplace_back(qualifiedName(an), textOf(an));
    }
    return out;
}

namespace {

// The everyday reads of a record's fields ("TxnID", "CustomerRef/FullName") are plain child
// steps. They are answered by walking the children, with the same result as XPath (the first
// match in document order) and without compiling an expression for every read.
bool isPlainChildPath(std::string_view path) {
    if (path.empty() || path.front() == '/' || path.back() == '/') {
        return false;
    }
    bool stepStart = true;
    for (char c : path) {
        const auto u = static_cast<unsigned char>(c);
        if (c == '/') {
            if (stepStart) {
                return false;
            }
            stepStart = true;
            continue;
        }
        const bool letter = (u >= 'A' && u <= 'Z') || (u >= 'a' && u <= 'z') || c == '_';
        const bool digit = (u >= '0' && u <= '9') || c == '-' || c == '.';
        if (!(letter || (digit && !stepStart))) {
            return false;
        }
        stepStart = false;
    }
    return true;
}

xmlNodePtr firstOnChildPath(xmlNodePtr from, std::string_view path) {
    const std::size_t slash = path.find('/');
    const std::string_view step = path.substr(0, slash);
    for (xmlNodePtr c = from ? from->children : nullptr; c; c = c->next) {
        if (c->type != XML_ELEMENT_NODE || c->ns != nullptr ||
            std::string_view(reinterpret_cast<const char*>(c->name)) != step) {
            continue;
        }
        if (slash == std::string_view::npos) {
            return c;
        }
        if (xmlNodePtr found = firstOnChildPath(c, path.substr(slash + 1))) {
            return found;
        }
    }
    return nullptr;
}

bool walksChildren(const xmlNode* n) {
    return n && (n->type == XML_ELEMENT_NODE || n->type == XML_DOCUMENT_NODE);
}

}  // namespace

Node Node::selectOne(std::string_view xpath, const Variables& vars) const {
    xmlNodePtr context = asNode(m_node);
    if (walksChildren(context) && isPlainChildPath(xpath)) {
        return Node(firstOnChildPath(context, xpath));
    }
    auto nodes = selectNodes(context, xpath, vars, true);
    return nodes.empty() ? Node() : Node(nodes.front());
}

std::vector<Node> Node::selectAll(std::string_view xpath, const Variables& vars) const {
    std::vector<Node> out;
    for (xmlNodePtr n : selectNodes(asNode(m_node), xpath, vars, false)) {
        out.push_back(Node(n));
    }
    return out;
}

std::string Node::valueOf(std::string_view xpath, const Variables& vars) const {
    xmlNodePtr context = asNode(m_node);
    if (walksChildren(context) && isPlainChildPath(xpath)) {
        xmlNodePtr found = firstOnChildPath(context, xpath);
        return found ? textOf(found) : std::string();
    }
    return valueOfExpression(context, xpath, vars);
}

Node Node::parent() const {
    xmlNodePtr n = asNode(m_node);
    if (!n || !n->parent || isDocumentNode(n->parent) || isDetachedHolder(n->parent)) {
        return {};
    }
    return Node(n->parent);
}

Node Node::firstChildElement() const {
    xmlNodePtr n = asNode(m_node);
    if (!canHoldChildren(n)) {
        return {};
    }
    for (xmlNodePtr c = n->children; c; c = c->next) {
        if (c->type == XML_ELEMENT_NODE) {
            return Node(c);
        }
    }
    return {};
}

Node Node::nextSiblingElement() const {
    xmlNodePtr n = asNode(m_node);
    if (!n || n->type == XML_ATTRIBUTE_NODE || isDocumentNode(n) || isDetachedHolder(n->parent)) {
        return {};
    }
    for (xmlNodePtr c = n->next; c; c = c->next) {
        if (c->type == XML_ELEMENT_NODE) {
            return Node(c);
        }
    }
    return {};
}

std::vector<Node> Node::childElements() const {
    std::vector<Node> out;
    xmlNodePtr n = asNode(m_node);
    if (!canHoldChildren(n)) {
        return out;
    }
    for (xmlNodePtr c = n->children; c; c = c->next) {
        if (c->type == XML_ELEMENT_NODE) {
            out.push_back(Node(c));
        }
    }
    return out;
}

Node Node::firstChildElement(std::string_view name) const {
    xmlNodePtr n = asNode(m_node);
    if (!canHoldChildren(n)) {
        return {};
    }
    for (xmlNodePtr c = n->children; c; c = c->next) {
        if (c->type == XML_ELEMENT_NODE && nameIs(c, name)) {
            return Node(c);
        }
    }
    return {};
}

Node Node::appendElement(std::string_view name, std::string_view text) {
    xmlNodePtr n = asNode(m_node);
    if (!canHoldChildren(n) || name.empty()) {
        return {};
    }
    if (isDocumentNode(n) && xmlDocGetRootElement(n->doc)) {
        return {};
    }
    xmlNodePtr e = newElement(n->doc, name, text);
    if (!e) {
        return {};
    }
    linkLast(n, e);
    return Node(e);
}

Node Node::appendChild(Node child) {
    return Node(place(asNode(m_node), asNode(child.m_node), nullptr));
}

Node Node::insertBefore(Node child, Node ref) {
    if (!ref) {
        return appendChild(child);
    }
    return Node(place(asNode(m_node), asNode(child.m_node), asNode(ref.m_node)));
}

Node Node::cloneDeep() const {
    xmlNodePtr n = asNode(m_node);
    if (!n || isDocumentNode(n) || n->type == XML_NAMESPACE_DECL || !n->doc) {
        return {};
    }
    xmlNodePtr copy = xmlDocCopyNode(n, n->doc, 1);
    if (!copy) {
        return {};
    }
    keepDetached(n->doc, copy);
    return Node(copy);
}

void Node::remove() {
    xmlNodePtr n = asNode(m_node);
    if (!n || isDocumentNode(n) || n->type == XML_NAMESPACE_DECL || isDetachedHolder(n)) {
        return;
    }
    xmlUnlinkNode(n);
    xmlFreeNode(n);
    m_node = nullptr;
}

std::string Node::xml() const {
    xmlNodePtr n = asNode(m_node);
    return n ? dumpNode(n) : std::string();
}

Document* Node::document() const {
    xmlNodePtr n = asNode(m_node);
    DocData* data = n ? dataOf(n->doc) : nullptr;
    return data ? data->owner : nullptr;
}

// ---- Document --------------------------------------------------------------------------

Document::Document() {
    initialize();
    xmlDocPtr doc = xmlNewDoc(xs("1.0"));
    attachData(doc, this);
    m_doc = doc;
}

Document::Document(void* doc) : m_doc(doc) {
    if (DocData* data = dataOf(asDoc(doc))) {
        data->owner = this;
    } else {
        attachData(asDoc(doc), this);
    }
}

Document::~Document() {
    freeDocument(asDoc(m_doc));
}

Document::Document(Document&& other) noexcept : m_doc(other.m_doc) {
    other.m_doc = nullptr;
    if (DocData* data = dataOf(asDoc(m_doc))) {
        data->owner = this;
    }
}

Document& Document::operator=(Document&& other) noexcept {
    if (this != &other) {
        freeDocument(asDoc(m_doc));
        m_doc = other.m_doc;
        other.m_doc = nullptr;
        if (DocData* data = dataOf(asDoc(m_doc))) {
            data->owner = this;
        }
    }
    return *this;
}

Result<Document> Document::parse(std::string_view text, const ParseOptions& options) {
    return parseText(text, options, {}, [](xmlDocPtr doc) { return Document(doc); });
}

Result<Document> Document::load(const std::filesystem::path& file, const ParseOptions& options) {
    auto text = files::readAll(file);
    if (!text) {
        return text.error();
    }
    return parseText(*text, options, fileUrl(file.string()),
                     [](xmlDocPtr doc) { return Document(doc); });
}

Document Document::withRoot(std::string_view rootName) {
    Document doc;
    Node(doc.m_doc).appendElement(rootName);
    return doc;
}

bool Document::empty() const {
    return !m_doc || !xmlDocGetRootElement(asDoc(m_doc));
}

Node Document::root() const {
    return m_doc ? Node(xmlDocGetRootElement(asDoc(m_doc))) : Node();
}

void Document::setRoot(Node element) {
    xmlDocPtr doc = asDoc(m_doc);
    xmlNodePtr e = asNode(element.m_node);
    if (!doc || !e || e->type != XML_ELEMENT_NODE) {
        return;
    }
    xmlNodePtr old = xmlDocGetRootElement(doc);
    if (e == old) {
        return;
    }
    if (e->doc == doc) {
        xmlUnlinkNode(e);
    } else {
        e = xmlDocCopyNode(e, doc, 1);
        if (!e) {
            return;
        }
    }
    if (old) {
        linkBefore(old, e);
        xmlUnlinkNode(old);
        // Handles to the old root stay valid until the document dies.
        keepDetached(doc, old);
    } else {
        linkLast(reinterpret_cast<xmlNodePtr>(doc), e);
    }
    xmlReconciliateNs(doc, e);
}

Node Document::selectOne(std::string_view xpath, const Variables& vars) const {
    return Node(m_doc).selectOne(xpath, vars);
}

std::vector<Node> Document::selectAll(std::string_view xpath, const Variables& vars) const {
    return Node(m_doc).selectAll(xpath, vars);
}

std::string Document::valueOf(std::string_view xpath, const Variables& vars) const {
    return Node(m_doc).valueOf(xpath, vars);
}

Node Document::firstElementByTagName(std::string_view tagName) const {
    xmlNodePtr n = m_doc ? xmlDocGetRootElement(asDoc(m_doc)) : nullptr;
    const bool any = tagName == "*";
    xmlNodePtr top = n;
    // Depth-first, document order, without recursion.
    while (n) {
        if (n->type == XML_ELEMENT_NODE && (any || nameIs(n, tagName))) {
            return Node(n);
        }
        if (n->type == XML_ELEMENT_NODE && n->children) {
            n = n->children;
            continue;
        }
        while (n && n != top && !n->next) {
            n = n->parent;
        }
        n = (n && n != top) ? n->next : nullptr;
    }
    return {};
}

Node Document::createElement(std::string_view name, std::string_view text) {
    xmlDocPtr doc = asDoc(m_doc);
    if (!doc || name.empty()) {
        return {};
    }
    xmlNodePtr e = newElement(doc, name, text);
    if (!e) {
        return {};
    }
    keepDetached(doc, e);
    return Node(e);
}

Node Document::importNode(Node node) {
    xmlDocPtr doc = asDoc(m_doc);
    xmlNodePtr n = asNode(node.m_node);
    if (!doc || !n || isDocumentNode(n) || n->type == XML_NAMESPACE_DECL) {
        return {};
    }
    xmlNodePtr copy = xmlDocCopyNode(n, doc, 1);
    if (!copy) {
        return {};
    }
    keepDetached(doc, copy);
    return Node(copy);
}

std::string Document::toString(bool declaration, const char* encoding) const {
    return dumpDocument(asDoc(m_doc), declaration, encoding);
}

Document Document::clone() const {
    if (!m_doc) {
        return Document();
    }
    xmlDocPtr copy = xmlCopyDoc(asDoc(m_doc), 1);
    if (!copy) {
        return Document();
    }
    copy->_private = nullptr;
    return Document(copy);
}

bool declaresInternalSubset(std::string_view text) {
    std::size_t pos = 0;
    while ((pos = text.find('<', pos)) != std::string_view::npos) {
        const std::string_view rest = text.substr(pos);
        if (rest.starts_with("<?") || rest.starts_with("<!--")) {
            const std::string_view close = rest.starts_with("<?") ? "?>" : "-->";
            const std::size_t end = text.find(close, pos + 2);
            if (end == std::string_view::npos) {
                return false;
            }
            pos = end + close.size();
            continue;
        }
        if (!rest.starts_with("<!DOCTYPE")) {
            return false;  // the root element, or no well-formed prolog at all
        }
        char quote = 0;
        for (const char c : rest.substr(9)) {
            if (quote) {
                quote = c == quote ? 0 : quote;
            } else if (c == '"' || c == '\'') {
                quote = c;
            } else if (c == '[') {
                return true;
            } else if (c == '>') {
                return false;
            }
        }
        return false;
    }
    return false;
}

std::string escapeText(std::string_view text) {
    initialize();
    const std::string in(text);
    xmlChar* escaped = xmlEncodeSpecialChars(nullptr, reinterpret_cast<const xmlChar*>(in.c_str()));
    if (!escaped) {
        return {};
    }
    std::string out(reinterpret_cast<const char*>(escaped));
    xmlFree(escaped);
    return out;
}

std::string unescapeText(std::string_view text) {
    static constexpr std::pair<std::string_view, char> kNamed[] = {
        {"&amp;", '&'}, {"&lt;", '<'}, {"&gt;", '>'}, {"&quot;", '"'}, {"&apos;", '\''}};
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '&') {
            out += text[i];
            continue;
        }
        const std::string_view rest = text.substr(i);
        bool known = false;
        for (const auto& [entity, c] : kNamed) {
            if (rest.starts_with(entity)) {
                out += c;
                i += entity.size() - 1;
                known = true;
                break;
            }
        }
        if (!known && rest.starts_with("&#")) {
            const bool hex = rest.size() > 2 && (rest[2] == 'x' || rest[2] == 'X');
            const std::size_t from = hex ? 3 : 2;
            const std::size_t semi = rest.find(';');
            unsigned code = 0;
            if (semi != std::string_view::npos && semi > from && semi <= from + 3) {
                const auto [end, ec] =
                    std::from_chars(rest.data() + from, rest.data() + semi, code, hex ? 16 : 10);
                if (ec == std::errc() && end == rest.data() + semi && code < 0x80) {
                    out += static_cast<char>(code);
                    i += semi;
                    known = true;
                }
            }
        }
        if (!known) {
            out += '&';
        }
    }
    return out;
}

}  // namespace dorvane::xml
