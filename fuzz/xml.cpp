// SPDX-License-Identifier: GPL-3.0-or-later
// The XML layer's parse as the program uses it on what arrives from outside, and the reads the
// program makes of what parsed: a QuickBooks answer (refused by the gateway when it declares
// an internal subset, else parsed as it is) and a file (exchange or handheld file: parsed with
// internal subsets refused); then XPath over every element, values, attributes, variables,
// the text of the whole, and the document written out again.
#include "xml/xml.h"

#include <cstddef>
#include <cstdint>

#include "fuzzkit.h"

using namespace dorvane;

namespace {

void read(const xml::Document& doc) {
    const xml::Node root = doc.root();
    (void)root.text();
    for (const xml::Node& element : doc.selectAll("//*")) {
        (void)element.name();
        (void)element.attributes();
        (void)element.firstChildElement();
    }
    (void)doc.selectAll("/node()");
    (void)doc.valueOf("/QBXML/QBXMLMsgsRs/*/@statusCode");
    (void)doc.valueOf("//CompanyRet/CompanyName");
    (void)doc.valueOf("count(//*) + string-length(string(/))");
    (void)doc.selectOne("//*[FullName = $name or Name = $name]", {{"name", root.name()}});
    (void)doc.firstElementByTagName("ListID");
    (void)doc.toString(false);
    (void)doc.toString(true, "US-ASCII");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto text = fuzz::text(data, size);
    if (!xml::declaresInternalSubset(text)) {
        if (auto answer = xml::Document::parse(text)) {
            read(*answer);
        }
    }
    if (auto file = xml::Document::parse(text, {.refuseInternalSubset = true})) {
        read(*file);
    }
    return 0;
}
