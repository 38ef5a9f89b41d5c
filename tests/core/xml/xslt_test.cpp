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

// A sheet with text output.
std::string textSheet(const std::string& body, const std::string& extra = {}) {
    return sheet("<xsl:output method='text'/>" + body, extra);
}

Stylesheet compiled(const std::string& text, const std::filesystem::path& base = {}) {
    auto s = Stylesheet::parse(text, base);
    EXPECT_TRUE(s.ok()) << s.error().description;
    return s.ok() ? std::move(s).value() : Stylesheet();
}

std::string transformed(const Stylesheet& s, Node n, const Variables& params = {}) {
    auto out = s.transformNode(n, params);
    EXPECT_TRUE(out.ok()) << out.error().description;
    return out.ok() ? *out : std::string("<failed>");
}

class Xslt : public ::testing::Test {
protected:
    void SetUp() override {
        auto doc = Document::parse(
            "<QBXML><QBXMLMsgsRs><InvoiceQueryRs statusCode=\"0\">"
            "<CompanyName>Acme</CompanyName>"
            "<InvoiceRet><RefNumber>1001</RefNumber><Line><Item>Nails</Item></Line></InvoiceRet>"
            "<InvoiceRet><RefNumber>1002</RefNumber><Line><Item>Screws</Item></Line></InvoiceRet>"
            "</InvoiceQueryRs></QBXMLMsgsRs></QBXML>");
        ASSERT_TRUE(doc.ok());
        m_doc = std::move(doc).value();
    }
    Node at(const char* xpath) const { return m_doc.selectOne(xpath); }

    Document m_doc;
    TempDir m_dir;
};

// ---- transformNode -------------------------------------------------------------------------

TEST_F(Xslt, TransformNodeStartsAtTheNodeAndReachesItsAncestors) {
    Stylesheet s = compiled(
        textSheet(
            "<xsl:key name='byRef' match='InvoiceRet' use='RefNumber'/>"
            "<my:names><my:n id='Nails'>N\xc3\xa4gel</my:n></my:names>"
            "<xsl:template match='/'>ROOT:<xsl:value-of select='count(//InvoiceRet)'/>"
            "</xsl:template><xsl:template match='QBXML'>ELEMENT</xsl:template>"
            "<xsl:template match='InvoiceRet'>"
            "<xsl:value-of select='RefNumber'/>|<xsl:value-of select='../CompanyName'/>|"
            "<xsl:value-of select='/QBXML/QBXMLMsgsRs/InvoiceQueryRs/@statusCode'/>|"
            "<xsl:value-of select='count(preceding-sibling::InvoiceRet)'/></xsl:template>"
            "<xsl:template match='Item'>[<xsl:value-of select='key(\"byRef\", \"1002\")//Item'/>,"
            "<xsl:value-of select='document(\"\")/*/my:names/my:n[@id = current()]'/>]"
            "</xsl:template>",
            " xmlns:my='urn:my' exclude-result-prefixes='my'"),
        "/nonexistent/folder/sheet.xsl");  // document('') still means the sheet itself
    EXPECT_EQ(transformed(s, at("//InvoiceRet[2]")), "1002|Acme|0|1");
    EXPECT_EQ(transformed(s, at("//InvoiceRet[1]")), "1001|Acme|0|0");
    EXPECT_EQ(transformed(s, at("//InvoiceRet[1]/Line")), "[Screws,N\xc3\xa4gel]");  // built-ins
    EXPECT_EQ(transformed(s, at("/")), "ROOT:2");
    EXPECT_EQ(transformed(s, m_doc.root()), "ELEMENT");
}

