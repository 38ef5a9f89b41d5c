// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — the XML layer: DOM, XPath 1.0 and XSLT 1.0 over libxml2/libxslt.
//
// Every document Dorvane reads comes from somewhere it does not control (QuickBooks
// answers, exchange files, handheld files, templates a user may have edited), so parsing
// never touches the network, never loads a DTD and never expands external entities.
// Whitespace-only text between elements is dropped, as the old DOM did with
// preserveWhiteSpace off. No libxml2 type appears in this header.
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "common/result.h"

namespace dorvane::xml {

class Document;

// Name/value pairs bound as XPath variables ($name) or XSLT string parameters.
using Variables = std::vector<std::pair<std::string, std::string>>;

struct ParseOptions {
    // Keep whitespace-only text nodes (style sheets and HTML output want them).
    bool keepBlanks = false;
    // Refuse a document that carries a document type declaration with an internal subset
    // (entity or element declarations): for files that arrive from outside.
    bool refuseInternalSubset = false;
};

// A handle to a node inside a Document. It does not own the node and is valid while the
// node is part of a living document (or was created by it and not yet freed). A default
// Node is null; every accessor of a null node answers empty.
class Node {
public:
    Node() = default;
    explicit operator bool() const { return m_node != nullptr; }
    bool operator==(const Node& other) const { return m_node == other.m_node; }

    bool isElement() const;
    std::string name() const;  // the element's qualified name; "" for non-elements
    std::string text() const;  // all text below the node, as the DOM's .text
    void setText(std::string_view text);

    bool hasAttribute(std::string_view name) const;
    std::string attribute(std::string_view name) const;  // "" when absent
    void setAttribute(std::string_view name, std::string_view value);
    // The attributes in document order, as name/value pairs.
    std::vector<std::pair<std::string, std::string>> attributes() const;

    // XPath relative to this node. selectOne answers the first node in document order.
    Node selectOne(std::string_view xpath, const Variables& vars = {}) const;
    std::vector<Node> selectAll(std::string_view xpath, const Variables& vars = {}) const;
    // The text of the first node selected, "" when nothing is selected.
    std::string valueOf(std::string_view xpath, const Variables& vars = {}) const;

    Node parent() const;             // null at the document level
    Node firstChildElement() const;  // element children only
    Node nextSiblingElement() const;
    std::vector<Node> childElements() const;
    Node firstChildElement(std::string_view name) const;

    // Appends a new element (with optional text) as the last child; answers it.
    Node appendElement(std::string_view name, std::string_view text = {});
    // Moves `child` (of this document, anywhere in it, or unlinked) to be the last child of
    // this node. A node of another document is deep-copied into this one instead. Answers
    // the node that now stands here.
    Node appendChild(Node child);
    // Inserts `child` (moved or copied as with appendChild) before `ref`, a child of this.
    Node insertBefore(Node child, Node ref);
    // A deep copy of this node, owned by the same document but not yet in the tree; append it
    // somewhere or it is freed with the document.
    Node cloneDeep() const;
    // Unlinks the node from the tree and frees it; the handle becomes invalid.
    void remove();

    // The node and its subtree as XML text (no declaration).
    std::string xml() const;

    Document* document() const;

private:
    friend class Document;
    friend class Stylesheet;
    explicit Node(void* node) : m_node(node) {}
    void* m_node = nullptr;
};

class Document {
public:
    Document();  // empty document, no root yet
    ~Document();
    Document(Document&&) noexcept;
    Document& operator=(Document&&) noexcept;
    Document(const Document&) = delete;
    Document& operator=(const Document&) = delete;

    // Parses text. The error description is the parser's reason text (for an empty text:
    // "Document is empty").
    static Result<Document> parse(std::string_view text, const ParseOptions& options = {});
    static Result<Document> load(const std::filesystem::path& file,
                                 const ParseOptions& options = {});
    // A new document whose root element is `rootName`.
    static Document withRoot(std::string_view rootName);

    bool empty() const;  // no root element
    Node root() const;
    void setRoot(Node element);  // moves/copies the element in as the new root

    Node selectOne(std::string_view xpath, const Variables& vars = {}) const;
    std::vector<Node> selectAll(std::string_view xpath, const Variables& vars = {}) const;
    std::string valueOf(std::string_view xpath, const Variables& vars = {}) const;
    // The first element named `tagName` anywhere in the document, in document order.
    Node firstElementByTagName(std::string_view tagName) const;

    // Creates an unlinked element owned by this document.
    Node createElement(std::string_view name, std::string_view text = {});
    // A deep copy of a node of any document, owned by this one and not yet in the tree.
    Node importNode(Node node);

    // Serialises the document. With `declaration` the text starts with the XML declaration.
    // Characters the encoding cannot hold ("US-ASCII": every letter beyond ASCII) are written
    // as character references.
    std::string toString(bool declaration = true, const char* encoding = "UTF-8") const;
    // A deep copy of the whole document.
    Document clone() const;

private:
    friend class Node;
    friend class Stylesheet;
    struct Impl;
    explicit Document(void* doc);
    void* m_doc = nullptr;
};

// A compiled XSLT 1.0 style sheet (EXSLT available). Transforms run under security
// preferences that forbid writing files, creating folders and any network access; a sheet
// that tries fails the whole transform, and nothing is written.
class Stylesheet {
public:
    Stylesheet();
    ~Stylesheet();
    Stylesheet(Stylesheet&&) noexcept;
    Stylesheet& operator=(Stylesheet&&) noexcept;
    Stylesheet(const Stylesheet&) = delete;
    Stylesheet& operator=(const Stylesheet&) = delete;

    static Result<Stylesheet> load(const std::filesystem::path& file);
    // `baseFile` resolves xsl:import/xsl:include and document() relative to it.
    static Result<Stylesheet> parse(std::string_view text,
                                    const std::filesystem::path& baseFile = {});

    // Transforms one node the way the old DOM's transformNode did: processing starts at
    // `node` (the template that matches it runs first), its ancestors and the rest of its
    // document stay reachable through XPath, and the sheet's xsl:output decides the text
    // (method, declaration, indentation). String parameters are passed as XSLT params.
    // The text is in the encoding xsl:output names (UTF-8 when it names none or one unknown
    // here); characters that encoding cannot hold are written as character references.
    Result<std::string> transformNode(Node node, const Variables& params = {}) const;
    // Transforms a whole document into a new document.
    Result<Document> transformToDocument(const Document& doc, const Variables& params = {}) const;

private:
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};

// `text` with the characters that markup gives meaning to (& < > " and CR) as references, for
// building XML by hand.
std::string escapeText(std::string_view text);
// The reverse of escapeText, for values read back from records written with it: the five
// named references and character references of ASCII characters become their characters;
// anything else stays as it is.
std::string unescapeText(std::string_view text);

// Whether `text` declares a document type with an internal subset (entity or element
// declarations) before its root element. Linear in the prolog's length; for answers that
// arrive from outside and are parsed in many places afterwards.
bool declaresInternalSubset(std::string_view text);

// Sets up libxml2/libxslt for the whole process (error handlers, security preferences,
// EXSLT). Safe to call more than once; every entry point above calls it.
void initialize();

}  // namespace dorvane::xml
