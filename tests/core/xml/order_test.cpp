// SPDX-License-Identifier: GPL-3.0-or-later
// Document order stays right when nodes move after a transform (a statement moves a
// customer's invoices into its record after rendering the previous customer).
#include <gtest/gtest.h>

#include "xml/xml.h"

namespace dorvane::xml {
namespace {

TEST(DocumentOrder, SurvivesMovesAfterATransform) {
    auto doc = Document::parse("<R><A><x>a</x></A><B><x>b</x></B><C><x>c</x></C></R>");
    ASSERT_TRUE(doc.ok());
    auto sheet = Stylesheet::parse(
        "<xsl:stylesheet version='1.0' xmlns:xsl='http://www.w3.org/1999/XSL/Transform'>"
        "<xsl:output method='text'/><xsl:template match='A'><xsl:value-of select='x'/>"
        "</xsl:template></xsl:stylesheet>");
    ASSERT_TRUE(sheet.ok());
    ASSERT_EQ(*sheet->transformNode(doc->selectOne("/R/A")), "a");

    // A goes last: document order is now B, C, A.
    doc->root().appendChild(doc->selectOne("/R/A"));
    std::string order;
    for (Node x : doc->selectAll("//x")) {
        order += x.text();
    }
    EXPECT_EQ(order, "bca");
    EXPECT_EQ(doc->valueOf("(//x)[1]"), "b");
}

}  // namespace
}  // namespace dorvane::xml
