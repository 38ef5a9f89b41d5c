// SPDX-License-Identifier: GPL-3.0-or-later
// Style sheets: transformNode as the old DOM did it, xsl:output, imports, and the sandbox.
#include <filesystem>
#include <gtest/gtest.h>

#include "nettrap.h"
#include "support/testsupport.h"
#include "xml/xml.h"

namespace dorvane::xml {
namespace {

using test::TempDir;
using test::writeFile;

constexpr const char* kSecret = "TOP-SECRET-51d2e8";

std::string sheet(const std::string& body, const std::string& extra = {}) {
    return "<xsl:stylesheet version=\"1.0\" xmlns:xsl=\"http://www.w3.org/1999/XSL/Transform\"" +
           extra + ">" + body + "</xsl:stylesheet>";
}

Stylesheet compiled(const std::string& text, const std::filesystem::path& base = {}) {
    auto s = Stylesheet::parse(text, base);
    EXPECT_TRUE(s.ok()) << s.error().description;
    return s.ok() ? std::move(s).value() : Stylesheet();
}

Document parsed(std::string_view text) {
    auto doc = Document::parse(text);
    EXPECT_TRUE(doc.ok()) << doc.error().description;
    return doc.ok() ? std::move(doc).value() : Document();
}

std::string transformed(const Stylesheet& s, Node n, const Variables& params = {}) {
    auto out = s.transformNode(n, params);
    EXPECT_TRUE(out.ok()) << out.error().description;
    return out.ok() ? *out : std::string("<failed>");
}

const char* kResponse =
    "<QBXML><QBXMLMsgsRs><InvoiceQueryRs statusCode=\"0\">"
    "<CompanyName>Acme</CompanyName>"
    "<InvoiceRet><RefNumber>1001</RefNumber><Line><Item>Nails</Item></Line></InvoiceRet>"
    "<InvoiceRet><RefNumber>1002</RefNumber><Line><Item>Screws</Item></Line></InvoiceRet>"
    "</InvoiceQueryRs></QBXMLMsgsRs></QBXML>";

// ---- transformNode -------------------------------------------------------------------------

TEST(XsltTransformNode, StartsAtTheNodeAndReachesItsAncestors) {
    Stylesheet s =
        compiled(sheet("<xsl:output method='text'/>"
                       "<xsl:template match='/'>ROOT</xsl:template>"
                       "<xsl:template match='InvoiceRet'>"
                       "<xsl:value-of select='RefNumber'/>|<xsl:value-of select='../CompanyName'/>|"
                       "<xsl:value-of select='/QBXML/QBXMLMsgsRs/InvoiceQueryRs/@statusCode'/>|"
                       "<xsl:value-of select='count(preceding-sibling::InvoiceRet)'/>"
                       "</xsl:template>"));
    Document doc = parsed(kResponse);
    auto invoices = doc.selectAll("//InvoiceRet");
    ASSERT_EQ(invoices.size(), 2u);
    EXPECT_EQ(transformed(s, invoices[1]), "1002|Acme|0|1");
    EXPECT_EQ(transformed(s, invoices[0]), "1001|Acme|0|0");
}

TEST(XsltTransformNode, WithoutAMatchingTemplateTheBuiltInRulesRun) {
    Stylesheet s =
        compiled(sheet("<xsl:output method='text'/>"
                       "<xsl:template match='/'>ROOT</xsl:template>"
                       "<xsl:template match='Item'>[<xsl:value-of select='.'/>]"
                       "</xsl:template>"));
    Document doc = parsed(kResponse);
    EXPECT_EQ(transformed(s, doc.selectOne("//InvoiceRet[2]")), "1002[Screws]");
}

TEST(XsltTransformNode, TheDocumentNodeRunsTheRootTemplate) {
    Stylesheet s =
        compiled(sheet("<xsl:output method='text'/>"
                       "<xsl:template match='/'>ROOT:<xsl:value-of "
                       "select='count(//InvoiceRet)'/></xsl:template>"));
    Document doc = parsed(kResponse);
    EXPECT_EQ(transformed(s, doc.selectOne("/")), "ROOT:2");
}

TEST(XsltTransformNode, TheRootElementRunsItsOwnTemplateNotTheRootOne) {
    Stylesheet s =
        compiled(sheet("<xsl:output method='text'/>"
                       "<xsl:template match='/'>ROOT</xsl:template>"
                       "<xsl:template match='QBXML'>ELEMENT</xsl:template>"));
    Document doc = parsed(kResponse);
    EXPECT_EQ(transformed(s, doc.root()), "ELEMENT");
}

TEST(XsltTransformNode, SheetApplyingTemplatesToTheRootGetsItsOwnRootTemplate) {
    Stylesheet s =
        compiled(sheet("<xsl:output method='text'/>"
                       "<xsl:template match='/'>[root]</xsl:template>"
                       "<xsl:template match='Item'><xsl:value-of select='.'/>"
                       "<xsl:apply-templates select='/'/></xsl:template>"));
    Document doc = parsed(kResponse);
    EXPECT_EQ(transformed(s, doc.selectOne("//Item")), "Nails[root]");
}

TEST(XsltTransformNode, GlobalVariableApplyingTemplatesToTheRootGetsTheRealRootTemplate) {
    Stylesheet s =
        compiled(sheet("<xsl:output method='text'/>"
                       "<xsl:variable name='g'><xsl:apply-templates select='/'/>"
                       "</xsl:variable>"
                       "<xsl:template match='/'>[root]</xsl:template>"
                       "<xsl:template match='Item'><xsl:value-of select='.'/>"
                       "<xsl:value-of select='$g'/></xsl:template>"));
    Document doc = parsed(kResponse);
    EXPECT_EQ(transformed(s, doc.selectOne("//Item")), "Nails[root]");
}

TEST(XsltTransformNode, ParametersArriveAsStrings) {
    Stylesheet s =
        compiled(sheet("<xsl:output method='text'/>"
                       "<xsl:param name='who' select=\"'nobody'\"/>"
                       "<xsl:param name='count'/>"
                       "<xsl:template match='InvoiceRet'><xsl:value-of select='$who'/>"
                       "/<xsl:value-of select='$count + 1'/></xsl:template>"));
    Document doc = parsed(kResponse);
    Node invoice = doc.selectOne("//InvoiceRet");
    EXPECT_EQ(transformed(s, invoice, {{"who", "O'Brien \"Jr\""}, {"count", "41"}}),
              "O'Brien \"Jr\"/42");
    EXPECT_EQ(transformed(s, invoice), "nobody/NaN");
}

TEST(XsltTransformNode, KeysAndDocumentOfTheSheetItselfWork) {
    Stylesheet s =
        compiled(sheet("<xsl:output method='text'/>"
                       "<xsl:key name='byRef' match='InvoiceRet' use='RefNumber'/>"
                       "<my:names><my:n id='Nails'>Nägel</my:n></my:names>"
                       "<xsl:template match='Item'>"
                       "<xsl:value-of select='key(\"byRef\", \"1002\")/Line/Item'/>,"
                       "<xsl:variable name='me' select='.'/>"
                       "<xsl:value-of select='document(\"\")/*/my:names/my:n[@id = $me]'/>"
                       "</xsl:template>",
                       " xmlns:my='urn:my' exclude-result-prefixes='my'"),
                 "/nonexistent/folder/sheet.xsl");
    Document doc = parsed(kResponse);
    EXPECT_EQ(transformed(s, doc.selectOne("//Item")), "Screws,N\xc3\xa4gel");
}

TEST(XsltTransformNode, SourceDocumentIsNotChangedByStripSpace) {
    Stylesheet s =
        compiled(sheet("<xsl:output method='text'/><xsl:strip-space elements='*'/>"
                       "<xsl:template match='r'>[<xsl:value-of "
                       "select='count(node())'/>]</xsl:template>"));
    ParseOptions keep;
    keep.keepBlanks = true;
    auto doc = Document::parse("<top><r>\n  <a/>\n  <b/>\n</r></top>", keep);
    ASSERT_TRUE(doc.ok());
    const std::string before = doc->toString();
    Node r = doc->selectOne("/top/r");
    Node blank = r.selectOne("text()");
    EXPECT_EQ(transformed(s, r), "[2]");
    EXPECT_EQ(doc->toString(), before);
    EXPECT_EQ(blank.text(), "\n  ");
    auto whole = s.transformToDocument(*doc);
    ASSERT_TRUE(whole.ok());
    EXPECT_EQ(doc->toString(), before);
}

TEST(XsltTransformNode, RefusesWithoutANodeOrASheet) {
    Stylesheet s = compiled(sheet("<xsl:template match='/'/>"));
    EXPECT_FALSE(s.transformNode(Node()).ok());
    Stylesheet none;
    Document doc = parsed("<r/>");
    EXPECT_FALSE(none.transformNode(doc.root()).ok());
    EXPECT_FALSE(none.transformToDocument(doc).ok());
}

TEST(XsltTransformNode, SheetMayBeUsedManyTimesAndMoved) {
    Stylesheet s =
        compiled(sheet("<xsl:output method='text'/><xsl:template match='RefNumber'>#<xsl:value-of "
                       "select='.'/></xsl:template>"));
    Stylesheet moved = std::move(s);
    Document doc = parsed(kResponse);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(transformed(moved, doc.selectOne("//RefNumber")), "#1001");
    }
}

// ---- xsl:output ------------------------------------------------------------------------------

TEST(XsltOutput, HtmlKeepsEmptyElementsUnclosed) {
    Stylesheet s =
        compiled(sheet("<xsl:output method='html'/>"
                       "<xsl:template match='InvoiceRet'><p><xsl:value-of "
                       "select='RefNumber'/><br/>&amp;</p></xsl:template>"));
    Document doc = parsed(kResponse);
    const std::string out = transformed(s, doc.selectOne("//InvoiceRet"));
    EXPECT_EQ(out, "<p>1001<br>&amp;</p>\n");
}

TEST(XsltOutput, XmlHasADeclarationUnlessOmitted) {
    const std::string body =
        "<xsl:template match='InvoiceRet'><Ref n='{RefNumber}'><br/></Ref></xsl:template>";
    Document doc = parsed(kResponse);
    Node invoice = doc.selectOne("//InvoiceRet");
    Stylesheet withDecl = compiled(sheet("<xsl:output method='xml'/>" + body));
    EXPECT_EQ(transformed(withDecl, invoice),
              "<?xml version=\"1.0\"?>\n<Ref n=\"1001\"><br/></Ref>\n");
    Stylesheet without =
        compiled(sheet("<xsl:output method='xml' omit-xml-declaration='yes'/>" + body));
    EXPECT_EQ(transformed(without, invoice), "<Ref n=\"1001\"><br/></Ref>\n");
}

TEST(XsltOutput, IndentAndTextMethod) {
    Document doc = parsed(kResponse);
    Node invoice = doc.selectOne("//InvoiceRet");
    Stylesheet indented =
        compiled(sheet("<xsl:output method='xml' indent='yes' omit-xml-declaration='yes'/>"
                       "<xsl:template match='InvoiceRet'><a><b>x</b></a></xsl:template>"));
    EXPECT_EQ(transformed(indented, invoice), "<a>\n  <b>x</b>\n</a>\n");
    Stylesheet text = compiled(sheet(
        "<xsl:output method='text'/><xsl:template match='InvoiceRet'>a &lt; b</xsl:template>"));
    EXPECT_EQ(transformed(text, invoice), "a < b");
}

TEST(XsltOutput, TextIsUtf8WhateverEncodingIsNamed) {
    Stylesheet s =
        compiled(sheet("<xsl:output method='xml' encoding='ISO-8859-1' omit-xml-declaration='yes'/>"
                       "<xsl:template match='r'><o><xsl:value-of select='.'/></o></xsl:template>"));
    Document doc = parsed("<r>caf\xc3\xa9</r>");
    EXPECT_EQ(transformed(s, doc.root()), "<o>caf\xc3\xa9</o>\n");
}

TEST(XsltOutput, ImportedSheetsOutputApplies) {
    TempDir dir;
    writeFile(dir / "base.xsl",
              sheet("<xsl:output method='html'/>"
                    "<xsl:template match='Item'><b><xsl:value-of select='.'/></b><hr/>"
                    "</xsl:template>"));
    Stylesheet s = compiled(sheet("<xsl:import href='base.xsl'/>"), dir / "main.xsl");
    Document doc = parsed(kResponse);
    EXPECT_EQ(transformed(s, doc.selectOne("//Item")), "<b>Nails</b><hr>\n");
}

// ---- whole documents, loading, imports ---------------------------------------------------------

TEST(XsltDocument, TransformToDocumentGivesATree) {
    Stylesheet s =
        compiled(sheet("<xsl:param name='tag'/>"
                       "<xsl:template match='/'><out tag='{$tag}'>"
                       "<xsl:for-each select='//RefNumber'><ref><xsl:value-of "
                       "select='.'/></ref></xsl:for-each></out></xsl:template>"));
    Document doc = parsed(kResponse);
    auto result = s.transformToDocument(doc, {{"tag", "a'b"}});
    ASSERT_TRUE(result.ok()) << result.error().description;
    EXPECT_EQ(result->root().attribute("tag"), "a'b");
    EXPECT_EQ(result->selectAll("/out/ref").size(), 2u);
    EXPECT_EQ(result->root().document(), &result.value());
}

TEST(XsltDocument, LoadFromFileResolvesImportsAndDocuments) {
    TempDir dir;
    std::filesystem::create_directories(dir / "lib");
    writeFile(dir / "lib" / "names.xml", "<names><n id='1001'>First</n></names>");
    writeFile(dir / "lib" / "common.xsl",
              sheet("<xsl:template name='label'>L:<xsl:value-of select='.'/></xsl:template>"));
    writeFile(dir / "main.xsl",
              sheet("<xsl:import href='lib/common.xsl'/><xsl:output method='text'/>"
                    "<xsl:template match='RefNumber'><xsl:call-template name='label'/>="
                    "<xsl:value-of select=\"document('lib/names.xml')/names/n[@id = "
                    "current()]\"/></xsl:template>"));
    auto s = Stylesheet::load(dir / "main.xsl");
    ASSERT_TRUE(s.ok()) << s.error().description;
    Document doc = parsed(kResponse);
    EXPECT_EQ(transformed(*s, doc.selectOne("//RefNumber")), "L:1001=First");
}

TEST(XsltDocument, ParsedTextResolvesRelativeToItsBaseFile) {
    TempDir dir;
    std::filesystem::create_directories(dir / "with space");
    writeFile(dir / "with space" / "inc.xsl",
              sheet("<xsl:template match='Item'>inc:<xsl:value-of select='.'/></xsl:template>"));
    Stylesheet s = compiled(sheet("<xsl:include href='inc.xsl'/><xsl:output method='text'/>"),
                            dir / "with space" / "not-written.xsl");
    Document doc = parsed(kResponse);
    EXPECT_EQ(transformed(s, doc.selectOne("//Item")), "inc:Nails");
}

TEST(XsltDocument, BrokenSheetsReportWhy) {
    auto notXml = Stylesheet::parse("<xsl:stylesheet");
    ASSERT_FALSE(notXml.ok());
    EXPECT_FALSE(notXml.error().description.empty());

    auto badXslt = Stylesheet::parse(
        sheet("<xsl:template match='/'><xsl:value-of select='count(('/></xsl:template>"));
    ASSERT_FALSE(badXslt.ok());
    EXPECT_NE(badXslt.error().description.find("count(("), std::string::npos)
        << badXslt.error().description;

    TempDir dir;
    auto missing = Stylesheet::load(dir / "missing.xsl");
    ASSERT_FALSE(missing.ok());
    EXPECT_NE(missing.error().description.find("missing.xsl"), std::string::npos);

    auto missingImport =
        Stylesheet::parse(sheet("<xsl:import href='nowhere.xsl'/>"), dir / "main.xsl");
    EXPECT_FALSE(missingImport.ok());
}

TEST(XsltDocument, TerminatingMessageFailsTheTransform) {
    Stylesheet s =
        compiled(sheet("<xsl:template match='r'><xsl:message terminate='yes'>"
                       "stopped on purpose</xsl:message></xsl:template>"));
    Document doc = parsed("<r/>");
    auto out = s.transformNode(doc.root());
    ASSERT_FALSE(out.ok());
    EXPECT_NE(out.error().description.find("stopped on purpose"), std::string::npos)
        << out.error().description;
}

// ---- the sandbox -------------------------------------------------------------------------------

TEST(XsltSecurity, WritingAFileFailsAndCreatesNothing) {
    TempDir dir;
    const auto target = dir / "made" / "by-sheet.txt";
    Stylesheet s =
        compiled(sheet("<xsl:template match='r'>visible<exsl:document href='" + target.string() +
                           "' method='text'>written</exsl:document></xsl:template>",
                       " xmlns:exsl='http://exslt.org/common' extension-element-prefixes='exsl'"));
    Document doc = parsed("<r/>");
    auto out = s.transformNode(doc.root());
    EXPECT_FALSE(out.ok());
    EXPECT_FALSE(std::filesystem::exists(target));
    EXPECT_FALSE(std::filesystem::exists(dir / "made"));
    auto whole = s.transformToDocument(doc);
    EXPECT_FALSE(whole.ok());
    EXPECT_FALSE(std::filesystem::exists(target));
}

TEST(XsltSecurity, XslDocumentOfVersion11IsRefusedToo) {
    TempDir dir;
    const auto target = dir / "out.xml";
    auto s = Stylesheet::parse(
        "<xsl:stylesheet version='1.1' xmlns:xsl='http://www.w3.org/1999/XSL/Transform'>"
        "<xsl:template match='/'><xsl:document href='" +
        target.string() + "'><x/></xsl:document></xsl:template></xsl:stylesheet>");
    ASSERT_TRUE(s.ok()) << s.error().description;
    Document doc = parsed("<r/>");
    EXPECT_FALSE(s->transformToDocument(doc).ok());
    EXPECT_FALSE(std::filesystem::exists(target));
}

TEST(XsltSecurity, ReadingFromTheNetworkFails) {
    test::NetTrap trap;
    Stylesheet s =
        compiled(sheet("<xsl:output method='text'/><xsl:template match='r'>"
                       "[<xsl:value-of select=\"document('" +
                       trap.url("data.xml") + "')\"/>]</xsl:template>"));
    Document doc = parsed("<r/>");
    auto out = s.transformNode(doc.root());
    ASSERT_FALSE(out.ok());
    EXPECT_NE(out.error().description.find(trap.url("data.xml")), std::string::npos)
        << out.error().description;
    EXPECT_FALSE(trap.contacted());
}

TEST(XsltSecurity, ImportingFromTheNetworkFails) {
    test::NetTrap trap;
    auto s = Stylesheet::parse(sheet("<xsl:import href='" + trap.url("evil.xsl") + "'/>"));
    EXPECT_FALSE(s.ok());
    EXPECT_FALSE(trap.contacted());
}

TEST(XsltSecurity, ExternalEntityInADocumentReadBySheetIsNotExpanded) {
    TempDir dir;
    writeFile(dir / "secret.txt", kSecret);
    writeFile(dir / "data.xml", "<!DOCTYPE d [<!ENTITY xxe SYSTEM \"secret.txt\">]><d>[&xxe;]</d>");
    Stylesheet s = compiled(sheet("<xsl:output method='xml' omit-xml-declaration='yes'/>"
                                  "<xsl:template match='r'><o><xsl:copy-of "
                                  "select=\"document('data.xml')\"/>"
                                  "<xsl:value-of select=\"document('data.xml')\"/></o>"
                                  "</xsl:template>"),
                            dir / "sheet.xsl");
    Document doc = parsed("<r/>");
    auto out = s.transformNode(doc.root());
    if (out.ok()) {
        EXPECT_EQ(out->find(kSecret), std::string::npos) << *out;
    } else {
        EXPECT_EQ(out.error().description.find(kSecret), std::string::npos);
    }
}

TEST(XsltSecurity, ExternalEntityInTheSheetIsNotRead) {
    TempDir dir;
    writeFile(dir / "secret.txt", kSecret);
    const std::string text =
        "<!DOCTYPE xsl:stylesheet [<!ENTITY xxe SYSTEM \"secret.txt\">]>" +
        sheet("<xsl:output method='text'/><xsl:template match='r'>[&xxe;]</xsl:template>");
    writeFile(dir / "sheet.xsl", text);
    auto check = [](Result<Stylesheet> s) {
        if (!s.ok()) {
            EXPECT_EQ(s.error().description.find(kSecret), std::string::npos);
            return;
        }
        Document doc = parsed("<r/>");
        auto out = s->transformNode(doc.root());
        if (out.ok()) {
            EXPECT_EQ(out->find(kSecret), std::string::npos) << *out;
        }
        auto whole = s->transformToDocument(doc);
        if (whole.ok()) {
            EXPECT_EQ(whole->toString().find(kSecret), std::string::npos);
        }
    };
    check(Stylesheet::load(dir / "sheet.xsl"));
    check(Stylesheet::parse(text, dir / "x.xsl"));
}

TEST(XsltSecurity, InternalEntitiesOfTheSheetStillWork) {
    Stylesheet s = compiled(
        "<!DOCTYPE xsl:stylesheet [<!ENTITY nbsp \"&#160;\">]>" +
        sheet("<xsl:output method='text'/><xsl:template match='r'>a&nbsp;b</xsl:template>"));
    Document doc = parsed("<r/>");
    EXPECT_EQ(transformed(s, doc.root()),
              "a\xc2\xa0"
              "b");
}

TEST(XsltSecurity, ReadingLocalFilesIsAllowed) {
    TempDir dir;
    writeFile(dir / "data.xml", "<d>local</d>");
    Stylesheet s =
        compiled(sheet("<xsl:output method='text'/><xsl:template match='r'>"
                       "<xsl:value-of select=\"document('" +
                       (dir / "data.xml").string() + "')\"/></xsl:template>"));
    Document doc = parsed("<r/>");
    EXPECT_EQ(transformed(s, doc.root()), "local");
}

}  // namespace
}  // namespace dorvane::xml
