// SPDX-License-Identifier: GPL-3.0-or-later
#include "import/exchangefile.h"

#include <cctype>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <system_error>
#include <vector>

#include "import/receipt.h"

namespace dorvane::imports {
namespace {

std::string upper(std::string_view in) {
    std::string out(in);
    for (char& c : out) {
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    }
    return out;
}

bool isSpace(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

// The first characters of the text, decoded well enough to see an XML declaration: a UTF-8
// (or ASCII) text as it stands, a UTF-16 text (by its byte-order mark) reduced to its low bytes.
std::string leadingAscii(std::string_view text) {
    constexpr std::size_t kEnough = 16;
    auto starts = [&](std::string_view p) { return text.substr(0, p.size()) == p; };
    if (starts("\xEF\xBB\xBF")) {
        return std::string(text.substr(3, kEnough));
    }
    const bool le = starts("\xFF\xFE");
    const bool be = starts("\xFE\xFF");
    if (le || be) {
        std::string out;
        for (std::size_t i = 2; i + 1 < text.size() && out.size() < kEnough; i += 2) {
            out += le ? text[i] : text[i + 1];
        }
        return out;
    }
    return std::string(text.substr(0, kEnough));
}

bool hasXmlDeclaration(std::string_view text) {
    const std::string head = leadingAscii(text);
    return head.size() > 5 && head.compare(0, 5, "<?xml") == 0 && isSpace(head[5]);
}

// The name a node of the document level goes by: an element's name, "#comment", or a
// processing instruction's target.
std::string levelNodeName(const xml::Node& node) {
    if (node.isElement()) {
        return node.name();
    }
    const std::string text = node.xml();
    if (text.rfind("<!--", 0) == 0) {
        return "#comment";
    }
    if (text.rfind("<?", 0) == 0) {
        std::size_t end = 2;
        while (end < text.size() && !isSpace(text[end]) && text[end] != '?') {
            ++end;
        }
        return text.substr(2, end - 2);
    }
    return "#text";
}

// The names of the nodes before the root element, in order, read from the document as the
// XML layer writes it (the XPath view of the document leaves the document type out).
std::vector<std::string> prologNames(const xml::Document& doc) {
    std::vector<std::string> names;
    const std::string text = doc.toString(false);
    std::size_t at = 0;
    while (at < text.size()) {
        while (at < text.size() && isSpace(text[at])) {
            ++at;
        }
        if (at >= text.size() || text[at] != '<') {
            break;
        }
        if (text.compare(at, 4, "<!--") == 0) {
            names.emplace_back("#comment");
            const std::size_t end = text.find("-->", at + 4);
            at = end == std::string::npos ? text.size() : end + 3;
        } else if (text.compare(at, 2, "<?") == 0) {
            std::size_t end = at + 2;
            while (end < text.size() && !isSpace(text[end]) && text[end] != '?') {
                ++end;
            }
            names.push_back(text.substr(at + 2, end - at - 2));
            const std::size_t close = text.find("?>", end);
            at = close == std::string::npos ? text.size() : close + 2;
        } else if (text.compare(at, 9, "<!DOCTYPE") == 0) {
            std::size_t begin = at + 9;
            while (begin < text.size() && isSpace(text[begin])) {
                ++begin;
            }
            std::size_t end = begin;
            while (end < text.size() && !isSpace(text[end]) && text[end] != '>' &&
                   text[end] != '[') {
                ++end;
            }
            names.push_back(text.substr(begin, end - begin));
            // Skip to the end of the declaration; quoted identifiers may hold '>'.
            char quote = 0;
            int depth = 0;
            at = end;
            for (; at < text.size(); ++at) {
                const char c = text[at];
                if (quote) {
                    quote = c == quote ? 0 : quote;
                } else if (c == '"' || c == '\'') {
                    quote = c;
                } else if (c == '[') {
                    ++depth;
                } else if (c == ']') {
                    --depth;
                } else if (c == '>' && depth <= 0) {
                    ++at;
                    break;
                }
            }
        } else {
            break;  // the root element
        }
    }
    return names;
}

std::optional<std::string> childNodeOneName(const xml::Document& doc, bool declaration) {
    std::vector<std::string> names;
    if (declaration) {
        names.emplace_back("xml");
    }
    if (names.size() < 2) {
        for (std::string& n : prologNames(doc)) {
            names.push_back(std::move(n));
        }
    }
    if (names.size() > 1) {
        return names[1];
    }
    // Nothing before the root but perhaps the declaration: child 1 is the root, or the node
    // after it.
    const xml::Node root = doc.root();
    if (names.size() == 1) {
        return root ? std::optional<std::string>(root.name()) : std::nullopt;
    }
    const std::vector<xml::Node> level = doc.selectAll("/node()");
    for (std::size_t i = 0; i + 1 < level.size(); ++i) {
        if (level[i] == root) {
            return levelNodeName(level[i + 1]);
        }
    }
    return std::nullopt;
}

Error tooLarge() {
    return Error{EFBIG, "The file is larger than " +
                            std::to_string(kMaxExchangeFileSize / (1024 * 1024)) + " MB"};
}

}  // namespace

DocumentKind recogniseKind(std::string_view kindName) {
    const std::string key = upper(kindName);
    if (key == kInvoiceKind) {
        return DocumentKind::Invoice;
    }
    if (key == kEstimateKind) {
        return DocumentKind::Estimate;
    }
    if (key == kSalesReceiptKind) {
        return DocumentKind::SalesReceipt;
    }
    if (key == kAuthorizeNetKind) {
        return DocumentKind::AuthorizeNet;
    }
    if (key == kPdaKind) {
        return DocumentKind::Pda;
    }
    return DocumentKind::Unknown;
}

std::string_view rootElementName(DocumentKind kind) {
    switch (kind) {
        case DocumentKind::Invoice:
            return "InvoiceRet";
        case DocumentKind::Estimate:
            return "EstimateRet";
        case DocumentKind::SalesReceipt:
            return "SalesReceiptRet";
        case DocumentKind::AuthorizeNet:
            return "AuthorizeNet";
        case DocumentKind::Pda:
            return "Dorvane_PDA";
        case DocumentKind::Unknown:
            break;
    }
    return {};
}

Result<ExchangeFile> parseExchangeText(std::string_view text) {
    if (text.size() > kMaxExchangeFileSize) {
        return tooLarge();
    }
    xml::ParseOptions options;
    options.refuseInternalSubset = true;
    auto doc = xml::Document::parse(text, options);
    if (!doc) {
        return doc.error();
    }
    ExchangeFile file;
    file.document = std::move(doc).value();
    file.kindName = childNodeOneName(file.document, hasXmlDeclaration(text));
    file.kind = file.kindName ? recogniseKind(*file.kindName) : DocumentKind::Unknown;
    if (file.kind == DocumentKind::AuthorizeNet && text.size() > kMaxReceiptDocument) {
        // Its sheets search every section for every field: many receipts in one document
        // would take minutes and gigabytes.
        return Error{EFBIG, "The receipt is larger than an Authorize.Net receipt can be (" +
                                std::to_string(kMaxReceiptDocument / 1024) +
                                " KB); copy only the receipt from its e-mail or web page and "
                                "import it from the clipboard"};
    }
    return file;
}

Result<ExchangeFile> readExchangeFile(const std::filesystem::path& file) {
    std::error_code ec;
    const auto status = std::filesystem::status(file, ec);
    if (ec) {
        return Error{ec.value(), ec.message()};
    }
    if (!std::filesystem::is_regular_file(status)) {
        return Error{EINVAL, "Not a regular file"};
    }
    const auto size = std::filesystem::file_size(file, ec);
    if (!ec && size > kMaxExchangeFileSize) {
        return tooLarge();
    }
    std::ifstream in(file, std::ios::binary);
    if (!in) {
        const int err = errno;
        return Error{err, std::strerror(err)};
    }
    // Read in pieces up to one byte beyond the cap, whatever the size said: the file may
    // have grown since.
    std::string text;
    char chunk[65536];
    while (text.size() <= kMaxExchangeFileSize && in.read(chunk, sizeof chunk).gcount() > 0) {
        text.append(chunk, static_cast<std::size_t>(in.gcount()));
    }
    if (in.bad()) {
        return Error{EIO, "The file cannot be read"};
    }
    return parseExchangeText(text);
}

std::string cannotProcessMessage(const Error& error) {
    return std::string(kCannotProcessFile) + error.description;
}

xml::Node selectConversionRoot(const xml::Document& document, DocumentKind kind) {
    const std::string_view name = rootElementName(kind);
    if (name.empty()) {
        return {};
    }
    const xml::Node root = document.root();
    return root && root.name() == name ? root : xml::Node();
}

std::string withRequestProlog(std::string_view body) {
    std::string out(kRequestProlog);
    out.append(body);
    return out;
}

}  // namespace dorvane::imports
