// SPDX-License-Identifier: GPL-3.0-or-later
// XPath: relative selection, variables, harmless failures, the plain-child-path shortcut.
#include <gtest/gtest.h>

#include "xml/xml.h"

namespace dorvane::xml {
namespace {

const char* kResponse = R"(<?xml version="1.0"?>
<QBXML>
  <QBXMLMsgsRs>
    <CustomerQueryRs requestID="1" statusCode="0">
      <CustomerRet><ListID>10</ListID><Name>Ann's Bakery</Name><Balance>12.50</Balance></CustomerRet>
      <CustomerRet><ListID>20</ListID><Name>Bob "The Builder"</Name><Balance>0</Balance></CustomerRet>
      <CustomerRet><ListID>30</ListID><Name>Carl's "Best" Cars</Name><Balance>7</Balance></CustomerRet>
    </CustomerQueryRs>
  </QBXMLMsgsRs>
</QBXML>)";

class XmlXPath : public ::testing::Test {
protected:
    void SetUp() override {
        auto doc = Document::parse(kResponse);
        ASSERT_TRUE(doc.ok()) << doc.error().description;
        m_doc = std::move(doc).value();
    }
    Document m_doc;
};

TEST_F(XmlXPath, SelectionIsRelativeToTheNodeAndInDocumentOrder) {
    Node second = m_doc.selectAll("//CustomerRet")[1];
    EXPECT_EQ(second.valueOf("ListID"), "20");
    EXPECT_EQ(second.valueOf("../@statusCode"), "0");
    EXPECT_EQ(second.selectOne("/QBXML"), m_doc.root());
    EXPECT_FALSE(second.selectOne("CustomerRet"));

    auto ids = m_doc.selectAll("//CustomerRet/ListID | //CustomerRet[1]/Name");
    ASSERT_EQ(ids.size(), 4u);
    EXPECT_EQ(ids[1].text(), "Ann's Bakery");
    EXPECT_EQ(ids[3].text(), "30");
    // Reverse axes still answer document order.
    Node last = m_doc.selectAll("//CustomerRet").back();
    EXPECT_EQ(last.selectAll("preceding-sibling::CustomerRet")[0].valueOf("ListID"), "10");
    EXPECT_EQ(last.selectOne("preceding-sibling::CustomerRet").valueOf("ListID"), "10");

    Node attr = m_doc.selectOne("//CustomerQueryRs/@requestID");  // attributes are nodes too
    EXPECT_FALSE(attr.isElement());
    EXPECT_EQ(attr.xml(), "requestID=\"1\"");
    attr.setText("it's <2>");
    EXPECT_EQ(m_doc.selectOne("//CustomerQueryRs").attribute("requestID"), "it's <2>");

    Node top = m_doc.selectOne("/");
    EXPECT_FALSE(top.parent());
    EXPECT_FALSE(m_doc.root().parent());
    EXPECT_EQ(m_doc.root().selectOne(".."), top);
}

TEST_F(XmlXPath, VariablesCarryApostrophesAndQuotes) {
    const std::string expr = "//CustomerRet[Name = $name]/ListID";
    EXPECT_EQ(m_doc.valueOf(expr, {{"name", "Ann's Bakery"}}), "10");
    EXPECT_EQ(m_doc.valueOf(expr, {{"name", "Bob \"The Builder\""}}), "20");
    EXPECT_EQ(m_doc.valueOf(expr, {{"name", "Carl's \"Best\" Cars"}}), "30");
    EXPECT_EQ(m_doc.valueOf(expr, {{"name", "nobody"}}), "");

    Node rs = m_doc.selectOne("//CustomerQueryRs");
    const std::string both = "CustomerRet[ListID = $id and Balance > $min]";
    EXPECT_EQ(rs.selectOne(both, {{"id", "10"}, {"min", "10"}}).valueOf("Name"), "Ann's Bakery");
    EXPECT_FALSE(rs.selectOne(both, {{"id", "30"}, {"min", "10"}}));
}

TEST_F(XmlXPath, InvalidExpressionsAreHarmlessAndValuesNeedNoNodes) {
    for (const char* bad :
         {"///[", "CustomerRet[", "@@x", "foo(", "", "$undefined", "unknown-function()", "1 +"}) {
        EXPECT_FALSE(m_doc.selectOne(bad)) << bad;
        EXPECT_TRUE(m_doc.selectAll(bad).empty()) << bad;
        EXPECT_EQ(m_doc.root().valueOf(bad), "") << bad;
    }
    EXPECT_FALSE(m_doc.selectOne("count(//CustomerRet)"));
    EXPECT_TRUE(m_doc.selectAll("count(//CustomerRet)").empty());
    EXPECT_EQ(m_doc.valueOf("count(//CustomerRet)"), "3");
    EXPECT_EQ(m_doc.valueOf("//CustomerRet[1]/ListID = 10"), "true");
    EXPECT_EQ(m_doc.valueOf("concat(//CustomerRet[2]/ListID, '-', $s)", {{"s", "x"}}), "20-x");
}

TEST(XmlXPathMore, DocumentPrefixesWorkAndUnplacedNodesHaveNoAncestors) {
    auto doc = Document::parse("<r xmlns:a=\"urn:a\"><a:item>1</a:item><item>2</item></r>");
    ASSERT_TRUE(doc.ok());
    EXPECT_EQ(doc->root().valueOf("a:item"), "1");
    EXPECT_EQ(doc->root().valueOf("item"), "2");
    EXPECT_EQ(doc->root().firstChildElement().name(), "a:item");

    Node loose = doc->createElement("loose");
    loose.appendElement("v", "1");
    EXPECT_EQ(loose.valueOf("v"), "1");
    EXPECT_FALSE(loose.selectOne(".."));
    EXPECT_TRUE(loose.selectAll("ancestor::*").empty());
}

// Plain child paths are answered without XPath; the answers must be XPath's own.
TEST(XmlXPathMore, ChildPathShortcutAnswersAsXPathDoes) {
    auto doc = Document::parse(
        "<R><A><C>no B here</C></A><A><B>first B</B><B>second B</B></A><A><B>third</B></A>"
        "<n:A xmlns:n='urn:x'><B>namespaced</B></n:A><D xmlns='urn:d'><E>default ns</E></D>"
        "<F-1><G.2>odd names</G.2></F-1><Mixed>a<I>b</I>c</Mixed></R>");
    ASSERT_TRUE(doc.ok());
    Node root = doc->root();
    for (const char* path : {"A/B", "A/C", "A", "B", "D/E", "D", "F-1/G.2", "Mixed", "A/B/C",
                             "Missing/B", "A/Missing"}) {
        SCOPED_TRACE(path);
        const std::string viaXPath = std::string("./") + path;
        EXPECT_EQ(root.valueOf(path), root.valueOf(viaXPath));
        EXPECT_EQ(root.selectOne(path), root.selectOne(viaXPath));
    }
    EXPECT_EQ(root.valueOf("A/B"), "first B");
    EXPECT_EQ(doc->valueOf("R/A/B"), "first B");
}

}  // namespace
}  // namespace dorvane::xml