// Whether the sheet reaches the root from a template or from a global variable, its own root
// template answers.
TEST_F(Xslt, ApplyingTemplatesToTheRootRunsTheSheetsRootTemplate) {
    const std::string root = "<xsl:template match='/'>[root]</xsl:template>";
    const std::string sheets[] = {
        textSheet(root + "<xsl:template match='Item'><xsl:value-of select='.'/>"
                         "<xsl:apply-templates select='/'/></xsl:template>"),
        textSheet("<xsl:variable name='g'><xsl:apply-templates select='/'/></xsl:variable>" + root +
                  "<xsl:template match='Item'><xsl:value-of select='.'/><xsl:value-of "
                  "select='$g'/></xsl:template>"),
    };
    for (const std::string& text : sheets) {
        EXPECT_EQ(transformed(compiled(text), at("//Item")), "Nails[root]") << text;
    }
}

TEST_F(Xslt, ParametersArriveAsStringsAndASheetIsReusable) {
    Stylesheet s =
        compiled(textSheet("<xsl:param name='who' select=\"'nobody'\"/><xsl:param name='count'/>"
                           "<xsl:template match='InvoiceRet'><xsl:value-of select='$who'/>"
                           "/<xsl:value-of select='$count + 1'/></xsl:template>"));
    Stylesheet moved = std::move(s);
    EXPECT_EQ(transformed(moved, at("//InvoiceRet"), {{"who", "O'Brien \"Jr\""}, {"count", "41"}}),
              "O'Brien \"Jr\"/42");
    EXPECT_EQ(transformed(moved, at("//InvoiceRet")), "nobody/NaN");
}

TEST_F(Xslt, StripSpaceLeavesTheSourceDocumentAlone) {
    Stylesheet s =
        compiled(textSheet("<xsl:strip-space elements='*'/><xsl:template match='r'>["
                           "<xsl:value-of select='count(node())'/>]</xsl:template>"));
    ParseOptions keep;
    keep.keepBlanks = true;
    auto doc = Document::parse("<top><r>\n  <a/>\n  <b/>\n</r></top>", keep);
    ASSERT_TRUE(doc.ok());
    const std::string before = doc->toString();
    Node r = doc->selectOne("/top/r");
    Node blank = r.selectOne("text()");
    EXPECT_EQ(transformed(s, r), "[2]");
    ASSERT_TRUE(s.transformToDocument(*doc).ok());
    EXPECT_EQ(doc->toString(), before);
    EXPECT_EQ(blank.text(), "\n  ");
}

// ---- xsl:output ------------------------------------------------------------------------------

TEST_F(Xslt, TransformNodeHonoursXslOutput) {
    const std::string ref = "<Ref n='{RefNumber}'><br/><i>&amp;</i></Ref>";
    const std::pair<std::string, std::string> cases[] = {
        {"<xsl:output method='html'/>", "<Ref n=\"1001\"><br><i>&amp;</i></Ref>\n"},
        {"<xsl:output method='xml'/>",
         "<?xml version=\"1.0\"?>\n<Ref n=\"1001\"><br/><i>&amp;</i></Ref>\n"},
        {"<xsl:output method='xml' indent='yes' omit-xml-declaration='yes'/>",
         "<Ref n=\"1001\">\n  <br/>\n  <i>&amp;</i>\n</Ref>\n"},
        {"<xsl:output method='text'/>", "&"},
    };
    for (const auto& [output, expected] : cases) {
        Stylesheet s =
            compiled(sheet(output + "<xsl:template match='InvoiceRet'>" + ref + "</xsl:template>"));
        EXPECT_EQ(transformed(s, at("//InvoiceRet")), expected) << output;
    }
    // The text is in the encoding named; what it cannot hold becomes a character reference,
    // in text and in attribute values alike.
    const std::pair<std::string, std::string> encodings[] = {
        {"method='html' encoding='US-ASCII'", "<o t=\"&#233;\">caf&#233; &#8364;</o>\n"},
        {"method='xml' encoding='ISO-8859-1' omit-xml-declaration='yes'",
         "<o t=\"\xe9\">caf\xe9 &#8364;</o>\n"},
        {"method='html' encoding='UTF-8'", "<o t=\"\xc3\xa9\">caf\xc3\xa9 \xe2\x82\xac</o>\n"},
        {"method='html'", "<o t=\"\xc3\xa9\">caf\xc3\xa9 \xe2\x82\xac</o>\n"},
    };
    for (const auto& [output, expected] : encodings) {
        Stylesheet s =
            compiled(sheet("<xsl:output " + output +
                           "/><xsl:template match='Item'>"
                           "<o t='\xc3\xa9'>caf\xc3\xa9 \xe2\x82\xac</o></xsl:template>"));
        EXPECT_EQ(transformed(s, at("//Item")), expected) << output;
    }
}

// Document order stays right when nodes move after a transform (a statement moves a
// customer's invoices into its record after rendering the previous customer).
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

// ---- loading, imports, failures -------------------------------------------------------------

TEST_F(Xslt, ImportsIncludesAndDocumentsResolveRelativeToTheSheet) {
    std::filesystem::create_directories(m_dir / "lib");
    writeFile(m_dir / "lib" / "names.xml", "<names><n id='1001'>First</n></names>");
    writeFile(m_dir / "lib" / "common.xsl",
              sheet("<xsl:template name='label'>L:<xsl:value-of select='.'/></xsl:template>"));
    const std::string main = sheet(
        "<xsl:import href='lib/common.xsl'/><xsl:output method='text'/>"
        "<xsl:template match='RefNumber'><xsl:call-template name='label'/>=<xsl:value-of "
        "select=\"document('lib/names.xml')/names/n[@id = current()]\"/></xsl:template>");
    writeFile(m_dir / "main.xsl", main);
    auto loaded = Stylesheet::load(m_dir / "main.xsl");
    ASSERT_TRUE(loaded.ok()) << loaded.error().description;
    EXPECT_EQ(transformed(*loaded, at("//RefNumber")), "L:1001=First");

    std::filesystem::create_directories(m_dir / "with space");
    writeFile(m_dir / "with space" / "inc.xsl",
              sheet("<xsl:template match='Item'>inc:<xsl:value-of select='.'/></xsl:template>"));
    Stylesheet included = compiled(textSheet("<xsl:include href='inc.xsl'/>"),
                                   m_dir / "with space" / "not-written.xsl");
    EXPECT_EQ(transformed(included, at("//Item")), "inc:Nails");
}

TEST_F(Xslt, BrokenSheetsMissingNodesAndTerminatingMessagesFail) {
    EXPECT_FALSE(Stylesheet::parse("<xsl:stylesheet").ok());
    Stylesheet none;  // nothing to run, or nothing to run it on
    EXPECT_FALSE(none.transformNode(m_doc.root()).ok() || none.transformToDocument(m_doc).ok());
    EXPECT_FALSE(compiled(sheet("<xsl:template match='/'/>")).transformNode(Node()).ok());
    auto badXslt = Stylesheet::parse(
        sheet("<xsl:template match='/'><xsl:value-of select='count(('/></xsl:template>"));
    ASSERT_FALSE(badXslt.ok());
    EXPECT_NE(badXslt.error().description.find("count(("), std::string::npos);
    auto missing = Stylesheet::load(m_dir / "missing.xsl");
    ASSERT_FALSE(missing.ok());
    EXPECT_NE(missing.error().description.find("missing.xsl"), std::string::npos);
    EXPECT_FALSE(
        Stylesheet::parse(sheet("<xsl:import href='nowhere.xsl'/>"), m_dir / "m.xsl").ok());

    Stylesheet s =
        compiled(sheet("<xsl:template match='Item'><xsl:message terminate='yes'>"
                       "stopped on purpose</xsl:message></xsl:template>"));
    auto out = s.transformNode(at("//Item"));
    ASSERT_FALSE(out.ok());
    EXPECT_NE(out.error().description.find("stopped on purpose"), std::string::npos);
}

// ---- the sandbox -------------------------------------------------------------------------------

TEST_F(Xslt, SheetsCannotWriteFiles) {
    const auto target = m_dir / "made" / "by-sheet.txt";
    const std::string sheets[] = {
        sheet("<xsl:template match='/|Item'>visible<exsl:document href='" + target.string() +
                  "' method='text'>written</exsl:document></xsl:template>",
              " xmlns:exsl='http://exslt.org/common' extension-element-prefixes='exsl'"),
        "<xsl:stylesheet version='1.1' xmlns:xsl='http://www.w3.org/1999/XSL/Transform'>"
        "<xsl:template match='/|Item'><xsl:document href='" +
            target.string() + "'><x/></xsl:document></xsl:template></xsl:stylesheet>",
    };
    for (const std::string& text : sheets) {
        Stylesheet s = compiled(text);
        EXPECT_FALSE(s.transformNode(at("//Item")).ok()) << text;
        EXPECT_FALSE(s.transformToDocument(m_doc).ok()) << text;
        EXPECT_FALSE(std::filesystem::exists(m_dir / "made")) << text;
    }
}

TEST_F(Xslt, SheetsCannotUseTheNetwork) {
    test::NetTrap trap;
    Stylesheet s =
        compiled(textSheet("<xsl:template match='Item'>[<xsl:value-of select=\""
                           "document('" +
                           trap.url("data.xml") + "')\"/>]</xsl:template>"));
    auto out = s.transformNode(at("//Item"));
    ASSERT_FALSE(out.ok());
    EXPECT_NE(out.error().description.find(trap.url("data.xml")), std::string::npos);
    EXPECT_FALSE(
        Stylesheet::parse(sheet("<xsl:import href='" + trap.url("evil.xsl") + "'/>")).ok());
    EXPECT_FALSE(trap.contacted());
}

TEST_F(Xslt, ExternalEntitiesNeverReachTheOutput) {
    writeFile(m_dir / "secret.txt", kSecret);
    writeFile(m_dir / "data.xml",
              "<!DOCTYPE d [<!ENTITY xxe SYSTEM \"secret.txt\">]><d>[&xxe;]</d>");
    const std::string readsData = sheet(
        "<xsl:template match='Item'><o><xsl:copy-of select=\"document('data.xml')\"/>"
        "<xsl:value-of select=\"document('data.xml')\"/></o></xsl:template>");
    const std::string ownEntity =
        "<!DOCTYPE xsl:stylesheet [<!ENTITY xxe SYSTEM \"secret.txt\">]>" +
        textSheet("<xsl:template match='/|Item'>[&xxe;]</xsl:template>");
    std::vector<Result<Stylesheet>> sheets;
    sheets.push_back(Stylesheet::parse(readsData, m_dir / "sheet.xsl"));
    sheets.push_back(Stylesheet::parse(ownEntity, m_dir / "sheet.xsl"));
    ASSERT_TRUE(sheets[0].ok()) << sheets[0].error().description;
    for (auto& s : sheets) {
        if (!s.ok()) {
            EXPECT_EQ(s.error().description.find(kSecret), std::string::npos);
            continue;
        }
        auto out = s->transformNode(at("//Item"));
        EXPECT_EQ((out.ok() ? *out : out.error().description).find(kSecret), std::string::npos);
        auto whole = s->transformToDocument(m_doc);
        EXPECT_TRUE(!whole.ok() || whole->toString().find(kSecret) == std::string::npos);
    }
    // Internal entities of a sheet (&nbsp; and friends) still work.
    Stylesheet nbsp = compiled("<!DOCTYPE xsl:stylesheet [<!ENTITY nbsp \"&#160;\">]>" +
                               textSheet("<xsl:template match='Item'>a&nbsp;b</xsl:template>"));
    EXPECT_EQ(transformed(nbsp, at("//Item")),
              "a\xc2\xa0"
              "b");
}

}  // namespace
}  // namespace dorvane::xml
